#!/usr/bin/env python3
"""Adds the light grain of a scan to a picture, the same in every run: add_grain.py IN OUT.

Each sample changes by at most one step, which is invisible but leaves hardly any neighbours equal. Needs Pillow (Debian:
python3-pil).
"""

import random
import sys

from PIL import Image


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    picture = Image.open(sys.argv[1]).convert("RGB")
    generator = random.Random(1)
    samples = bytes(min(max(sample + generator.randint(-1, 1), 0), 255) for sample in picture.tobytes())
    Image.frombytes("RGB", picture.size, samples).save(sys.argv[2])


if __name__ == "__main__":
    main()
