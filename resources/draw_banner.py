#!/usr/bin/env python3
"""Draws banner.bmp, the picture of the about box: 343 x 65 pixels, 24 bits. Needs python3-pil and fonts-dejavu-core."""

import pathlib

from PIL import Image, ImageDraw, ImageFont

WIDTH, HEIGHT = 343, 65
INK, PAPER, ACCENT = (32, 36, 48), (244, 242, 236), (196, 72, 40)
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"


def stairs(draw, left, step, colour):
    """A staircase that falls to the right, from the banner's left edge."""
    for i in range(8):
        draw.rectangle((left + i * step * 2, 8 + i * step, WIDTH, 8 + (i + 1) * step - 1), fill=colour)


def main():
    banner = Image.new("RGB", (WIDTH, HEIGHT), PAPER)
    draw = ImageDraw.Draw(banner)
    draw.fontmode = "1"
    stairs(draw, 236, 6, ACCENT)
    # The right half of the edge melts: it is drawn large and reduced.
    large = Image.new("RGB", (WIDTH * 4, HEIGHT * 4), PAPER)
    ImageDraw.Draw(large).polygon(((236 * 4, 32), (WIDTH * 4, 32), (WIDTH * 4, 224), (332 * 4, 224)), fill=ACCENT)
    banner.paste(large.resize((WIDTH, HEIGHT), Image.LANCZOS).crop((284, 0, WIDTH, HEIGHT)), (284, 0))
    draw.fontmode = "L"
    draw.text((14, 12), "stairmelt", INK, ImageFont.truetype(FONT, 32))
    draw.line((14, 54, 200, 54), INK)
    banner.save(pathlib.Path(__file__).with_name("banner.bmp"))


main()
