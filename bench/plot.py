#!/usr/bin/python3
"""Draws the README's plot from the results of table.py: plot.py RESULTS.json PICTURE, such as speed.png or speed.svg.

Needs Matplotlib (Debian: python3-matplotlib).
"""

import sys

import matplotlib

matplotlib.use("Agg")  # no display
from matplotlib import pyplot
from matplotlib.patheffects import withStroke
from matplotlib.ticker import FuncFormatter, NullLocator

sys.dont_write_bytecode = True  # keeps the source folder clean
from results import Results, copies

INK = "#2a2a33"
FAINT = "#8a8a94"
# The measurements shown, with labels and colours.
STYLES = {
    "read": ("reading only", "#c9ccd6"),
    "fast": ("kernel", "#2f6fb7"),
    "baseline": ("kernel without AVX2", "#8fb8e0"),
    "plain": ("kernel, plain form", "#e3a857"),
}
GROUP_WIDTH = 0.82  # of the distance between two pictures


def label(value):
    return f"{value:.1f}" if value < 9.95 else f"{value:.0f}"


def draw(results, path):
    pictures = results.pictures("rgb8")
    measurements = [what for what in results.measurements("rgb8") if what in STYLES]
    if not pictures:
        sys.exit("plot.py: these results have no group rgb8")

    figure, axes = pyplot.subplots(figsize=(9.6, 4.6))
    bar_width = GROUP_WIDTH / len(measurements)
    for i, what in enumerate(measurements):
        name, color = STYLES[what]
        places = [n - GROUP_WIDTH / 2 + (i + 0.5) * bar_width for n in range(len(pictures))]
        heights = [copies(results.get("rgb8", picture, what)) for picture in pictures]
        # On a logarithmic scale, bars have no natural base; theirs is below the smallest value.
        bars = axes.bar(places, heights, bar_width * 0.94, color=color, label=name, zorder=2)
        axes.bar_label(bars, [label(height) for height in heights], padding=2, fontsize=8.5, color=INK, zorder=4,
                       path_effects=[withStroke(linewidth=3, foreground="white")])

    axes.axhline(1, color=INK, linewidth=1, linestyle=(0, (4, 3)), zorder=3)
    axes.annotate("copying\nthe picture", (len(pictures) - 0.5, 1), xytext=(6, 0), textcoords="offset points",
                  va="center", fontsize=9, color=INK, annotation_clip=False)
    axes.set_yscale("log")
    axes.set_ylim(0.2, None)
    axes.margins(y=0.12)
    axes.yaxis.set_major_formatter(FuncFormatter(lambda value, _: f"{value:g}"))
    axes.yaxis.set_minor_locator(NullLocator())
    axes.set_ylabel("time, in copies of the picture", color=INK)
    flagged = [results.get("rgb8", picture, measurements[0]).flagged for picture in pictures]
    axes.set_xticks(range(len(pictures)),
                    [f"{picture}\n{100 * share:.1f} %" for picture, share in zip(pictures, flagged)])
    axes.set_xlim(-0.5, len(pictures) - 0.5)
    axes.set_xlabel("picture, and its pixels beside an edge", color=INK)
    axes.tick_params(colors=INK, length=0)
    axes.tick_params(axis="y", which="both", labelcolor=FAINT)
    axes.grid(axis="y", color="#e6e6ec", zorder=0)
    for side in ("top", "right", "left"):
        axes.spines[side].set_visible(False)
    axes.spines["bottom"].set_color(FAINT)
    axes.legend(loc="lower right", bbox_to_anchor=(1, 1), ncols=len(measurements), frameon=False, labelcolor=INK)
    megapixels = results.get("rgb8", pictures[0], measurements[0]).megapixels
    axes.set_title(f"{megapixels:.0f} megapixels of 8-bit RGB, one thread", loc="left", color=INK, fontsize=12, pad=30)
    figure.tight_layout()
    figure.savefig(path, dpi=100)


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    draw(Results(sys.argv[1]), sys.argv[2])


if __name__ == "__main__":
    main()
