#!/usr/bin/env python3
"""Builds the users' guide: build.py --version 1.0.2 OUT.html.

The guide is one self-contained file: the frame with both languages in it and each picture as a data URI.
The same sources give the same bytes. Only the standard library is used.
"""

import argparse
import base64
import pathlib
import re
import sys

FOLDER = pathlib.Path(__file__).resolve().parent
PLACEHOLDER = re.compile(r"\{\{\s*([^{}]*?)\s*\}\}")


class GuideError(Exception):
    """Why the guide can't be built, in one line."""


def read_text(path):
    try:
        return path.read_text("utf-8")
    except OSError as error:
        raise GuideError(f"{path}: {error.strerror}") from None


def data_uri(name, pictures):
    path = pictures / name
    if path.suffix != ".png":
        raise GuideError(f"{path}: pictures of the guide are PNG files")
    try:
        content = path.read_bytes()
    except OSError as error:
        raise GuideError(f"{path}: {error.strerror}") from None
    return "data:image/png;base64," + base64.b64encode(content).decode("ascii")


def fill(text, values, pictures):
    """Replaces {{NAME}} by values[NAME] and {{picture FILE}} by the picture itself."""

    def value_of(match):
        name = match[1]
        if name.startswith("picture "):
            return data_uri(name.removeprefix("picture ").strip(), pictures)
        if name not in values:
            raise GuideError(f"unknown placeholder: {match[0]}")
        return values[name]

    filled = PLACEHOLDER.sub(value_of, text)
    for remains in ("{{", "}}"):
        if remains in filled:
            line = filled[: filled.index(remains)].count("\n") + 1
            raise GuideError(f"incomplete placeholder: {remains} in line {line}")
    return filled


def build(version, folder=FOLDER):
    """The guide's text. The pictures are in the project's sample folder."""
    values = {"version": version}
    pictures = folder.parent / "sample"
    for language in ("english", "japanese"):
        text = fill(read_text(folder / f"{language}.html"), values, pictures)
        # A browser would break an option's name after its hyphens.
        values[language] = re.sub(r"<code>(?=[^<\s]{1,24}</code>)", '<code class="whole">', text)
    return fill(read_text(folder / "frame.html"), values, pictures)


def main():
    parser = argparse.ArgumentParser(description="Builds the users' guide as one HTML file.")
    parser.add_argument("--version", required=True, help="of the program that the guide describes, such as 1.0.2")
    parser.add_argument("out", type=pathlib.Path, metavar="OUT.html")
    arguments = parser.parse_args()
    if not re.fullmatch(r"\d+\.\d+\.\d+", arguments.version):
        parser.error("--version needs three numbers, such as 1.0.2")
    try:
        content = build(arguments.version).encode("utf-8")
        arguments.out.write_bytes(content)
    except (GuideError, OSError) as error:
        sys.exit(f"build.py: {error}")
    print(f"{arguments.out}: {len(content)} bytes")


if __name__ == "__main__":
    main()
