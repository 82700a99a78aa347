// Conditions on flags as notation. R(dx, dy) holds when flag R is set in the cell at that offset from the pixel at
// hand, and so for D, X and A; Not inverts a condition. A Pattern is a list of conditions that must all hold.
//
// A condition is written once and read in two ways. At one pixel, a cursor's Holds(test) and Where<test>() tell whether
// it holds. For a block of pixels (engine/block/flag_block.h), Where<test>() has a bit for each pixel. Code that only
// combines results of Where by & and | works for both.
#pragma once

#include <algorithm>
#include <cstdint>

#include "engine/instruction_set.h"

namespace stairmelt::inline STAIRMELT_SET {

// The flags in the cell of pixel (x, y). The high four bits of a cell are zero.
constexpr uint8_t kFlagR = 1;  // (x, y) differs from (x + 1, y): a vertical edge on its right side
constexpr uint8_t kFlagD = 2;  // (x, y) differs from (x, y + 1): a horizontal edge along its bottom
constexpr uint8_t kFlagX = 4;  // (x, y) differs from (x + 1, y + 1)
constexpr uint8_t kFlagA = 8;  // (x + 1, y) differs from (x, y + 1)

// The farthest cells that any rule tests, from the pixel of a visit or from the current cell of a walk.
constexpr int kReachColumns = 4;
constexpr int kReachRows = 3;

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

// The same condition, tested at a cell that is (dx, dy) farther away.
constexpr FlagTest Moved(FlagTest test, int dx, int dy) { return {test.dx + dx, test.dy + dy, test.flag, test.wanted}; }

// Where all tests hold.
template <FlagTest... kTests, class At>
auto WhereAll(const At& at) {
    return (at.template Where<kTests>() & ...);
}

// The same for a block, at the cells that are (kDx, kDy) farther away. The combined result is shifted along the row
// instead of each test, so that all cells of the walks along a row share their tests.
template <int kDx, int kDy, FlagTest... kTests, class Block>
auto WhereAllMoved(const Block& block) {
    static_assert((... && (std::max(kTests.dx + kDx, -kTests.dx - kDx) <= kReachColumns)));
    return Block::template Shifted<kDx>(WhereAll<Moved(kTests, 0, kDy)...>(block));
}

template <FlagTest... kTests>
struct Pattern {
    static_assert((... && (std::max(kTests.dx, -kTests.dx) <= kReachColumns &&
                           std::max(kTests.dy, -kTests.dy) <= kReachRows)));

    // At one pixel, from left to right up to the first test that fails. Offsets beyond the edge map's guard border are
    // only reached after tests that fail there.
    template <class Cursor>
    static bool Holds(const Cursor& at) {
        return (at.Holds(kTests) && ...);
    }

    template <class Block>
    static auto Where(const Block& block) {
        return WhereAll<kTests...>(block);
    }
};

}  // namespace stairmelt::inline STAIRMELT_SET
