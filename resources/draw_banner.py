#!/usr/bin/env python3
"""Draws banner.bmp, the picture of the about box: 343 x 65 pixels, 24 bits. Needs python3-pil and fonts-dejavu-core."""

import pathlib

from PIL import Image, ImageDraw, ImageFont

WIDTH, HEIGHT = 343, 65
# A strip with its own background, since the dialog's differs between versions of Windows.
GROUND, LETTERS, LINE = (38, 50, 72), (246, 247, 249), (240, 150, 92)
MARGIN = 16
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"
SCALE = 8  # drawn larger and reduced, for smooth edges
LEFT, RIGHT, TOP, BOTTOM = 200, WIDTH - MARGIN, 13, 47  # of the falling line
THICKNESS = 5


def fall(x):
    """The line's y at x; level at both ends."""
    t = (x - LEFT) / (RIGHT - LEFT)
    return TOP + (BOTTOM - TOP) * t * t * (3 - 2 * t)


def main():
    large = Image.new("RGB", (WIDTH * SCALE, HEIGHT * SCALE), GROUND)
    draw = ImageDraw.Draw(large)
    font = ImageFont.truetype(FONT, 30 * SCALE)
    draw.text((MARGIN * SCALE, HEIGHT * SCALE // 2), "stairmelt", LETTERS, font, anchor="lm")
    # Treads on whole pixels, each shorter than the last, until they melt into a smooth line.
    x, tread = LEFT, 20.0
    while x < RIGHT:
        is_stair = tread >= 1
        width = tread if is_stair else 1 / SCALE
        y = fall(x + width / 2)
        if is_stair:
            y = round(y)
        draw.rectangle((int(x * SCALE), int(y * SCALE), int((x + width) * SCALE) - 1, int((y + THICKNESS) * SCALE) - 1), LINE)
        x += width
        tread *= 0.84
    large.resize((WIDTH, HEIGHT), Image.BOX).save(pathlib.Path(__file__).with_name("banner.bmp"))


main()
