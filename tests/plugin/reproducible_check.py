#!/usr/bin/env python3
"""Builds the plug-in once more, in another folder: reproducible_check.py PLUGIN SOURCES TOOLCHAIN BUILD_TYPE.

The bytes have to be those of PLUGIN. Whoever is handed the file can then find out what it was made from.
"""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True  # nothing is to appear among the sources
import portable_executable as pe


def run(*command):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))}\n{done.stdout}")


def build_elsewhere(sources, toolchain, build_type, folder):
    """The bytes of a second plug-in, whose sources lie deeper than the first one's."""
    copy = folder / "a-folder-of-another-depth" / "and-length" / "sources"
    # The files of no build, wherever it was made, and not the history.
    shutil.copytree(sources, copy, ignore=shutil.ignore_patterns("build", ".git", "__pycache__"))
    build = folder / "made"
    run("cmake", "-S", copy, "-B", build, "-G", "Ninja", f"-DCMAKE_BUILD_TYPE={build_type}",
        f"-DCMAKE_TOOLCHAIN_FILE={copy / pathlib.Path(toolchain).relative_to(sources)}", "-DSTAIRMELT_TESTS=OFF",
        f"-DSTAIRMELT_LIBRARIES={sources}/build/libraries")
    run("cmake", "--build", build, "--target", "stairmelt")
    return (build / "stairmelt.8bf").read_bytes()


def differing_sections(first, second):
    pairs = zip(pe.PortableExecutable(first).sections, pe.PortableExecutable(second).sections)
    return [a.name for a, b in pairs if a != b] or ["the headers"]


def main(plugin, sources, toolchain, build_type):
    first = pathlib.Path(plugin).read_bytes()
    start = time.monotonic()
    with tempfile.TemporaryDirectory() as folder:
        second = build_elsewhere(pathlib.Path(sources), toolchain, build_type, pathlib.Path(folder))
    seconds = time.monotonic() - start
    if first != second:
        sys.exit(f"the two files differ, {len(first)} and {len(second)} bytes, in " +
                 ", ".join(differing_sections(first, second)))
    print(f"the same {len(first)} bytes in another folder, built in {seconds:.0f} s")


if __name__ == "__main__":
    main(*sys.argv[1:])
