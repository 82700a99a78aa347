// The rules by which straight runs and tails are measured, as data. A riser is a vertical piece of edge (flag R), a
// tread a horizontal one (flag D). A run is the piece that leaves a step; a tail is the last stretch of a line one
// pixel thick that meets a step end on. run_scanners.h measures by bytes, plane_runs.h by bits.
#pragma once

#include <cstdint>

#include "engine/flag_pattern.h"

namespace stairmelt::inline STAIRMELT_SET {

// One walk along a side of the line on which a run lies. Offsets of guard and confirmation are from the pixel at which
// the scanner was called, those of the break test from the walk's current cell.
struct Walk {
    FlagTest guard;         // set: the walk is dropped
    FlagTest breakIfSet;    // the walk stops before a cell where this is set
    FlagTest breakIfClear;  // or this is clear
    FlagTest confirmation;  // a run of 3 or more counts only if this is set
};

struct RunScanner {
    int dx, dy;    // the walk's step, and its first cell
    FlagTest end;  // a riser or tread across the walk: it ends closed
    Walk first;    // wins at once where it ends closed
    Walk second;   // the longer of the two walks counts
};

constexpr RunScanner kScanLeft = {
    -1, 0, R(0, 0), {X(0, -1), R(0, -1), D(0, -1), D(1, 0)}, {A(0, 0), R(0, 1), D(0, 0), D(1, -1)},
};
constexpr RunScanner kScanRight = {
    1, 0, R(0, 0), {A(0, -1), R(0, -1), D(0, -1), D(0, 0)}, {X(0, 0), R(0, 1), D(0, 0), D(0, -1)},
};
constexpr RunScanner kScanUp = {
    0, -1, D(0, 0), {X(-1, 0), D(-1, 0), R(-1, 0), R(0, 1)}, {A(0, 0), D(1, 0), R(0, 0), R(-1, 1)},
};
constexpr RunScanner kScanDown = {
    0, 1, D(0, 0), {A(-1, 0), D(-1, 0), R(-1, 0), R(0, 0)}, {X(0, 0), D(1, 0), R(0, 0), R(-1, 0)},
};

constexpr int32_t kLongRun = 3;  // from here on a run needs its confirmation

// A line one pixel thick shows both of its sides along the walk.
struct TailRule {
    int dx, dy;         // the walk's step, and its first cell
    FlagTest clear[5];  // from the step; any one set: no tail
    FlagTest end;       // from the current cell, like the rest
    FlagTest nearBreak, nearSide, farBreak, farSide;
};

constexpr TailRule HorizontalTail(int dx, const FlagTest (&clear)[5]) {
    return {dx, 0, {clear[0], clear[1], clear[2], clear[3], clear[4]}, R(0, 0), R(0, -1), D(0, -1), R(0, 1), D(0, 0)};
}
constexpr TailRule VerticalTail(int dy, const FlagTest (&clear)[5]) {
    return {0, dy, {clear[0], clear[1], clear[2], clear[3], clear[4]}, D(0, 0), D(-1, 0), R(-1, 0), D(1, 0), R(0, 0)};
}

constexpr TailRule kTailLeft = HorizontalTail(-1, {X(0, -1), D(1, -1), R(1, 0), A(0, 0), D(1, 0)});
constexpr TailRule kTailRight = HorizontalTail(1, {D(0, -1), A(0, -1), R(-1, 0), D(0, 0), X(0, 0)});
constexpr TailRule kTailUp = VerticalTail(-1, {X(-1, 0), A(0, 0), R(-1, 1), R(0, 1), D(0, 1)});
constexpr TailRule kTailDown = VerticalTail(1, {D(0, -1), R(-1, 0), R(0, 0), A(-1, 0), X(0, 0)});

// The length that a tail of n cells counts: what goes beyond 5 pixels counts half.
constexpr int32_t CountedTail(int32_t n) {
    constexpr int32_t kFullLength = 5;
    return n > kFullLength ? ((n - kFullLength) >> 1) + kFullLength : n;
}

}  // namespace stairmelt::inline STAIRMELT_SET
