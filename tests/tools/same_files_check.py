#!/usr/bin/env python3
"""Compares files and messages of the native runfilter with those of runfilter.exe under Wine:
same_files_check.py RUNFILTER RUNFILTER.EXE PICTURES... Status 77, skipped, if there is no Wine or no runfilter.exe."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile


def run(*words):
    with open("log", "w+", encoding="utf-8") as log:
        status = subprocess.run([*words, "--settings", "settings", "--threshold", "12", "--out", "out/", "in/*.*"],
                                stdout=log, stderr=log, check=False).returncode
        log.seek(0)
        told = re.sub(r"[0-9.]+ (per )?second", "", log.read())
    files = {path.name: path.read_bytes() for path in pathlib.Path("out").iterdir()}
    files["settings"] = pathlib.Path("settings").read_bytes()
    os.remove("settings")
    shutil.rmtree("out")
    return status, told, files


native, program, *pictures = sys.argv[1:]
if shutil.which("wine") is None or not os.path.exists(program):
    sys.exit(77)
os.environ.update({"LC_ALL": "C.UTF-8", "WINEDEBUG": "-all", "STAIRMELT_COMMAND": "smooth"})
with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    os.mkdir("in")
    for picture in pictures:
        for suffix in (".png", ".tif"):
            shutil.copy(picture, "in/" + os.path.basename(picture) + suffix)
    here, there = run(native), run("wine", program)
assert here[2].keys() == there[2].keys() and len(here[2]) > len(pictures), there
assert not [name for name in here[2] if here[2][name] != there[2][name]]
assert here[:2] == there[:2], (here[:2], there[:2])
assert subprocess.run([native, "--dialog", *pictures[:1], "out.png"], check=False, stderr=subprocess.DEVNULL).returncode == 2
