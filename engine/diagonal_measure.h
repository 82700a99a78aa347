// Finds the 45-degree staircases of single-pixel steps that leave the ends of a straight piece of edge two pixels long.
// Such a diagonal has no run to measure, and the change from straight to diagonal would show. Reads only flags.
#pragma once

#include <cstdint>

#include "engine/flag_pattern.h"

namespace stairmelt::inline STAIRMELT_SET {

// One of the eight diagonals. Offsets of cells and pixels are from the pixel at which the scan stands, but for the stop
// flags and the blend source.
struct Diagonal {
    int startX, startY;    // first cell of the staircase
    int stepX, stepY;      // from one step to the next, for cells and pixels alike
    uint8_t continueFlag;  // the staircase goes on while its cell has this
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

// Steps of the diagonal, seen from the pixel at which the scan stands; below kShortestDiagonal there is nothing to
// fade.
constexpr int32_t kShortestDiagonal = 2;

template <class Cursor>
int32_t MeasureDiagonal(const Cursor& at, const Diagonal& diagonal) {
    const FlagTest goesOn{0, 0, diagonal.continueFlag, true};
    Cursor c = at;
    c.Move(diagonal.startX, diagonal.startY);
    int32_t n = 0;
    while (c.Holds(goesOn) && !c.Holds(diagonal.stop[0]) && !c.Holds(diagonal.stop[1])) {
        ++n;
        c.Move(diagonal.stepX, diagonal.stepY);
    }
    return n;
}

}  // namespace stairmelt::inline STAIRMELT_SET
