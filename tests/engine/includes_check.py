#!/usr/bin/env python3
"""Which folders of the engine include which: includes_check.py ENGINE. The rules include neither form, the forms don't
include each other, and the engine includes nothing of the rest of the project."""

import pathlib
import re
import sys

# By folder, the folders that its files may include; "" is the engine's own, its front door.
ALLOWED = {"rules": {"", "rules"}, "plain": {"", "rules", "plain"}, "block": {"", "rules", "block"}, "": {""}}

engine = pathlib.Path(sys.argv[1])
faults, includes = [], 0
for path in sorted(engine.rglob("*.*")):
    folder = path.parent.relative_to(engine).as_posix().replace(".", "")
    for name in re.findall(r'^#include "(.*)"', path.read_text(encoding="utf-8"), re.MULTILINE):
        includes += 1
        parts = name.split("/")
        if parts[0] != "engine" or "/".join(parts[1:-1]) not in ALLOWED[folder]:
            faults.append(f"{path.relative_to(engine)} includes {name}")
print("\n".join(faults))
sys.exit(1 if faults or includes < 100 else 0)
