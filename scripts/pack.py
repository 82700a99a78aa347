#!/usr/bin/env python3
"""Packs files: pack.py OUT.zip FOLDER FILE... They stand in one folder there, dated as the format's first day, so that the
same files give the same bytes."""

import pathlib
import sys
import zipfile

FIRST_DAY = (1980, 1, 1, 0, 0, 0)
READABLE = 0o100644 << 16  # a file of Unix, for programs that unpack it there


def main(out, folder, *names):
    beside = pathlib.Path(out + ".new")
    with zipfile.ZipFile(beside, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as package:
        for name in names:
            entry = zipfile.ZipInfo(f"{folder}/{pathlib.Path(name).name}", FIRST_DAY)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = READABLE
            entry.create_system = 3
            package.writestr(entry, pathlib.Path(name).read_bytes())
    beside.replace(out)


if __name__ == "__main__":
    main(*sys.argv[1:])
