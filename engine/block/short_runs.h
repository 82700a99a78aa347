// The runs of one and two cells of all pixels of some blocks, with the runs at their far ends, by the same rules as
// RunLength and MeasureRun (rules/run_rules.h): most runs are that short, and measuring each of them would take most
// of the time.
#pragma once

#include "engine/block/action.h"
#include "engine/block/flag_block.h"
#include "engine/rules/run_rules.h"

namespace stairmelt::inline STAIRMELT_SET {

template <class Words>
struct ShortRuns {
    Words any;                     // pixels with a run of any length
    Words pixels[kShortRunKinds];  // by kShortRuns
};

// One walk: the cells at which it continues, and where it counts.
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
inline ShortRuns<Words> FindShortRuns(const FlagBlocks<Words>& block, Words hasEdge) {
    constexpr RunScanner kForth = kRulesOf<kDirection>.forth, kBack = kRulesOf<kDirection>.back;
    constexpr int dx = kForth.dx, dy = kForth.dy;
    const ShortWalk<kForth, kForth.first, Words> first(block);
    const ShortWalk<kForth, kForth.second, Words> second(block);
    const Words any = hasEdge & (first.counts | second.counts);

    // The first walk wins if it ends closed; otherwise the longer one does.
    const Words oneWins = first.IsOne() & block.template Where<Moved(kForth.end, 2 * dx, 2 * dy)>();
    const Words twoWins = first.IsTwo() & block.template Where<Moved(kForth.end, 3 * dx, 3 * dy)>();
    const Words isLong = (first.IsLong() | second.IsLong()) & ~(oneWins | twoWins);
    const Words isTwo = any & ~isLong & ~oneWins & (first.IsTwo() | second.IsTwo());
    const Words isOne = any & ~isLong & ~isTwo;

    // A walk back crosses the same cells and doesn't pass the edge, so a far run is never longer than the run. It
    // consists of the continuing cells at its own end, unless its guard drops it.
    const auto notDropped = [&]<FlagTest kGuard, int kCells>() {
        return block.template Where<Not(Moved(kGuard, (kCells + 1) * dx, (kCells + 1) * dy))>();
    };
    const Words farIsOne = (first.cells[0] & notDropped.template operator()<kBack.first.guard, 1>()) |
                           (second.cells[0] & notDropped.template operator()<kBack.second.guard, 1>());
    const Words firstBack = first.cells[1] & notDropped.template operator()<kBack.first.guard, 2>();
    const Words secondBack = second.cells[1] & notDropped.template operator()<kBack.second.guard, 2>();
    const Words farIsTwo = (firstBack & first.cells[0]) | (secondBack & second.cells[0]);
    const Words back = firstBack | secondBack;
    return {any, {isOne & ~farIsOne, isOne & farIsOne, isTwo & ~back, isTwo & back & ~farIsTwo, isTwo & farIsTwo}};
}

// As MeasureRun. The walk back on the same side crosses the same cells up to the edge: unless it is dropped, it counts
// as many and wins.
template <RunDirection kDirection, class Cursor>
inline RunPair MeasureRunOnce(Cursor at, int32_t room) {
    constexpr RunScanner kForth = kRulesOf<kDirection>.forth, kBack = kRulesOf<kDirection>.back;
    const int32_t n = WalkLength<kForth, kForth.first>(at);
    const int32_t m = WalkLength<kForth, kForth.second>(at);
    const bool firstWins = FirstWins<kForth>(at, n, m);
    const int32_t length = firstWins ? n : m;
    if (length == 0 || length + 1 > room) return {length, 0};
    at.Move(kForth.dx * (length + 1), kForth.dy * (length + 1));
    if (firstWins) return {length, IsDropped<kBack.first>(at, length) ? WalkLength<kBack, kBack.second>(at) : length};
    return {length, IsDropped<kBack.second>(at, length) ? WalkLength<kBack, kBack.first>(at) : length};
}

}  // namespace stairmelt::inline STAIRMELT_SET
