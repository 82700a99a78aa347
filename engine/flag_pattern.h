// Conditions on flags as notation. R(dx, dy) holds when flag R is set in the cell at that offset from the pixel at
// hand, and so for D, X and A; Not turns a condition round. A Pattern is a row of conditions that must all hold.
//
// A pattern is written once and read in two ways: at one pixel of an EdgeMap, by bytes (Holds, here), or at a block of
// pixels of FlagPlanes, by bits (flag_block.h). At one pixel the conditions are tested from left to right, and the
// first that fails ends the test: where an offset reaches further than the edge map's guard border, the conditions
// before it see to it that the cell is never read.
#pragma once

#include <cstdint>

#include "engine/instruction_set.h"

namespace stairmelt::inline STAIRMELT_SET {

// The flags in the cell of pixel (x, y). The high four bits of a cell are zero.
constexpr uint8_t kFlagR = 1;  // (x, y) differs from (x + 1, y): a vertical edge on its right side
constexpr uint8_t kFlagD = 2;  // (x, y) differs from (x, y + 1): a horizontal edge along its bottom
constexpr uint8_t kFlagX = 4;  // (x, y) differs from (x + 1, y + 1)
constexpr uint8_t kFlagA = 8;  // (x + 1, y) differs from (x, y + 1)

struct FlagTest {
    int dx;
    int dy;
    uint8_t flag;
    bool wanted;
};

constexpr FlagTest R(int dx, int dy) { return {dx, dy, kFlagR, true}; }
constexpr FlagTest D(int dx, int dy) { return {dx, dy, kFlagD, true}; }
constexpr FlagTest X(int dx, int dy) { return {dx, dy, kFlagX, true}; }
constexpr FlagTest A(int dx, int dy) { return {dx, dy, kFlagA, true}; }
constexpr FlagTest Not(FlagTest test) { return {test.dx, test.dy, test.flag, !test.wanted}; }

// The same condition, seen from a pixel that lies (-dx, -dy) further on.
constexpr FlagTest Moved(FlagTest test, int dx, int dy) { return {test.dx + dx, test.dy + dy, test.flag, test.wanted}; }

template <FlagTest... kTests>
struct Pattern {
    // Cursor: the FlagCursor of edge_map.h, or the PlaneCursor of flag_planes.h.
    template <class Cursor>
    static bool Holds(const Cursor& at) {
        return (at.Holds(kTests) && ...);
    }
};

}  // namespace stairmelt::inline STAIRMELT_SET
