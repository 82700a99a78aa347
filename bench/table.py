#!/usr/bin/env python3
"""Prints the times of the kernels as tables, in Markdown.

    table.py RESULTS.json                          results of an earlier run
    table.py RESULTS.json --run BENCH [OPTION...]  runs kernel_bench first, with the options, and stores its results;
                                                   for example --benchmark_filter=^rgb8
"""

import json
import os
import pathlib
import subprocess
import sys

sys.dont_write_bytecode = True  # keeps the source folder clean
from results import Results, copies, per_megapixel

REPETITIONS = 5


def cpu_name():
    try:
        lines = pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines()
        return next(line.split(":", 1)[1].strip() for line in lines if line.startswith("model name"))
    except (OSError, StopIteration):
        return "unknown processor"


def measure(path, bench, options):
    path = pathlib.Path(path)
    path.unlink(missing_ok=True)
    command = [bench, f"--benchmark_repetitions={REPETITIONS}", f"--benchmark_out={path}",
               "--benchmark_out_format=json", *options]
    done = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=False)
    try:
        content = json.loads(path.read_text(encoding="utf-8"))
    except (OSError, ValueError):
        content = {"benchmarks": []}
    if done.returncode != 0 or not content["benchmarks"]:
        sys.exit(f"table.py: nothing was measured\n{done.stderr}".rstrip())
    content["context"].update({"cpu": cpu_name(), "load_after": list(os.getloadavg())})
    path.write_text(json.dumps(content, indent=1), encoding="utf-8")


def number(value):
    """Three significant digits."""
    for limit, digits in ((1, 3), (10, 2), (100, 1)):
        if value < limit:
            return f"{value:.{digits}f}"
    return f"{value:.0f}"


def percent(share):
    return f"{100 * share:.1f} %"


def print_table(title, columns, rows, corner=""):
    print(f"\n{title}\n")
    print(f"| {corner} | {' | '.join(columns)} |")
    print(f"| --- |{' ---: |' * len(columns)}")
    for name, cells in rows:
        print(f"| {name} | {' | '.join(cells)} |")


def print_pictures(results, group, title):
    """A row for each measurement, in milliseconds per megapixel and as multiples of the copy."""
    pictures = results.pictures(group)
    if not pictures:
        return

    def row(name, what, show):
        medians = [results.get(group, picture, what) for picture in pictures]
        return name, [show(median) if median else "" for median in medians]

    measurements = results.measurements(group)
    rows = [row("pixels with an R or D flag", measurements[0], lambda median: percent(median.flagged))]
    rows += [row(f"{what}, ms per megapixel", what, lambda median: number(per_megapixel(median)))
             for what in measurements]
    rows += [row(f"{what}, copies", what, lambda median: number(copies(median)))
             for what in measurements if what != "copy"]
    print_table(title, pictures, rows)


def print_formats(results):
    names = results.pictures("formats")
    rgb8 = results.get("formats", "C3D8", "fast")
    if rgb8 is None:
        return

    def ratio(name):
        return per_megapixel(results.get("formats", name, "fast")) / per_megapixel(rgb8)

    def cell(name):
        median = results.get("formats", name, "fast")
        return f"{number(per_megapixel(median))} ({ratio(name):.2f})" if median else ""

    rows = []
    for channels in "1234":
        for extra, with_opacity in (("", ""), ("A", " and opacity")):
            cells = [cell(f"C{channels}D{depth}{extra}") for depth in (8, 16, 32)]
            rows.append((f"{channels} channels{with_opacity}".replace("1 channels", "1 channel"), cells))
    print_table("All formats on the cartoon: ms per megapixel (ratio to 8-bit RGB)", ["8 bits", "16 bits", "32 bits"],
                rows)
    slowest = max(names, key=ratio)
    print(f"\nThe slowest is {slowest}, at {ratio(slowest):.2f} times 8-bit RGB.")


def main():
    words = sys.argv[1:]
    if not words or (len(words) > 1 and (words[1] != "--run" or len(words) < 3)):
        sys.exit(__doc__)
    if len(words) > 1:
        measure(words[0], words[2], words[3:])
    results = Results(words[0])
    context = results.context

    def loads(values):
        return " ".join(f"{load:.2f}" for load in values)

    print(f"{context.get('cpu', 'unknown processor')}, one of {context['num_cpus']} threads; "
          f"load average {loads(context['load_avg'])} before, {loads(context.get('load_after', []))} after. "
          f"Medians of {results.repetitions()} runs. A copy is a memcpy of the same picture, just before each run.")
    print_pictures(results, "rgb8", "24 megapixels of 8-bit RGB")
    print_formats(results)


if __name__ == "__main__":
    main()
