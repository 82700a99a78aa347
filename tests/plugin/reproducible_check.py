#!/usr/bin/env python3
"""Builds the plug-in once more, in another folder: reproducible_check.py PLUGIN SOURCES.

The result must be byte for byte PLUGIN, so that users can find out what a file was made from.
"""

import pathlib
import shutil
import subprocess
import sys
import tempfile

import pefile


def run(*command):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))}\n{done.stdout}")


def build_elsewhere(sources, folder):
    """The bytes of a second plug-in, whose sources are in a deeper folder than the first one's."""
    copy = folder / "a-folder-of-another-depth" / "and-length" / "sources"
    shutil.copytree(sources, copy, ignore=shutil.ignore_patterns("build", ".git", "__pycache__"))
    build = folder / "made"
    run("cmake", "-S", copy, "-B", build, "--preset", "windows", "-DSTAIRMELT_TESTS=OFF",
        f"-DSTAIRMELT_LIBRARIES={sources}/build/libraries")
    run("cmake", "--build", build, "--target", "stairmelt")
    return (build / "stairmelt.8bf").read_bytes()


def sections(data):
    return {section.Name: section.get_data() for section in pefile.PE(data=data).sections}


plugin, sources = sys.argv[1:]
first = pathlib.Path(plugin).read_bytes()
with tempfile.TemporaryDirectory() as folder:
    second = build_elsewhere(pathlib.Path(sources), pathlib.Path(folder))
if first != second:
    differing = [name for name, data in sections(first).items() if sections(second).get(name) != data] or "the headers"
    sys.exit(f"the two files differ, {len(first)} and {len(second)} bytes, in {differing}")
print(f"the same {len(first)} bytes in another folder")
