// The softness of the ramp that leaves an edge along a run. It depends on how the edge turns at the far end, and on
// whether there is a dot of 2 by 2 pixels beside it.
#pragma once

#include <cstdint>

#include "engine/rules/arith.h"
#include "engine/rules/flag_pattern.h"
#include "engine/rules/run_rules.h"

namespace stairmelt::inline STAIRMELT_SET {

// The dot formed by the current pixel and its neighbours to the right and below: edges all around, none inside. The
// left side first: at the border, a cell beyond the edge map's first guard row is reached only after a test that has
// failed.
using IsolatedBlock = Pattern<R(-1, 0), R(-1, 1), R(1, 0), R(1, 1), D(0, -1), D(0, 1), D(1, -1), D(1, 1), Not(R(0, 0)),
                              Not(R(0, 1)), Not(D(0, 0)), Not(D(1, 0))>;

// True if the edge at (x, y) belongs to a dot of 2 by 2 pixels on the given side of it. width and height are the
// image's; x and y may lie one beyond it on any side. Flags: an EdgeMap or FlagPlanes.
template <class Flags>
bool CornerTest(RunDirection side, int32_t x, int32_t y, int32_t width, int32_t height, Flags& flags) {
    const bool isRight = side == RunDirection::kRight, isDown = side == RunDirection::kDown;
    if ((isRight && x >= width - 1) || (isDown && y >= height - 1)) return false;
    // If exactly one of the two cells beside the edge has a flag across it, the edge is at a corner, and the cell with
    // the flag determines which row or column of the dot the edge is on. Guard cells before it aren't tested.
    const auto at = CursorAt(flags, x, y);
    if (side == RunDirection::kLeft || isRight) {
        const FlagTest first = D(isRight ? 1 : 0, 0);
        const bool isFirst = at.Holds(first);
        if (isFirst == (y > 0 && at.Holds(Moved(first, 0, -1)))) return false;
        return IsolatedBlock::Holds(CursorAt(flags, isRight ? x + 1 : x - 1, isFirst ? y - 1 : y));
    }
    const FlagTest first = R(0, isDown ? 1 : 0);
    const bool isFirst = at.Holds(first);
    if (isFirst == (x > 0 && at.Holds(Moved(first, -1, 0)))) return false;
    return IsolatedBlock::Holds(CursorAt(flags, isFirst ? x - 1 : x, isDown ? y + 1 : y - 1));
}

// Replaces a run's far length if a 45-degree edge belongs to a dot of 2 by 2 pixels, or is one row or column beside
// one.
constexpr int32_t kWithinDot = -1;
constexpr int32_t kBesideDot = -2;

constexpr bool MayTouchDot(const RunPair& run) { return run.length == 1 && run.farLength == 1; }

// The far length of a run at (x, y) that may touch a dot.
template <class Flags>
int32_t FarLengthAtDot(RunDirection direction, int32_t x, int32_t y, int32_t width, int32_t height, Flags& flags) {
    const bool isRow = direction == RunDirection::kLeft || direction == RunDirection::kRight;
    const int32_t dx = isRow ? 0 : 1, dy = isRow ? 1 : 0;
    if (CornerTest(direction, x, y, width, height, flags)) return kWithinDot;
    if (CornerTest(direction, x + dx, y + dy, width, height, flags)) return kBesideDot;
    if (CornerTest(direction, x - dx, y - dy, width, height, flags)) return kBesideDot;
    return 1;
}

// The softness of a run's stair ramp. If the next run is shorter than this one, the edge is turning and the softness
// grows. If it is longer, the softness falls and may become zero or negative.
constexpr int32_t RunSoftness(int32_t softness, const RunPair& run) {
    if (run.farLength == 0) return softness;
    if (run.farLength == kWithinDot) return WrapMul(softness, 10) / 100;
    if (run.farLength == kBesideDot) return WrapMul(softness, 36) / 100;
    // Between two runs of one length this is softness / 1.4: at 70 percent the ramps from the two ends just meet.
    const int32_t excess = WrapSub(WrapMul(2, run.length), run.farLength);
    return QuotientOrZero(WrapMul(WrapMul(excess, softness), 100), WrapMul(140, run.length));
}

}  // namespace stairmelt::inline STAIRMELT_SET
