#!/usr/bin/env python3
"""Places parts of several pictures side by side, magnified six times, so that single pixels can be seen.

    magnify.py OUT X,Y,WIDTH,HEIGHT ... -- PICTURE[=LABEL] ...

Each part is a row and each picture a column, with its label above. Needs Pillow and the DejaVu fonts (Debian:
python3-pil, fonts-dejavu-core).
"""

import sys

from PIL import Image, ImageDraw, ImageFont

SCALE = 6
GAP = 12
LABEL_HEIGHT = 26
LABEL_COLOUR = (60, 60, 68)
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"


def main():
    if "--" not in sys.argv or sys.argv.index("--") < 3 or sys.argv[-1] == "--":
        sys.exit(__doc__)
    separator = sys.argv.index("--")
    parts = [tuple(int(number) for number in text.split(",")) for text in sys.argv[2:separator]]
    columns = [word.partition("=") for word in sys.argv[separator + 1:]]
    pictures = [Image.open(name).convert("RGB") for name, _, _ in columns]
    labels = [label for _, _, label in columns]

    pitch = max(part[2] for part in parts) * SCALE + GAP
    top = LABEL_HEIGHT if any(labels) else 0
    height = top + sum(part[3] * SCALE + GAP for part in parts) - GAP
    sheet = Image.new("RGB", (len(columns) * pitch - GAP, height), "white")
    draw = ImageDraw.Draw(sheet)
    font = ImageFont.truetype(FONT, 17)
    for column, label in enumerate(labels):
        draw.text((column * pitch, 0), label, LABEL_COLOUR, font)
    for x, y, part_width, part_height in parts:
        for column, picture in enumerate(pictures):
            crop = picture.crop((x, y, x + part_width, y + part_height))
            magnified = crop.resize((part_width * SCALE, part_height * SCALE), Image.NEAREST)
            sheet.paste(magnified, (column * pitch, top))
        top += part_height * SCALE + GAP
    sheet.save(sys.argv[1], optimize=True)


if __name__ == "__main__":
    main()
