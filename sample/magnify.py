#!/usr/bin/env python3
"""Puts parts of two pictures side by side, magnified six times, so that single pixels show.

    magnify.py BEFORE AFTER OUT [X,Y,WIDTH,HEIGHT ...]

Each part makes one row: before on the left, after on the right. Needs Pillow (Debian: python3-pil).
"""

import sys

from PIL import Image

SCALE = 6
GAP = 12
# A slope and a disc of the drawing, a piece of lettering, lines of the fan.
DEFAULT_PARTS = ((34, 50, 66, 34), (10, 158, 66, 32), (238, 88, 66, 34))


def main():
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    pictures = [Image.open(name).convert("RGB") for name in sys.argv[1:3]]
    parts = [tuple(int(number) for number in text.split(",")) for text in sys.argv[4:]] or DEFAULT_PARTS
    widest = max(part[2] for part in parts)
    height = sum(part[3] * SCALE + GAP for part in parts) - GAP
    sheet = Image.new("RGB", (2 * widest * SCALE + GAP, height), "white")
    top = 0
    for x, y, part_width, part_height in parts:
        for column, picture in enumerate(pictures):
            crop = picture.crop((x, y, x + part_width, y + part_height))
            magnified = crop.resize((part_width * SCALE, part_height * SCALE), Image.NEAREST)
            sheet.paste(magnified, (column * (widest * SCALE + GAP), top))
        top += part_height * SCALE + GAP
    sheet.save(sys.argv[3], optimize=True)


if __name__ == "__main__":
    main()
