#include "engine/run_scanners.h"

#include "engine/run_rules.h"

namespace stairmelt {

namespace {

template <RunScanner kScanner>
int32_t ScanRun(const FlagCursor& step) {
    FlagCursor firstCell = step;
    firstCell.Move(kScanner.dx, kScanner.dy);
    const bool endsAtOnce = firstCell.Holds(kScanner.end);

    int32_t n = 0;
    if (!step.Holds(kScanner.first.guard)) {
        bool closed = endsAtOnce;
        FlagCursor c = firstCell;
        while (!closed && !c.Holds(kScanner.first.breakIfSet) && c.Holds(kScanner.first.breakIfClear)) {
            ++n;
            c.Move(kScanner.dx, kScanner.dy);
            closed = c.Holds(kScanner.end);
        }
        if (n >= kLongRun && !step.Holds(kScanner.first.confirmation)) {
            n = 0;
        } else if (closed && n != 0) {
            return n;  // a walk that ended against a riser wins at once
        }
    }
    if (step.Holds(kScanner.second.guard)) return n;

    int32_t m = 0;
    if (!endsAtOnce) {
        FlagCursor c = firstCell;
        do {
            if (c.Holds(kScanner.second.breakIfSet) || !c.Holds(kScanner.second.breakIfClear)) break;
            ++m;
            c.Move(kScanner.dx, kScanner.dy);
        } while (!c.Holds(kScanner.end));
        if (m >= kLongRun && !step.Holds(kScanner.second.confirmation)) m = 0;
    }
    return n >= m ? n : m;
}

template <TailRule kRule>
int32_t MeasureTail(const FlagCursor& step) {
    for (const FlagTest& clear : kRule.clear) {
        if (step.Holds(clear)) return 0;
    }
    FlagCursor c = step;
    c.Move(kRule.dx, kRule.dy);
    int32_t n = 0;
    using GoesOn = Pattern<Not(kRule.end), Not(kRule.nearBreak), kRule.nearSide, Not(kRule.farBreak), kRule.farSide>;
    while (GoesOn::Holds(c)) {
        ++n;
        c.Move(kRule.dx, kRule.dy);
    }
    return CountedTail(n);
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

}  // namespace stairmelt
