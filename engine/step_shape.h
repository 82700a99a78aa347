// How far a run's ramp may reach, as the flags around the step say. Reads only flags: of an EdgeMap or of FlagPlanes.
#pragma once

#include <cstdint>

#include "engine/arith.h"
#include "engine/dot_test.h"
#include "engine/flag_pattern.h"

namespace stairmelt::inline STAIRMELT_SET {

enum class RunDirection { kLeft, kRight, kUp, kDown };

constexpr int32_t kWithinDotPercent = 10;
constexpr int32_t kBesideDotPercent = 36;

// A 45-degree step may belong to a dot of 2 by 2 pixels, or lie one row or column off one. 0 if it does neither, else
// the percentage of the softness that is left.
template <class Flags>
int32_t DotPercent(RunDirection direction, int32_t x, int32_t y, int32_t width, int32_t height, const Flags& flags) {
    struct Row {
        BlockSide side;
        int32_t besideX, besideY;  // from the step to the next row or column
    };
    constexpr Row kRows[] = {
        {BlockSide::kLeftOfRiser, 0, 1},
        {BlockSide::kRightOfRiser, 0, 1},
        {BlockSide::kAboveTread, 1, 0},
        {BlockSide::kBelowTread, 1, 0},
    };
    const Row& row = kRows[static_cast<int>(direction)];
    if (CornerTest(row.side, x, y, width, height, flags)) return kWithinDotPercent;
    if (CornerTest(row.side, x + row.besideX, y + row.besideY, width, height, flags)) return kBesideDotPercent;
    if (CornerTest(row.side, x - row.besideX, y - row.besideY, width, height, flags)) return kBesideDotPercent;
    return 0;
}

// The softness of the stair ramp of a run of n pixels that belongs to no dot, at whose far end a run of farRun pixels
// stands. Where the next step is shorter than this one, the edge is turning and the softness grows, where it is longer,
// it falls; it may come out zero or negative. farRun 0 gives the plain softness.
constexpr int32_t TurnedSoftness(int32_t softness, int32_t n, int32_t farRun) {
    if (farRun == 0) return softness;
    // Between two runs of one length this is softness / 1.4: at 70 percent the ramps from the two ends just meet.
    const int32_t excess = WrapSub(WrapMul(2, n), farRun);
    return QuotientOrZero(WrapMul(WrapMul(excess, softness), 100), WrapMul(140, n));
}

// The softness at a dot.
constexpr int32_t DotSoftness(int32_t softness, int32_t percent) { return WrapMul(softness, percent) / 100; }

// The softness of the stair ramp that leaves the step at (x, y) along a run of n pixels.
template <class Flags>
int32_t RunSoftness(int32_t softness, int32_t n, int32_t farRun, RunDirection direction, int32_t x, int32_t y,
                    int32_t width, int32_t height, const Flags& flags) {
    if (n == 1 && farRun == 1) {
        const int32_t percent = DotPercent(direction, x, y, width, height, flags);
        if (percent != 0) return DotSoftness(softness, percent);
    }
    return TurnedSoftness(softness, n, farRun);
}

}  // namespace stairmelt::inline STAIRMELT_SET
