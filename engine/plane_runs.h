// Measures runs and tails on flag planes, by the rules of run_rules.h and with the same lengths as run_scanners.h. A
// walk along a row is a count of bits, 57 cells at a time; a walk along a column looks at one bit in each row. Walks
// that go down have the rows built that they come to.
#pragma once

#include <bit>
#include <cstdint>

#include "engine/diagonal_measure.h"
#include "engine/flag_block.h"
#include "engine/flag_planes.h"
#include "engine/run_rules.h"

namespace stairmelt::inline STAIRMELT_SET {

// So many rows below a cell of a walk are looked at, by the walk or by the one that comes back from its end.
constexpr int32_t kRowsBelow = 3;

constexpr int32_t kWindowCells = 57;  // of a word that begins in the middle of a byte, so many bits are left at least

// The flags of a row from column x on to the right: bit k is column x + k.
inline uint64_t FlagsFrom(const FlagPlanes& planes, FlagTest test, int32_t x, int32_t y) {
    const int32_t bit = x + test.dx + kGuardColumns;
    const uint64_t flags = LoadWord(planes.Row(test.flag, y + test.dy) + (bit >> 3)) >> (bit & 7);
    return test.wanted ? flags : ~flags;
}

// The flags of a row from column x on to the left: bit 63 - k is column x - k.
inline uint64_t FlagsUpTo(const FlagPlanes& planes, FlagTest test, int32_t x, int32_t y) {
    const int32_t bit = x + test.dx + kGuardColumns;
    const uint64_t flags = LoadWord(planes.Row(test.flag, y + test.dy) + (bit >> 3) - 7) << (7 - (bit & 7));
    return test.wanted ? flags : ~flags;
}

// One flag along a walk that crosses rows, from (x, y) on.
struct FlagColumn {
    const uint8_t* byte;
    uint8_t mask;
    bool wanted;

    FlagColumn(const FlagPlanes& planes, FlagTest test, int32_t x, int32_t y)
        : byte(planes.Row(test.flag, y + test.dy) + ((x + test.dx + kGuardColumns) >> 3)),
          mask(static_cast<uint8_t>(1 << ((x + test.dx + kGuardColumns) & 7))),
          wanted(test.wanted) {}

