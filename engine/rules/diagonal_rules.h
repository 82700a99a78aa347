// Finds the 45-degree staircases of single-pixel steps that leave the ends of a straight piece of edge two pixels long.
// Such a diagonal has no run to measure, and the change from straight to diagonal would show. Reads only flags.
#pragma once

#include <cstdint>

#include "engine/rules/flag_pattern.h"

namespace stairmelt::inline STAIRMELT_SET {

// One of the eight diagonals. Offsets of cells and pixels are from the visited pixel, except for the stop flags and the
// blend source.
struct Diagonal {
    int startX, startY;    // first cell of the staircase
    int stepX, stepY;      // from one cell or pixel to the next
    uint8_t continueFlag;  // the staircase continues while its cell has this
    FlagTest stop[2];      // from the current cell, in this order: the flag across the stair marks its end
    int pixelX, pixelY;    // first pixel to blend
    int sourceX, sourceY;  // from that pixel, the one that it moves toward
    bool restores;         // the fade also takes the source pixel back toward its own value: only where the stair goes
                           // up, into rows that the scan has already passed
};

// In the order of calling: up right, down left, up left, down right.
constexpr Diagonal kRiserDiagonals[4] = {
    {1, -1, 1, -1, kFlagD, {A(-1, 0), A(0, 0)}, 1, 0, 0, -1, true},
    {0, 1, -1, 1, kFlagD, {A(-1, 0), A(0, 0)}, 0, 1, 0, 1, false},
    {0, -1, -1, -1, kFlagD, {X(-1, 0), X(0, 0)}, 0, 0, 0, -1, true},
    {1, 1, 1, 1, kFlagD, {X(-1, 0), X(0, 0)}, 1, 1, 0, 1, false},
};
constexpr Diagonal kTreadDiagonals[4] = {
    {0, 0, 1, -1, kFlagR, {A(0, 0), A(0, -1)}, 0, 0, 1, 0, true},
    {-2, 1, -1, 1, kFlagR, {A(0, 0), A(0, -1)}, -1, 1, -1, 0, false},
    {-2, 0, -1, -1, kFlagR, {X(0, 0), X(0, -1)}, -1, 0, -1, 0, true},
    {0, 1, 1, 1, kFlagR, {X(0, 0), X(0, -1)}, 0, 1, 1, 0, false},
};

constexpr int32_t kShortestDiagonal = 2;  // cells; below it there is nothing to fade

// The cells of the diagonal that leaves the edge at the cursor's pixel.
template <Diagonal kDiagonal, class Cursor>
int32_t DiagonalLength(const Cursor& at) {
    return at.template CountCells<kDiagonal.stepX, kDiagonal.stepY, FlagTest{0, 0, kDiagonal.continueFlag, true},
                                  Not(kDiagonal.stop[0]), Not(kDiagonal.stop[1])>(kDiagonal.startX, kDiagonal.startY);
}

// For all pixels of a block: where the diagonal has cell kCell, counted from 0, if it has those before it, and where it
// is long enough to be faded.
template <Diagonal kDiagonal, int kCell, class Block>
auto DiagonalGoesOn(const Block& block) {
    constexpr int dx = kDiagonal.startX + kCell * kDiagonal.stepX, dy = kDiagonal.startY + kCell * kDiagonal.stepY;
    return WhereAllMoved<dx, dy, FlagTest{0, 0, kDiagonal.continueFlag, true}, Not(kDiagonal.stop[0]),
                         Not(kDiagonal.stop[1])>(block);
}
template <Diagonal kDiagonal, class Block>
auto HasDiagonal(const Block& block) {
    static_assert(kShortestDiagonal == 2);
    return DiagonalGoesOn<kDiagonal, 0>(block) & DiagonalGoesOn<kDiagonal, 1>(block);
}

}  // namespace stairmelt::inline STAIRMELT_SET
