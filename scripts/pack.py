#!/usr/bin/env python3
"""Packs files: pack.py OUT.zip FOLDER FILE... They go into FOLDER, dated the format's first day, so that the same files
give the same bytes."""

import pathlib
import sys
import zipfile

FIRST_DAY = (1980, 1, 1, 0, 0, 0)
READABLE = 0o100644 << 16  # Unix mode of a regular file, for unpacking there


def main(out, folder, *names):
    unfinished = pathlib.Path(out + ".new")
    with zipfile.ZipFile(unfinished, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as package:
        for name in names:
            entry = zipfile.ZipInfo(f"{folder}/{pathlib.Path(name).name}", FIRST_DAY)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = READABLE
            entry.create_system = 3
            package.writestr(entry, pathlib.Path(name).read_bytes())
    unfinished.replace(out)


if __name__ == "__main__":
    main(*sys.argv[1:])
