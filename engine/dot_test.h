// Finds dots of 2 by 2 pixels beside a step. Reads only flags.
#pragma once

#include <cstdint>

#include "engine/flag_pattern.h"

namespace stairmelt::inline STAIRMELT_SET {

// Where CornerTest looks for a block.
enum class BlockSide {
    kLeftOfRiser = 0,
    kRightOfRiser = 1,
    kAboveTread = 2,
    kBelowTread = 3,
};

// The four pixels right of and below the one at hand, and it: an edge all round and none inside. The left side first:
// at the border a cell beyond the edge map's first guard row is reached only after a test that has failed.
using IsolatedBlock = Pattern<R(-1, 0), R(-1, 1), R(1, 0), R(1, 1), D(0, -1), D(0, 1), D(1, -1), D(1, 1), Not(R(0, 0)),
                              Not(R(0, 1)), Not(D(0, 0)), Not(D(1, 0))>;

// The functions below take their flags from an EdgeMap or from FlagPlanes.

// True if the 2 by 2 block whose top left pixel is (cx, cy) is isolated.
template <class Flags>
bool IsIsolatedBlock(int32_t cx, int32_t cy, const Flags& flags) {
    return IsolatedBlock::Holds(CursorAt(flags, cx, cy));
}

// True if the step at (x, y) belongs to an isolated 2 by 2 block on the named side of it. width and height are the
// image's; x and y may lie one beyond it on any side.
template <class Flags>
bool CornerTest(BlockSide side, int32_t x, int32_t y, int32_t width, int32_t height, const Flags& flags) {
    // Where exactly one of the two cells beside the step shows an edge, the step lies at a corner, and the cell that
    // does tells on which row or column of the block it lies. The nearer guard row or column isn't looked beyond.
    const auto at = CursorAt(flags, x, y);
    bool first = false;
    bool second = false;
    switch (side) {
        case BlockSide::kLeftOfRiser:
            first = at.Holds(D(0, 0));
            second = y > 0 && at.Holds(D(0, -1));
            break;
        case BlockSide::kRightOfRiser:
            if (x >= width - 1) return false;
            first = at.Holds(D(1, 0));
            second = y > 0 && at.Holds(D(1, -1));
            break;
        case BlockSide::kAboveTread:
            first = at.Holds(R(0, 0));
            second = x > 0 && at.Holds(R(-1, 0));
            break;
        case BlockSide::kBelowTread:
            if (y >= height - 1) return false;
            first = at.Holds(R(0, 1));
            second = x > 0 && at.Holds(R(-1, 1));
            break;
    }
    if (first == second) return false;
    switch (side) {
        case BlockSide::kLeftOfRiser: return IsIsolatedBlock(x - 1, first ? y - 1 : y, flags);
        case BlockSide::kRightOfRiser: return IsIsolatedBlock(x + 1, first ? y - 1 : y, flags);
        case BlockSide::kAboveTread: return IsIsolatedBlock(first ? x - 1 : x, y - 1, flags);
        case BlockSide::kBelowTread: return IsIsolatedBlock(first ? x - 1 : x, y + 1, flags);
    }
    return false;
}

}  // namespace stairmelt::inline STAIRMELT_SET
