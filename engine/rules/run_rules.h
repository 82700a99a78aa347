// The rules by which straight runs and tails are measured. A riser is a vertical piece of edge (flag R), a tread a
// horizontal one (flag D). A run is the straight piece that leaves a riser or a tread; its length limits how far a
// blend reaches. A tail is the last stretch of a line one pixel thick that ends at the edge.
//
// Rules are read at one pixel through a cursor, which also counts: CountCells<dx, dy, tests...>(fromX, fromY) is the
// number of cells, from that offset on in steps of (dx, dy), at which all tests hold.
#pragma once

#include <cstdint>

#include "engine/rules/flag_pattern.h"

namespace stairmelt::inline STAIRMELT_SET {

// One walk along a side of the line of a run. Offsets of guard and confirmation are from the pixel at which
// the scanner was called, those of the break tests from the walk's current cell.
struct Walk {
    FlagTest guard;         // set: the walk is dropped
    FlagTest breakIfSet;    // the walk stops before a cell where this is set
    FlagTest breakIfClear;  // or this is clear
    FlagTest confirmation;  // a run of kLongRun or more counts only if this is set: the stair continues the other way
};

struct RunScanner {
    int dx, dy;    // from one cell to the next; also the first cell
    FlagTest end;  // a riser or tread across the walk: it ends closed
    Walk first;    // wins at once where it ends closed
    Walk second;   // otherwise the longer of the two walks counts
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

constexpr int32_t kLongRun = 3;  // cells; from here on a run needs its confirmation

// Whether a walk of n cells is dropped. One expression without branches: which of the tests holds can't be predicted.
template <Walk kWalk, class Cursor>
bool IsDropped(const Cursor& at, int32_t n) {
    const uint32_t isLong = n >= kLongRun;
    return (at.template Where<kWalk.guard>() | (isLong & at.template Where<Not(kWalk.confirmation)>())) != 0;
}
// The number of cells that the walk counts; 0 where it is dropped. `inline` is a hint, here and in block/short_runs.h:
// without it, compilers call some of these functions, and planning takes a tenth longer.
template <RunScanner kScanner, Walk kWalk, class Cursor>
inline int32_t WalkLength(const Cursor& at) {
    const int32_t n =
        at.template CountCells<kScanner.dx, kScanner.dy, Not(kScanner.end), Not(kWalk.breakIfSet), kWalk.breakIfClear>(
            kScanner.dx, kScanner.dy);
    return IsDropped<kWalk>(at, n) ? 0 : n;
}

// Whether the first walk counts, of n cells, and not the second one, of m cells.
template <RunScanner kScanner, class Cursor>
bool FirstWins(const Cursor& at, int32_t n, int32_t m) {
    Cursor behind = at;
    behind.Move(kScanner.dx * (n + 1), kScanner.dy * (n + 1));
    return (n != 0 && behind.Holds(kScanner.end)) || n >= m;
}

// The length of the run that leaves the edge at the cursor's pixel; 0 for none.
template <RunScanner kScanner, class Cursor>
int32_t RunLength(const Cursor& at) {
    const int32_t n = WalkLength<kScanner, kScanner.first>(at);
    const int32_t m = WalkLength<kScanner, kScanner.second>(at);
    return FirstWins<kScanner>(at, n, m) ? n : m;
}

// The same rule for all pixels of a block: first where the walk doesn't stop before its cell number kCell, counted from
// 1, then where WalkLength isn't 0.
template <RunScanner kScanner, Walk kWalk, int kCell, class Block>
auto WalkGoesOn(const Block& block) {
    return WhereAllMoved<kScanner.dx * kCell, kScanner.dy * kCell, Not(kScanner.end), Not(kWalk.breakIfSet),
                         kWalk.breakIfClear>(block);
}
template <RunScanner kScanner, Walk kWalk, class Block>
auto WalkCounts(const Block& block) {
    static_assert(kLongRun == 3);
    const auto isLong = WalkGoesOn<kScanner, kWalk, 2>(block) & WalkGoesOn<kScanner, kWalk, 3>(block);
    return WalkGoesOn<kScanner, kWalk, 1>(block) & block.template Where<Not(kWalk.guard)>() &
           (~isLong | block.template Where<kWalk.confirmation>());
}

// A run, and the one that leaves the edge at its far end on the way back.
struct RunPair {
    int32_t length;     // 0: there is no run, nor a far one
    int32_t farLength;  // 0: none, or the far end is outside the image
};

enum class RunDirection { kLeft, kRight, kUp, kDown };

// What one direction of an edge is searched for: a run and the run back from its far end, or else a tail. A tail's
// line is one pixel thick and has an edge on either side: its cells are those before which neither walk forth stops.
struct DirectionRules {
    RunScanner forth, back;
    FlagTest tailGuards[5];  // from the edge's pixel; any one set: no tail
};
constexpr DirectionRules kDirections[4] = {
    {kScanLeft, kScanRight, {X(0, -1), D(1, -1), R(1, 0), A(0, 0), D(1, 0)}},
    {kScanRight, kScanLeft, {D(0, -1), A(0, -1), R(-1, 0), D(0, 0), X(0, 0)}},
    {kScanUp, kScanDown, {X(-1, 0), A(0, 0), R(-1, 1), R(0, 1), D(0, 1)}},
    {kScanDown, kScanUp, {D(0, -1), R(-1, 0), R(0, 0), A(-1, 0), X(0, 0)}},
};
template <RunDirection kDirection>
constexpr const DirectionRules& kRulesOf = kDirections[static_cast<int>(kDirection)];

// The length of the tail at the cursor's pixel; 0 for none. What exceeds 5 cells counts half.
template <RunDirection kDirection, class Cursor>
int32_t TailLength(const Cursor& at) {
    constexpr RunScanner kForth = kRulesOf<kDirection>.forth;
    constexpr Walk kFirst = kForth.first, kSecond = kForth.second;
    for (const FlagTest& guard : kRulesOf<kDirection>.tailGuards) {
        if (at.Holds(guard)) return 0;
    }
    const int32_t n =
        at.template CountCells<kForth.dx, kForth.dy, Not(kForth.end), Not(kFirst.breakIfSet), kFirst.breakIfClear,
                               Not(kSecond.breakIfSet), kSecond.breakIfClear>(kForth.dx, kForth.dy);
    constexpr int32_t kFullLength = 5;
    return n > kFullLength ? ((n - kFullLength) >> 1) + kFullLength : n;
}

// TailLength isn't 0, for all pixels of a block.
template <RunDirection kDirection, class Block>
auto HasTail(const Block& block) {
    constexpr RunScanner kForth = kRulesOf<kDirection>.forth;
    constexpr const FlagTest(&kGuards)[5] = kRulesOf<kDirection>.tailGuards;
    return WalkGoesOn<kForth, kForth.first, 1>(block) & WalkGoesOn<kForth, kForth.second, 1>(block) &
           WhereAll<Not(kGuards[0]), Not(kGuards[1]), Not(kGuards[2]), Not(kGuards[3]), Not(kGuards[4])>(block);
}

// Columns or rows from (x, y) to the image's border in a direction; 0 where dx and dy are.
constexpr int32_t RoomFrom(int32_t x, int32_t y, int dx, int dy, int32_t width, int32_t height) {
    if (dx != 0) return dx < 0 ? x : width - 1 - x;
    if (dy != 0) return dy < 0 ? y : height - 1 - y;
    return 0;
}

// room: from the cursor's pixel in that direction.
template <RunDirection kDirection, class Cursor>
RunPair MeasureRun(Cursor at, int32_t room) {
    constexpr const DirectionRules& kRules = kRulesOf<kDirection>;
    const int32_t length = RunLength<kRules.forth>(at);
    if (length == 0 || length + 1 > room) return {length, 0};
    at.Move(kRules.forth.dx * (length + 1), kRules.forth.dy * (length + 1));
    return {length, RunLength<kRules.back>(at)};
}

}  // namespace stairmelt::inline STAIRMELT_SET