    bool HoldsAt(ptrdiff_t offset) const { return ((byte[offset] & mask) != 0) == wanted; }
};

// Counts the cells of a walk from (x, y) on, in steps of (kDx, kDy), in which all tests hold.
template <int kDx, int kDy, FlagTest... kTests>
int32_t CountCells(FlagPlanes& planes, int32_t x, int32_t y) {
    int32_t n = 0;
    if constexpr (kDy != 0) {
        static_assert(kDx == 0);
        const ptrdiff_t step = kDy * planes.RowBytes();
        return [&](auto... columns) {
            for (ptrdiff_t offset = 0;; offset += step, ++n) {
                if constexpr (kDy > 0) planes.Need(y + n + kRowsBelow);
                if (!(columns.HoldsAt(offset) && ...)) return n;
            }
        }(FlagColumn(planes, kTests, x, y)...);
    } else {
        int32_t inWindow;
        do {
            inWindow = kDx > 0 ? std::countr_one((FlagsFrom(planes, kTests, x, y) & ...))
                               : std::countl_one((FlagsUpTo(planes, kTests, x, y) & ...));
            if (inWindow > kWindowCells) inWindow = kWindowCells;
            n += inWindow;
            x += kDx * inWindow;
        } while (inWindow == kWindowCells);
        return n;
    }
}

template <RunScanner kScanner, Walk kWalk>
int32_t CountWalk(FlagPlanes& planes, int32_t x, int32_t y) {
    return CountCells<kScanner.dx, kScanner.dy, Not(kScanner.end), Not(kWalk.breakIfSet), kWalk.breakIfClear>(
        planes, x + kScanner.dx, y + kScanner.dy);
}

// A run as measured from one of its ends.
struct MeasuredRun {
    int32_t length;
    bool onFirstSide;  // of the two sides of the line on which it lies: the first walk's
};

template <RunScanner kScanner>
MeasuredRun MeasureRun(FlagPlanes& planes, int32_t x, int32_t y) {
    const PlaneCursor step{planes, x, y};
    int32_t n = 0;
    if (!step.Holds(kScanner.first.guard)) {
        n = CountWalk<kScanner, kScanner.first>(planes, x, y);
        if (n >= kLongRun && !step.Holds(kScanner.first.confirmation)) {
            n = 0;
        } else if (n != 0 && step.Holds(Moved(kScanner.end, kScanner.dx * (n + 1), kScanner.dy * (n + 1)))) {
            return {n, true};
        }
    }
    if (step.Holds(kScanner.second.guard)) return {n, true};
    int32_t m = CountWalk<kScanner, kScanner.second>(planes, x, y);
    if (m >= kLongRun && !step.Holds(kScanner.second.confirmation)) m = 0;
    return n >= m ? MeasuredRun{n, true} : MeasuredRun{m, false};
}

// Two scanners look at the same cells of a run, each from its end.
constexpr bool IsSameLine(const RunScanner& a, const RunScanner& b) {
    const auto isSame = [](FlagTest s, FlagTest t) { return s.dx == t.dx && s.dy == t.dy && s.flag == t.flag; };
    const auto isSameSide = [&](const Walk& s, const Walk& t) {
        return isSame(s.breakIfSet, t.breakIfSet) && isSame(s.breakIfClear, t.breakIfClear);
    };
    return isSame(a.end, b.end) && isSameSide(a.first, b.first) && isSameSide(a.second, b.second);
}

// The length of the run that kBack finds at (x, y), the far end of a run that was measured the other way. On that run's
// side the way back crosses the same cells and ends, closed, at the step that they were measured from.
template <RunScanner kForth, RunScanner kBack>
int32_t FarRunLength(FlagPlanes& planes, int32_t x, int32_t y, const MeasuredRun& run) {
    static_assert(IsSameLine(kForth, kBack));
    if (!run.onFirstSide) return MeasureRun<kBack>(planes, x, y).length;
    const PlaneCursor step{planes, x, y};
    if (!step.Holds(kBack.first.guard) && (run.length < kLongRun || step.Holds(kBack.first.confirmation))) {
        return run.length;
    }
    if (step.Holds(kBack.second.guard)) return 0;
    const int32_t m = CountWalk<kBack, kBack.second>(planes, x, y);
    return m >= kLongRun && !step.Holds(kBack.second.confirmation) ? 0 : m;
}

// The counted length of the tail at a step that has one.
template <TailRule kRule>
int32_t TailLength(FlagPlanes& planes, int32_t x, int32_t y) {
    return CountedTail(CountCells<kRule.dx, kRule.dy, Not(kRule.end), Not(kRule.nearBreak), kRule.nearSide,
                                  Not(kRule.farBreak), kRule.farSide>(planes, x + kRule.dx, y + kRule.dy));
}

// Steps of a diagonal, seen from the pixel at which the scan stands.
template <Diagonal kDiagonal>
int32_t DiagonalLength(FlagPlanes& planes, int32_t x, int32_t y) {
    int32_t n = 0;
    while (true) {
        n += MeasureDiagonal(PlaneCursor{planes, x + n * kDiagonal.stepX, y + n * kDiagonal.stepY}, kDiagonal);
        // Where it goes down it may have ended at rows that weren't built yet; from there on it is measured again.
        const int32_t endRow = y + kDiagonal.startY + n * kDiagonal.stepY;
        if (kDiagonal.stepY < 0 || planes.IsBuilt(endRow)) return n;
        planes.Need(endRow);
    }
}

}  // namespace stairmelt::inline STAIRMELT_SET
