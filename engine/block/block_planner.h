// The planner for one vector type. It decides as many flagged blocks as fit a vector at once (decisions.h), measures
// the runs, tails and diagonals that the decisions call for, and then writes the actions of each pixel.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>

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
                if (((LoadWord(hasRight + x / 8) | LoadWord(hasDown + x / 8)) & kBlockPixels) == 0) continue;
                places[placed++] = {x, y};
                if (placed == kBlocks) PlanBlocks();
            }
        }
        if (placed != 0) PlanBlocks();
        Flush();
    }

private:
    static constexpr int kBlocks = kBlocksOf<Words>;
    static constexpr int kMaxActions = 31;  // of one pixel; 23 can occur

    // What is done at a pixel.
    struct Visit {
        uint8_t count;
        struct {
            uint8_t kind, ramp;
        } actions[kMaxActions];
    };

    // Plans the blocks in `places`, in their order.
    void PlanBlocks() {
        const int count = placed;
        while (placed < kBlocks) places[placed++] = places[0];  // only `count` of them are used
        placed = 0;
        Decisions<Words> decisions;
        Decide(planes, places, LimitsOfBlocks(), decisions);
        const KindSets<Words> sets(decisions);
        for (int i = 0; i < count; ++i) {
            const uint64_t others = WordOf(decisions.besidesAverage, i) & kBlockPixels;
            const uint64_t average = WordOf(decisions.pixels[kAverage], i) & kBlockPixels;
            blockX = places[i].x - kGuardColumns;
            blockY = places[i].y;
            for (uint64_t kinds = sets.Of(i); kinds != 0; kinds &= kinds - 1) {
                const int kind = TrailingZeros(kinds);
                const uint64_t pixels = WordOf(decisions.pixels[kind], i) & others;
                const KindInfo& info = kKinds[static_cast<size_t>(kind)];
                if (info.ramp == kLongRamp) {
                    (this->*(info.shape == Shape::kRun ? kMeasureRuns : kMeasureFades)[info.number])(kind, pixels);
                } else {
                    AddAll(kind, pixels);
                    if (info.restore != 0) AddAll(info.restore, pixels);
                }
            }
            Queue(others | average, average & ~others, ColumnsWithin(places[i], kMargin));
        }
    }

    void Add(int kind, int bit, uint8_t ramp) {
        Visit& visit = visits[bit];
        assert(visit.count < kMaxActions);
        visit.actions[visit.count++] = {static_cast<uint8_t>(kind), ramp};
    }
    void AddMeasured(int kind, int bit, uint8_t ramp, const RunPair& run) {
        Add(kind, bit, ramp);
        if (ramp >= kLongRamp) longLengths[kind][bit] = run;
    }
    void AddAll(int kind, uint64_t pixels) {
        const uint8_t ramp = kKinds[static_cast<size_t>(kind)].ramp;
        for (; pixels != 0; pixels &= pixels - 1) Add(kind, TrailingZeros(pixels), ramp);
    }

    // Measure at each of the pixels, and add the action with its ramp.
    template <RunDirection kDirection>
    void MeasureRuns(int kind, uint64_t pixels) {
        constexpr const DirectionRules& kRules = kRulesOf<kDirection>;
        for (; pixels != 0; pixels &= pixels - 1) {
            const int bit = TrailingZeros(pixels);
            const PlaneCursor at = CursorAt(planes, blockX + bit, blockY);
            const int32_t room = RoomFrom(at.x, at.y, kRules.forth.dx, kRules.forth.dy, width, height);
            RunPair run = MeasureRunOnce<kDirection>(at, room);
            if (run.length == 0) {
                run.length = TailLength<kRules.tail>(at);
                AddMeasured(kind, bit, RampNumberOf(kTailRamps, run.length), run);
            } else {
                if (MayTouchDot(run)) run.farLength = FarLengthAtDot(kDirection, at.x, at.y, width, height, planes);
                AddMeasured(kind, bit, StairRampNumber(run), run);
            }
        }
    }
    template <int kNumber>
    void MeasureFades(int kind, uint64_t pixels) {
        constexpr Diagonal kDiagonal = DiagonalOf(kNumber);
        for (; pixels != 0; pixels &= pixels - 1) {
            const int bit = TrailingZeros(pixels);
            const int32_t length = DiagonalLength<kDiagonal>(CursorAt(planes, blockX + bit, blockY));
            AddMeasured(kind, bit, RampNumberOf(kThirdRamps, length), {length, 0});
            if (!kDiagonal.restores) continue;
            AddMeasured(kFadeRestore + kNumber, bit, RampNumberOf(kHalfRamps, length), {length, 0});
        }
    }
    using Measure = void (Planner::*)(int kind, uint64_t pixels);
    static constexpr Measure kMeasureRuns[] = {
        &Planner::MeasureRuns<RunDirection::kLeft>, &Planner::MeasureRuns<RunDirection::kRight>,
        &Planner::MeasureRuns<RunDirection::kUp>, &Planner::MeasureRuns<RunDirection::kDown>};
    static constexpr Measure kMeasureFades[] = {
        &Planner::MeasureFades<0>, &Planner::MeasureFades<1>, &Planner::MeasureFades<2>, &Planner::MeasureFades<3>,
        &Planner::MeasureFades<4>, &Planner::MeasureFades<5>, &Planner::MeasureFades<6>, &Planner::MeasureFades<7>};

    // Queues what was added for a block, pixel by pixel.
    void Queue(uint64_t acting, uint64_t onlyAveraged, uint64_t inner) {
        while (acting != 0) {
            const int32_t bit = TrailingZeros(acting);
            if (queued > kBatch - kMaxActions) Flush();
            if ((onlyAveraged >> bit & 1) != 0) {
                // An average reads no pixel of the destination but its own.
                const int32_t length = TrailingOnes(onlyAveraged >> bit, kBlockColumns);
                actions[queued++] = {blockX + bit, blockY, kAverage, 0, static_cast<uint8_t>(length), false};
                acting &= ~(((uint64_t{1} << length) - 1) << bit);
                continue;
            }
            acting &= acting - 1;
            const bool isInner = (inner >> bit & 1) != 0;
            Visit& visit = visits[bit];
            for (int i = 0; i < visit.count; ++i) {
                const auto [kind, ramp] = visit.actions[i];
                if (ramp >= kLongRamp) lengths[measuredLengths++] = longLengths[kind][bit];
                actions[queued++] = {blockX + bit, blockY, kind, ramp, 1, isInner};
            }
            visit.count = 0;
        }
    }

    void Flush() {
        sink.Perform(actions, queued, lengths);
        queued = 0;
        measuredLengths = 0;
    }

    // The bits of a block's pixels, from column x on, whose columns are below `end`.
    static uint64_t ColumnsBelow(int32_t end, int32_t x) {
        const int32_t columns = end - x;
        if (columns <= 0) return 0;
        if (columns >= kBlockColumns) return kBlockPixels;
        return ((uint64_t{1} << columns) - 1) << kGuardColumns;
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
    // Of the block at hand, by bit.
    int32_t blockX = 0, blockY = 0;  // of bit 0
    Visit visits[64] = {};
    RunPair longLengths[kActionKinds][64];  // of those whose ramp is long
    Action actions[kBatch];
    RunPair lengths[kBatch];
    int queued = 0, measuredLengths = 0;
};

}  // namespace stairmelt::inline STAIRMELT_SET
