// The runs of one and two cells of all pixels of some blocks, with the runs at their far ends, by the same rules as
// RunLength and MeasureRun (rules/run_rules.h): most runs are that short, and measuring each of them would take most
// of the time.
#pragma once

#include "engine/block/flag_block.h"
#include "engine/rules/run_rules.h"

namespace stairmelt::inline STAIRMELT_SET {

template <class Words>
struct ShortRuns {
    Words any;    // pixels with a run of any length
    Words isOne;  // of one cell
    Words isTwo;
    Words farIsOne;  // where isOne or isTwo: the far run's length; 0 where neither is set
    Words farIsTwo;
};

// One walk, forth or back: the cells at which it continues, and where it counts.
template <RunScanner kForth, Walk kWalk, class Words>
struct ShortWalk {
    Words cells[3];  // the walk doesn't stop before cell 1, 2, 3
    Words counts;    // at least one cell, and not dropped

    explicit ShortWalk(const FlagBlocks<Words>& block)
        : cells{WalkGoesOn<kForth, kWalk, 1>(block), WalkGoesOn<kForth, kWalk, 2>(block),
                WalkGoesOn<kForth, kWalk, 3>(block)},
          counts(WalkCounts<kForth, kWalk>(block)) {}

    Words IsOne() const { return counts & ~cells[1]; }
    Words IsTwo() const { return counts & cells[1] & ~cells[2]; }
    Words IsLong() const { return counts & cells[1] & cells[2]; }
};

template <RunDirection kDirection, class Words>
ShortRuns<Words> FindShortRuns(const FlagBlocks<Words>& block, Words hasEdge) {
    constexpr RunScanner kForth = kRulesOf<kDirection>.forth, kBack = kRulesOf<kDirection>.back;
    constexpr int dx = kForth.dx, dy = kForth.dy;
    const ShortWalk<kForth, kForth.first, Words> first(block);
    const ShortWalk<kForth, kForth.second, Words> second(block);
    ShortRuns<Words> runs;
    runs.any = hasEdge & (first.counts | second.counts);

    // The first walk wins if it ends closed; otherwise the longer one does.
    const Words oneWins = first.IsOne() & block.template Where<Moved(kForth.end, 2 * dx, 2 * dy)>();
    const Words twoWins = first.IsTwo() & block.template Where<Moved(kForth.end, 3 * dx, 3 * dy)>();
    const Words isLong = (first.IsLong() | second.IsLong()) & ~(oneWins | twoWins);
    runs.isTwo = runs.any & ~isLong & ~oneWins & (first.IsTwo() | second.IsTwo());
    runs.isOne = runs.any & ~isLong & ~runs.isTwo;

    // A walk back crosses the same cells and doesn't pass the edge, so a far run is never longer than the run. It
    // consists of the continuing cells at its own end, unless its guard drops it.
    const auto notDropped = [&]<FlagTest kGuard, int kCells>() {
        return block.template Where<Not(Moved(kGuard, (kCells + 1) * dx, (kCells + 1) * dy))>();
    };
    const Words one = (first.cells[0] & notDropped.template operator()<kBack.first.guard, 1>()) |
                      (second.cells[0] & notDropped.template operator()<kBack.second.guard, 1>());
    const Words back1 = first.cells[1] & notDropped.template operator()<kBack.first.guard, 2>();
    const Words back2 = second.cells[1] & notDropped.template operator()<kBack.second.guard, 2>();
    const Words two = (back1 & first.cells[0]) | (back2 & second.cells[0]);
    runs.farIsTwo = runs.isTwo & two;
    runs.farIsOne = (runs.isOne & one) | (runs.isTwo & (back1 | back2) & ~two);
    return runs;
}

}  // namespace stairmelt::inline STAIRMELT_SET
