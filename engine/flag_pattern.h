// Conditions on flags as notation. R(dx, dy) holds when flag R is set in the cell at that offset from the pixel at
// hand, and so for D, X and A; Not turns a condition round. All(at, ...) tests its conditions from left to right and
// stops at the first that fails: where an offset reaches further than the guard border, the conditions before it see to
// it that the cell is never read. With constant offsets everything folds into straight byte tests.
#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/edge_map.h"

namespace stairmelt {

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

// A cell of an EdgeMap as the origin of offsets.
struct FlagCursor {
    const uint8_t* cell;
    ptrdiff_t stride;

    FlagCursor(const EdgeMap& map, int32_t x, int32_t y) : cell(map.CellAt(x, y)), stride(map.stride) {}

    uint8_t CellAt(int dx, int dy) const { return cell[dy * stride + dx]; }
    void Move(int dx, int dy) { cell += dy * stride + dx; }
};

inline bool Holds(const FlagCursor& at, FlagTest test) {
    return ((at.CellAt(test.dx, test.dy) & test.flag) != 0) == test.wanted;
}

template <FlagTest... kTests>
bool All(const FlagCursor& at) {
    return (Holds(at, kTests) && ...);
}

template <FlagTest... kTests>
bool Any(const FlagCursor& at) {
    return (Holds(at, kTests) || ...);
}

}  // namespace stairmelt
