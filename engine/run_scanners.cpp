#include "engine/run_scanners.h"

#include "engine/flag_pattern.h"

namespace stairmelt {

namespace {

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
    Walk first;
    Walk second;
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

template <RunScanner kScanner>
int32_t ScanRun(const FlagCursor& step) {
    FlagCursor firstCell = step;
    firstCell.Move(kScanner.dx, kScanner.dy);
    const bool endsAtOnce = Holds(firstCell, kScanner.end);

    int32_t n = 0;
    if (!Holds(step, kScanner.first.guard)) {
        bool closed = endsAtOnce;
        FlagCursor c = firstCell;
        while (!closed && !Holds(c, kScanner.first.breakIfSet) && Holds(c, kScanner.first.breakIfClear)) {
            ++n;
            c.Move(kScanner.dx, kScanner.dy);
            closed = Holds(c, kScanner.end);
        }
        if (n >= kLongRun && !Holds(step, kScanner.first.confirmation)) {
            n = 0;
        } else if (closed && n != 0) {
            return n;  // a walk that ended against a riser wins at once
        }
    }
    if (Holds(step, kScanner.second.guard)) return n;

    int32_t m = 0;
    if (!endsAtOnce) {
        FlagCursor c = firstCell;
        do {
            if (Holds(c, kScanner.second.breakIfSet) || !Holds(c, kScanner.second.breakIfClear)) break;
            ++m;
            c.Move(kScanner.dx, kScanner.dy);
        } while (!Holds(c, kScanner.end));
        if (m >= kLongRun && !Holds(step, kScanner.second.confirmation)) m = 0;
    }
    return n >= m ? n : m;
}

// A line one pixel thick shows both of its sides along the walk.
struct TailRule {
    int dx, dy;
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

template <TailRule kRule>
int32_t MeasureTail(const FlagCursor& step) {
    if (Any<kRule.clear[0], kRule.clear[1], kRule.clear[2], kRule.clear[3], kRule.clear[4]>(step)) return 0;
    FlagCursor c = step;
    c.Move(kRule.dx, kRule.dy);
    int32_t n = 0;
    while (All<Not(kRule.end), Not(kRule.nearBreak), kRule.nearSide, Not(kRule.farBreak), kRule.farSide>(c)) {
        ++n;
        c.Move(kRule.dx, kRule.dy);
    }
    constexpr int32_t kFullLength = 5;
    return n > kFullLength ? ((n - kFullLength) >> 1) + kFullLength : n;
}

}  // namespace

int32_t ScanRunLeft(int32_t x, int32_t y, const EdgeMap& map) { return ScanRun<kScanLeft>(FlagCursor(map, x, y)); }
int32_t ScanRunRight(int32_t x, int32_t y, const EdgeMap& map) { return ScanRun<kScanRight>(FlagCursor(map, x, y)); }
int32_t ScanRunUp(int32_t x, int32_t y, const EdgeMap& map) { return ScanRun<kScanUp>(FlagCursor(map, x, y)); }
int32_t ScanRunDown(int32_t x, int32_t y, const EdgeMap& map) { return ScanRun<kScanDown>(FlagCursor(map, x, y)); }

int32_t MeasureTailLeft(int32_t x, int32_t y, const EdgeMap& map) {
    return MeasureTail<kTailLeft>(FlagCursor(map, x, y));
}
int32_t MeasureTailRight(int32_t x, int32_t y, const EdgeMap& map) {
    return MeasureTail<kTailRight>(FlagCursor(map, x, y));
}
int32_t MeasureTailUp(int32_t x, int32_t y, const EdgeMap& map) { return MeasureTail<kTailUp>(FlagCursor(map, x, y)); }
int32_t MeasureTailDown(int32_t x, int32_t y, const EdgeMap& map) {
    return MeasureTail<kTailDown>(FlagCursor(map, x, y));
}

bool IsIsolatedBlock(int32_t cx, int32_t cy, const EdgeMap& map) {
    // The left side first: at the border a cell beyond the first guard row is reached only after a test that has
    // failed.
    return All<R(-1, 0), R(-1, 1), R(1, 0), R(1, 1), D(0, -1), D(0, 1), D(1, -1), D(1, 1), Not(R(0, 0)), Not(R(0, 1)),
               Not(D(0, 0)), Not(D(1, 0))>(FlagCursor(map, cx, cy));
}

bool CornerTest(BlockSide side, int32_t x, int32_t y, int32_t width, int32_t height, const EdgeMap& map) {
    // Where exactly one of the two cells beside the step shows an edge, the step lies at a corner, and the cell that
    // does tells on which row or column of the block it lies. The nearer guard row or column isn't looked beyond.
    const FlagCursor at(map, x, y);
    bool first = false;
    bool second = false;
    switch (side) {
        case BlockSide::kLeftOfRiser:
            first = Holds(at, D(0, 0));
            second = y > 0 && Holds(at, D(0, -1));
            break;
        case BlockSide::kRightOfRiser:
            if (x >= width - 1) return false;
            first = Holds(at, D(1, 0));
            second = y > 0 && Holds(at, D(1, -1));
            break;
        case BlockSide::kAboveTread:
            first = Holds(at, R(0, 0));
            second = x > 0 && Holds(at, R(-1, 0));
            break;
        case BlockSide::kBelowTread:
            if (y >= height - 1) return false;
            first = Holds(at, R(0, 1));
            second = x > 0 && Holds(at, R(-1, 1));
            break;
    }
    if (first == second) return false;
    switch (side) {
        case BlockSide::kLeftOfRiser: return IsIsolatedBlock(x - 1, first ? y - 1 : y, map);
        case BlockSide::kRightOfRiser: return IsIsolatedBlock(x + 1, first ? y - 1 : y, map);
        case BlockSide::kAboveTread: return IsIsolatedBlock(first ? x - 1 : x, y - 1, map);
        case BlockSide::kBelowTread: return IsIsolatedBlock(first ? x - 1 : x, y + 1, map);
    }
    return false;
}

}  // namespace stairmelt
