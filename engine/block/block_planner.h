// The planner for one vector type. It decides as many flagged blocks as fit a vector at once (decisions.h) and queues
// the actions of each pixel. Before it passes a batch on, it measures the runs, tails and diagonals that this needs.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "engine/block/action.h"
#include "engine/block/bits.h"
#include "engine/block/decisions.h"
#include "engine/block/flag_block.h"
#include "engine/block/flag_planes.h"
#include "engine/rules/diagonal_rules.h"
#include "engine/rules/run_rules.h"
#include "engine/rules/run_softness.h"

namespace stairmelt::inline STAIRMELT_SET {

template <class Words>
class Planner {
public:
    Planner(int32_t imageWidth, int32_t imageHeight, FlagPlanes& flagPlanes, ActionSink& actionSink)
        : width(imageWidth), height(imageHeight), planes(flagPlanes), sink(actionSink) {}

    void Run() {
        for (int32_t y = 0; y < height; ++y) {
            planes.Need(y + kRowsAhead);
            if (!planes.IsMarked(y)) continue;
            const uint8_t* const hasRight = planes.Row(kFlagR, y);
            const uint8_t* const hasDown = planes.Row(kFlagD, y);
            for (int32_t x = 0; x < width; x += kBlockColumns) {
                const uint64_t flags = (LoadWord(hasRight + x / 8) | LoadWord(hasDown + x / 8)) & kBlockPixels;
                places[placed] = {x, y};
                placed += flags != 0;
                if (placed == kBlocks) PlanBlocks();
            }
        }
        if (placed != 0) PlanBlocks();
        Flush();
    }

private:
    static constexpr int kBlocks = kBlocksOf<Words>;
    // A bit that is neither a pixel of a block nor a decided kind. Where two are processed at a time, it stands in for
    // a missing second one.
    static constexpr int kNone = 63;
    static_assert((kBlockPixels >> kNone & 1) == 0 && kNone >= kDecidedKinds && kKinds[kNone].ramp != kUnmeasured);

    // Plans the blocks in `places`, in their order.
    void PlanBlocks() {
        const int count = placed;
        while (placed < kBlocks) places[placed++] = places[0];  // only `count` of them are used
        placed = 0;
        Decisions<Words> decisions;
        Decide(planes, places, LimitsOfBlocks(), decisions);
        const auto kindsOfBlocks = KindsOfBlocks(decisions);
        for (int i = 0; i < count; ++i) {
            const auto pixelsOf = [&](int kind) { return WordOf(decisions.pixels[kind], i) & kBlockPixels; };
            const uint64_t average = pixelsOf(kAverage);
            uint64_t others = 0;  // the pixels at which anything else is done
            uint64_t kinds = kindsOfBlocks[static_cast<size_t>(i)] & ~(uint64_t{1} << kAverage);
            for (; kinds != 0; kinds &= kinds - 1) {
                const int kind = TrailingZeros(kinds);
                const uint64_t pixels = pixelsOf(kind);
                Add(kind, pixels);
                others |= pixels;
            }
            Add(kAverage, average & others);
            Queue(places[i], others | average, average & ~others, ColumnsWithin(places[i], kMargin));
        }
    }

    // Adds a kind to the visits of some pixels. Always two at a time, the second maybe no pixel: mostly there are one
    // or two, and a processor can't predict which.
    void Add(int kind, uint64_t pixels) {
        do {
            for (int i = 0; i < 2; ++i) {
                visits[TrailingZeros(pixels | uint64_t{1} << kNone)] |= uint64_t{1} << kind;
                pixels &= pixels - 1;
            }
        } while (pixels != 0);
    }

    // Queues what was added for a block, pixel by pixel.
    void Queue(const BlockPlace& place, uint64_t acting, uint64_t onlyAveraged, uint64_t inner) {
        while (acting != 0) {
            const int bit = TrailingZeros(acting);
            const int32_t x = place.x - kGuardColumns + bit;
            if (queued > kBatch - kDecidedKinds) Flush();
            if ((onlyAveraged >> bit & 1) != 0) {
                // An average reads no pixel of the destination but its own.
                const int32_t length = TrailingOnes(onlyAveraged >> bit, kBlockColumns);
                actions[queued++] = {x, place.y, kAverage, 0, static_cast<uint8_t>(length), false};
                acting &= ~(((uint64_t{1} << length) - 1) << bit);
                continue;
            }
            acting &= acting - 1;
            const bool isInner = (inner >> bit & 1) != 0;
            uint64_t kinds = visits[bit];
            visits[bit] = 0;
            while (kinds != 0) {
                for (int i = 0; i < 2; ++i) {  // two at a time, as in Add; an action of no kind isn't kept
                    const uint8_t kind = static_cast<uint8_t>(TrailingZeros(kinds | uint64_t{1} << kNone));
                    const uint8_t ramp = kKinds[kind].ramp;
                    actions[queued] = {x, place.y, kind, ramp, 1, isInner};
                    unmeasured[unmeasuredCount] = static_cast<uint16_t>(queued);
                    unmeasuredCount += ramp == kUnmeasured;
                    queued += kinds != 0;
                    kinds &= kinds - 1;
                }
            }
        }
    }

