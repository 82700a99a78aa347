#!/usr/bin/env python3
"""Runs clang-tidy and cppcheck on the sources: static_analysis.py NATIVE_BUILD WINDOWS_BUILD [FILE...].

Both folders contain a compile_commands.json. Most sources are checked as they are compiled for Windows, by clang with that
target and the headers of mingw-w64, and several at once, since parsing the headers takes most of the time. Sources of the
native build alone are checked as they are compiled there. Kernels are the same templates and take long, so one file of
each form is checked, each with a different depth. Tests aren't checked: the macros of the test library violate too many
rules.

Exit status 0 means that there are no findings. Every exception has its reason beside it: in .clang-tidy, or at a NOLINT or
cppcheck-suppress.
"""

import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = ("engine", "host", "hostkit", "ui", "tools")
KERNELS = re.compile(r"(plain|baseline|avx2)_(d\d+|planner)\.cpp$")
INCLUDED = re.compile(r'^#include "(.*)"', re.MULTILINE)  # the sources in a unity file
KERNELS_READ = ("plain_d8.cpp", "baseline_d16.cpp", "avx2_d32.cpp", "baseline_planner.cpp", "avx2_planner.cpp")
CROSS_COMPILER = "x86_64-w64-mingw32-g++-posix"
# Limits the nodes that clang's analyzer visits per function. The default is ten times as high, which costs minutes for
# findings in the standard library's templates.
NODES = ["--extra-arg=-Xclang", "--extra-arg=-analyzer-config", "--extra-arg=-Xclang", "--extra-arg=max-nodes=20000"]
# Analyzes the functions in included sources, too. Not for kernels, where the analyzer mistakes constant template arguments
# for uninitialised values.
INCLUDED_TOO = ["--extra-arg=-Xclang", "--extra-arg=-analyzer-opt-analyze-headers"]

# Without style checks, which request const pointers where the system's functions take others. cppcheck 2.10 misreads two
# things: a number written with braces within an index (constStatement), and a pointer to a container's new element
# (returnDanglingLifetime), which the compilers and clang's analyzer check, too.
CPPCHECK = ["cppcheck", "--quiet", "--error-exitcode=1", "--enable=warning,performance,portability", "--inline-suppr",
            "--language=c++", "--std=c++20", "--max-configs=1",
            "--suppress=constStatement", "--suppress=returnDanglingLifetime", "--template={file}:{line}: {severity}: {message} [{id}]"]


def cross_headers():
    """The folders in which the cross compiler looks for headers, without those of its own intrinsics."""
    output = subprocess.run([CROSS_COMPILER, "-E", "-x", "c++", "-", "-v"], stdin=subprocess.DEVNULL, capture_output=True,
                          text=True, check=True).stderr
    folders = output.split("search starts here:\n")[-1].split("End of search list")[0].split()
    return [os.path.realpath(f) for f in folders if "c++" in f or f.endswith("x86_64-w64-mingw32/include")]


# Options that clang doesn't know, or that don't matter to the checks.
NOT_FOR_CLANG = re.compile(r' -(fno-ipa-ra|fno-threadsafe-statics|Wno-subobject-linkage)\b')


def contents_of(path):
    """The sources in a file that holds several, or the file itself."""
    if path.suffix != ".cxx":
        return {path}
    return {pathlib.Path(name) for name in INCLUDED.findall(path.read_text(encoding="utf-8"))}


def commands_for_clang(build):
    """Makes a folder with the build's compile_commands.json without those options, and with each source by itself."""
    folder = build / "static-analysis"
    folder.mkdir(exist_ok=True)
    entries = json.loads(NOT_FOR_CLANG.sub("", (build / "compile_commands.json").read_text(encoding="utf-8")))
    for entry in entries[:]:
        for name in contents_of(pathlib.Path(entry["file"])) - {pathlib.Path(entry["file"])}:
            entries.append(dict(entry, file=str(name), command=entry["command"].replace(entry["file"], str(name))))
    (folder / "compile_commands.json").write_text(json.dumps(entries), encoding="utf-8")


def sources(native, windows, only):
    """All files to check: (file, folder of its compile_commands.json, whether it is checked for Windows)."""
    seen, files = set(), []
    for build in (windows, native):
        for entry in json.loads((build / "compile_commands.json").read_text(encoding="utf-8")):
            path = pathlib.Path(entry["file"]).resolve()
            home = build.resolve() if path.suffix == ".cxx" else ROOT
            if path.suffix not in (".cpp", ".cxx") or home not in path.parents:
                continue
            if path.relative_to(home).parts[0] not in FOLDERS or (KERNELS.match(path.name) and path.name not in KERNELS_READ):
                continue
            contents = contents_of(path)
            if not contents <= seen and (not only or any(str(name).endswith(only) for name in contents)):
                # Most of what a native file holds has been checked for Windows.
                files += [(file, build, build == windows) for file in ([path] if build == windows else contents - seen)]
            seen |= contents
    return sorted(files, key=lambda s: s[0].suffix, reverse=True)


def run(command):
    start = time.monotonic()
    done = subprocess.run(command, cwd=ROOT, capture_output=True, text=True, check=False)
    return done.returncode, done.stdout + (done.stderr if done.returncode != 0 else ""), time.monotonic() - start


def tidy(source, headers):
    path, build, is_windows = source
    command = ["clang-tidy", "-p", build / "static-analysis", "--quiet", "--checks=-bugprone-suspicious-include", *NODES]
    if path.suffix == ".cxx":
        command += INCLUDED_TOO
    if is_windows:
        command += ["--extra-arg=--target=x86_64-w64-mingw32", "--extra-arg=-nostdinc++"]
        command += [f"--extra-arg=-isystem{folder}" for folder in headers]
    return run([*command, path])


def check(source):
    path, _, is_windows = source
    defined = ["-D_WIN32" if is_windows else "-D__linux__", "-D__x86_64__", "-D__GNUC__=12"]
    return run([*CPPCHECK, *defined, "-I", ROOT, path])


def main(native, windows, *only):
    files = sources(pathlib.Path(native), pathlib.Path(windows), only)
    for build in (native, windows):
        commands_for_clang(pathlib.Path(build))
    headers = cross_headers()
    start = time.monotonic()
    findings, times, done = [], {}, 0
    if not sys.stderr.isatty():
        print(f"checking {len(files)} files; about {len(files) * 3} seconds on two cores", file=sys.stderr, flush=True)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        jobs = {pool.submit(tidy, s, headers): ("clang-tidy", s) for s in files}
        # cppcheck can't parse the template lambdas in the kernels.
        jobs |= {pool.submit(check, s): ("cppcheck", s) for s in files if not KERNELS.match(s[0].name)}
        for job in concurrent.futures.as_completed(jobs):
            status, text, seconds = job.result()
            done += 1
            if sys.stderr.isatty():
                print(f"\r{done} of {len(jobs)}", end="\n" if done == len(jobs) else "", file=sys.stderr, flush=True)
            name, source = jobs[job]
            times[name] = times.get(name, 0) + seconds
            if status != 0 or "warning:" in text:
                findings.append(f"{name}, {source[0].relative_to(ROOT)}:\n{text}")
    print("\n".join(findings), end="")
    spent = ", ".join(f"{name} {seconds:.0f} s" for name, seconds in sorted(times.items()))
    print(f"{len(files)} files checked in {time.monotonic() - start:.0f} s (sums over all processes: {spent}): "
          f"{'no findings' if not findings else f'findings in {len(findings)}'}")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
