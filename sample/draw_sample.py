#!/usr/bin/env python3
"""Draws sample.png: line art, lettering and a flat-colour drawing, all with hard edges.

Needs Pillow and the DejaVu fonts (Debian: python3-pil, fonts-dejavu-core). Run it in any directory; the picture is
written beside the script.
"""

import math
import pathlib

from PIL import Image, ImageChops, ImageDraw, ImageFont

FONTS = pathlib.Path("/usr/share/fonts/truetype/dejavu")
SIZE = (360, 240)
PAPER = (250, 246, 236)
INK = (28, 26, 40)


def draw_landscape(image, draw):
    """Flat colours: slopes of every steepness, and discs."""
    left, top, right, bottom = 8, 8, 176, 150
    draw.rectangle((left, top, right, bottom), fill=(132, 196, 226))
    draw.ellipse((122, 18, 158, 54), fill=(250, 206, 84))
    for x, y, radius in ((34, 40, 9), (46, 34, 12), (60, 40, 10)):
        draw.ellipse((x - radius, y - radius, x + radius, y + radius), fill=(244, 248, 250))
    mountains = ((left, 112), (52, 62), (84, 96), (112, 70), (right, 118), (right, bottom), (left, bottom))
    draw.polygon(mountains, fill=(92, 116, 168))
    # The snow has exactly the mountain's upper edge.
    slopes, snow = Image.new("1", SIZE), Image.new("1", SIZE)
    ImageDraw.Draw(slopes).polygon(mountains, fill=1)
    ImageDraw.Draw(snow).polygon(((20, 84), (52, 40), (84, 84), (64, 72), (56, 80), (47, 73), (40, 80)), fill=1)
    image.paste((244, 248, 250), (0, 0), ImageChops.logical_and(slopes, snow))
    draw.polygon(((left, 128), (92, 112), (right, 134), (right, bottom), (left, bottom)), fill=(88, 158, 92))
    draw.polygon(((92, bottom), (106, 121), (111, 121), (134, bottom)), fill=(218, 190, 142))
    draw.polygon(((24, 136), (34, 106), (44, 136)), fill=(34, 92, 62))
    draw.rectangle((32, 136, 36, 142), fill=(108, 72, 44))
    draw.polygon(((134, 122), (148, 110), (162, 122)), fill=(178, 58, 50))
    draw.rectangle((138, 122, 158, 136), fill=(240, 226, 198))
    draw.rectangle((145, 128, 150, 136), fill=(108, 72, 44))
    draw.rectangle((left, top, right, bottom), outline=INK)


def draw_fan(draw):
    """Line art: single-pixel lines through all angles, an outlined circle and a wave."""
    centre = (268, 150)
    for degrees in range(180, 361, 12):
        x = centre[0] + 84 * math.cos(math.radians(degrees))
        y = centre[1] + 84 * math.sin(math.radians(degrees))
        draw.line((*centre, round(x), round(y)), fill=INK)
    draw.ellipse((centre[0] - 60, centre[1] - 60, centre[0] + 60, centre[1] + 60), outline=INK, width=2)
    draw.rectangle((centre[0] - 84, centre[1] + 1, centre[0] + 84, centre[1] + 62), fill=PAPER)  # the lower half
    for row, colour in enumerate(((196, 62, 92), (40, 120, 150))):
        points = [(x, 26 + 14 * row + round(7 * math.sin((x - 184) / 13.0))) for x in range(184, 353)]
        draw.line(points, fill=colour, width=3)


def draw_lettering(draw):
    draw.fontmode = "1"  # no smoothing
    serif = ImageFont.truetype(str(FONTS / "DejaVuSerif-Bold.ttf"), 34)
    sans = ImageFont.truetype(str(FONTS / "DejaVuSans.ttf"), 15)
    draw.text((10, 156), "Stairs & rails", font=serif, fill=INK)
    draw.text((12, 202), "Hamburgefonstiv 0123456789", font=sans, fill=(150, 40, 46))
    draw.text((12, 220), "The quick brown fox jumps over it", font=sans, fill=INK)
    draw.text((296, 196), "@", font=serif, fill=(40, 120, 150))


def main():
    image = Image.new("RGB", SIZE, PAPER)
    draw = ImageDraw.Draw(image)
    draw_landscape(image, draw)
    draw_fan(draw)
    draw_lettering(draw)
    image.save(pathlib.Path(__file__).with_name("sample.png"), optimize=True)


if __name__ == "__main__":
    main()