    // Measures what is missing, one way after the other: branches are better predicted then.
    void Flush() {
        int counts[kWays] = {};
        for (int i = 0; i < unmeasuredCount; ++i) {
            const int way = kKinds[actions[unmeasured[i]].kind].way;
            alongWay[way][counts[way]++] = unmeasured[i];
        }
        const auto measureAll = [&]<int... kWay>(std::integer_sequence<int, kWay...>) {
            (Measure<kWay>(alongWay[kWay], counts[kWay]), ...);
        };
        measureAll(std::make_integer_sequence<int, kWays>{});
        sink.Perform(actions, queued, lengths);
        queued = unmeasuredCount = 0;
    }

    // Measures the runs or fades of some actions, and sets their ramps.
    template <int kWay>
    void Measure(const uint16_t* indices, int count) {
        for (int i = 0; i < count; ++i) {
            Action& action = actions[indices[i]];
            RunPair& run = lengths[indices[i]];
            const PlaneCursor at = CursorAt(planes, action.x, action.y);
            if constexpr (kWay < kFirstDiagonal) {
                constexpr RunDirection kDirection = static_cast<RunDirection>(kWay);
                constexpr RunScanner kForth = kRulesOf<kDirection>.forth;
                const int32_t room = RoomFrom(at.x, at.y, kForth.dx, kForth.dy, width, height);
                run = MeasureRunOnce<kDirection>(at, room);
                if (run.length == 0) {
                    run.length = TailLength<kDirection>(at);
                    action.ramp = RampNumberOf(kTailRamps, run.length);
                } else {
                    if (MayTouchDot(run)) run.farLength = FarLengthAtDot(kDirection, at.x, at.y, width, height, planes);
                    action.ramp = StairRampNumber(run);
                }
            } else {
                run = {DiagonalLength<DiagonalOf(kWay)>(at), 0};
                action.ramp = RampNumberOf(kThirdRamps, run.length);
            }
        }
    }

    // The bits of a block's pixels, from column x on, whose columns are below `end`.
    static uint64_t ColumnsBelow(int32_t end, int32_t x) {
        return ((uint64_t{1} << std::clamp(end - x, 0, kBlockColumns)) - 1) << kGuardColumns;
    }

    Limits<Words> LimitsOfBlocks() const {
        constexpr int32_t kFar = 3;  // columns or rows from an edge to the far end of a run of two cells
        static_assert(kFar >= kBesideLastColumns && kFar > kBelowFirstRows);
        const auto isInner = [&](const BlockPlace& place) { return ColumnsWithin(place, kFar) == kBlockPixels; };
        if (std::all_of(places, places + kBlocks, isInner)) return {~Words{}, ~Words{}};
        Limits<Words> limits;
        for (int i = 0; i < kBlocks; ++i) {
            const auto [x, y] = places[i];
            SetWord(limits.mayRestoreAbove, i, y > kBelowFirstRows ? ColumnsBelow(width - kBesideLastColumns, x) : 0);
            SetWord(limits.farEndIsInside, i, ColumnsWithin(places[i], kFar));
        }
        return limits;
    }

    // The bits of a block's pixels that are at least `margin` columns and rows away from the image's border.
    uint64_t ColumnsWithin(const BlockPlace& place, int32_t margin) const {
        if (place.y < margin || place.y >= height - margin) return 0;
        return ColumnsBelow(width - margin, place.x) & ~ColumnsBelow(margin, place.x);
    }

    static constexpr int kBatch = 2048;  // actions

    const int32_t width, height;
    FlagPlanes& planes;
    ActionSink& sink;
    BlockPlace places[kBlocks];  // of the flagged blocks that wait for a full vector
    int placed = 0;
    uint64_t visits[64] = {};    // the kinds of each pixel of the block at hand, as bits; by the pixel's bit
    Action actions[kBatch + 1];  // the last one is room for writing one more
    RunPair lengths[kBatch];
    int queued = 0;
    uint16_t unmeasured[kBatch + 1];   // the indices of the actions whose ramps are kUnmeasured; room for one more
    uint16_t alongWay[kWays][kBatch];  // the same by way
    int unmeasuredCount = 0;
};

}  // namespace stairmelt::inline STAIRMELT_SET
