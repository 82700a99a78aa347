#!/usr/bin/env python3
"""Compares files and messages of the native runfilter with those of runfilter.exe under Wine:
same_files_check.py RUNFILTER RUNFILTER.EXE PICTURES... Status 77, skipped, if there is no Wine or no runfilter.exe."""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile


def start(*words):
    with open("log", "w", encoding="utf-8") as log:
        return subprocess.Popen([*words, "--settings", "settings", "--threshold", "12"], stdout=log, stderr=log)


def run(*words):
    status = start(*words, "--out", "out/", "in/*.*").wait()
    told = re.sub(r"[0-9.]+ (per )?second", "", pathlib.Path("log").read_text("utf-8"))
    files = {path.name: path.read_bytes() for path in (*pathlib.Path("out").iterdir(), pathlib.Path("settings"))}
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

    os.symlink("missing.png", "link.png")
    for option, status in (("--repeat=2", 0), ("--dialog", 2)):
        assert start(native, option, "in/png-L.png", "link.png").wait() == status, option
    assert os.path.islink("link.png") and start(native, "--jobs=2", "--out=out", "link.png").wait() == 2
    assert "[--jobs N]" not in pathlib.Path("log").read_text("utf-8"), "not among the options"
    batch = start(native, "--out=out", "in/*.*")
    while batch.poll() is None and not list(pathlib.Path().glob("out/*.png")):
        pass
    batch.send_signal(signal.SIGINT)
    assert batch.wait() == 130 and " left; " in pathlib.Path("log").read_text("utf-8")
