#!/usr/bin/env python3
"""Has clang-tidy and cppcheck read the sources: static_analysis.py NATIVE_BUILD WINDOWS_BUILD [FILE...].

The two folders hold a compile_commands.json each. Most is read as it is compiled for Windows, with clang aimed at it and
the headers of mingw-w64: several sources in one file, since reading the headers takes most of the time. What only the
native build compiles is read as it is compiled there. Of the files that hold the kernels, one of each form is read, each
with another depth: they are the same templates, and take long. Tests aren't read: the library that they are written with
fills them with what the checks object to.

Exit status 0 means that neither has found anything. What .clang-tidy leaves out, and what a NOLINT or a cppcheck-suppress
lets pass, has its reason beside it.
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
INCLUDED = re.compile(r'^#include "(.*)"', re.MULTILINE)  # by a file that holds several sources
KERNELS_READ = ("plain_d8.cpp", "baseline_d16.cpp", "avx2_d32.cpp", "baseline_planner.cpp", "avx2_planner.cpp")
CROSS_COMPILER = "x86_64-w64-mingw32-g++-posix"
# Paths through a function that clang's analyzer follows at most. Its own limit is ten times as high, and what it finds
# beyond this one, in the string and map templates of the tools, isn't worth the minutes.
NODES = ["--extra-arg=-Xclang", "--extra-arg=-analyzer-config", "--extra-arg=-Xclang", "--extra-arg=max-nodes=20000"]
# It reads the functions of the sources that a file includes, too. (In the kernels it would take constants that are
# arguments of templates for uninitialised.)
INCLUDED_TOO = ["--extra-arg=-Xclang", "--extra-arg=-analyzer-opt-analyze-headers"]

# The style checks would ask for const pointers where the system wants others. Of what cppcheck 2.10 finds it misreads two
# things: a number made with braces within an index (constStatement), and a pointer to a container's new element
# (returnDanglingLifetime), for which the compilers and clang's analyzer look, too.
CPPCHECK = ["cppcheck", "--quiet", "--error-exitcode=1", "--enable=warning,performance,portability", "--inline-suppr",
            "--language=c++", "--std=c++20", "--max-configs=1",
            "--suppress=constStatement", "--suppress=returnDanglingLifetime", "--template={file}:{line}: {severity}: {message} [{id}]"]


def cross_headers():
    """The folders in which the cross compiler looks for headers, without those of its own intrinsics."""
    told = subprocess.run([CROSS_COMPILER, "-E", "-x", "c++", "-", "-v"], stdin=subprocess.DEVNULL, capture_output=True,
                          text=True, check=True).stderr
    folders = told.split("search starts here:\n")[-1].split("End of search list")[0].split()
    return [os.path.realpath(f) for f in folders if "c++" in f or f.endswith("x86_64-w64-mingw32/include")]


# What only GCC knows, precompiled headers among it, or what makes clang-tidy read the sources as for another system.
NOT_FOR_CLANG = re.compile(r' -(fno-ipa-ra|fno-threadsafe-statics|Wno-subobject-linkage)\b| -include (\\".*?\\"|\S*cmake_pch\.hxx)')


def commands_for_clang(build):
    """Makes a folder with the build's compile_commands.json without those options."""
    folder = build / "static-analysis"
    folder.mkdir(exist_ok=True)
    text = (build / "compile_commands.json").read_text(encoding="utf-8")
    (folder / "compile_commands.json").write_text(NOT_FOR_CLANG.sub("", text), encoding="utf-8")


def sources(native, windows, only):
    """(file, folder of its compile_commands.json, whether it is read as Windows') of all files to read."""
    seen, files = set(), []
    for build in (windows, native):
        for entry in json.loads((build / "compile_commands.json").read_text(encoding="utf-8")):
            path = pathlib.Path(entry["file"]).resolve()
            home = build.resolve() if path.suffix == ".cxx" else ROOT
            if path.suffix not in (".cpp", ".cxx") or home not in path.parents:
                continue
            if path.relative_to(home).parts[0] not in FOLDERS or (KERNELS.match(path.name) and path.name not in KERNELS_READ):
                continue
            held = {path}
            if path.suffix == ".cxx":
                held = {pathlib.Path(name) for name in INCLUDED.findall(path.read_text(encoding="utf-8"))}
            if not held <= seen and (not only or any(str(name).endswith(only) for name in held)):
                files.append((path, build, build == windows))
            seen |= held
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
        print(f"reading {len(files)} files; about {len(files) * 6} seconds on two cores", file=sys.stderr, flush=True)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        jobs = {pool.submit(tidy, s, headers): ("clang-tidy", s) for s in files}
        # It can't read the templates of lambdas in the kernels.
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
    print(f"{len(files)} files read in {time.monotonic() - start:.0f} s ({spent} of processes): "
          f"{'nothing found' if not findings else f'findings in {len(findings)}'}")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
