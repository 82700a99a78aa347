// The planner for one vector type. It decides as many flagged blocks as fit a vector at once (decisions.h), measures
// the runs, tails and diagonals that the decisions call for, and then writes the actions of each pixel.
#pragma once

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

    // Plans the blocks in `places`, in their order.
    void PlanBlocks() {
        const int count = placed;
        while (placed < kBlocks) places[placed++] = places[0];  // only `count` of them are used
        placed = 0;
        const FlagBlocks<Words> block(planes, places);
        Decisions<Words> decisions;
        Decide(block, LimitsOfBlocks(), decisions);
        if (IsZero(decisions.others | decisions.pixels[kAverage])) return;
        const TurnedWords<Words> byPixel(decisions.pixels);
        if (!IsZero(decisions.mayTouchDot[0] | decisions.mayTouchDot[1] | decisions.mayTouchDot[2] |
                    decisions.mayTouchDot[3])) {
            const Words isNearDot = IsNearDot(block);
            for (int direction = 0; direction < 4; ++direction) {
                const Words mayTouchDot = decisions.mayTouchDot[direction] & isNearDot;
                decisions.runs[direction] = decisions.runs[direction] | mayTouchDot;
                decisions.measured = decisions.measured | mayTouchDot;
            }
        }

        for (int i = 0; i < count; ++i) {
            const int32_t y = places[i].y, firstX = places[i].x - kGuardColumns;  // of bit 0
            const uint64_t others = WordOf(decisions.others, i), average = WordOf(decisions.pixels[kAverage], i);
            uint64_t acting = (others | average) & ColumnsBelow(width, places[i].x);
            const uint64_t onlyAveraged = average & ~others & acting;
            if (acting == 0) continue;
            const uint64_t inner = ColumnsWithin(places[i], kMargin);
            if ((WordOf(decisions.measured, i) & acting) != 0) MeasureBlock(decisions, {i, acting, firstX, y});
            while (acting != 0) {
                const int32_t bit = TrailingZeros(acting);
                if (queued > kBatch - kActionKinds) Flush();
                if ((onlyAveraged >> bit & 1) != 0) {
                    const int32_t length = TrailingOnes(onlyAveraged >> bit, kBlockColumns);
                    actions[queued++] = {firstX + bit, y, kAverage, 0, static_cast<uint8_t>(length), false};
                    acting &= ~(((uint64_t{1} << length) - 1) << bit);
                    continue;
                }
                acting &= acting - 1;
                const uint64_t decided = byPixel.At(i, bit);
                const int facts = static_cast<int>(decided >> kFacts);
                const bool isInner = (inner >> bit & 1) != 0;
                uint64_t kinds = decided & ((uint64_t{1} << kFacts) - 1);
                do {
                    const int kind = TrailingZeros(kinds);
                    const KindRamp& known = kKindRamps[static_cast<size_t>(kind)];
                    // Without a branch: the processor couldn't predict which runs are measured.
                    uint8_t& measured = measuredRamps[kind][bit];
                    const int ofFacts = known.first + (facts >> known.factShift & (kShortRuns - 1));
                    const int ramp = measured | (ofFacts & -static_cast<int>(measured == 0));
                    measured = 0;
                    if (ramp == kLongRamp) lengths[measuredLengths++] = longRuns[kind][bit];
                    Action& action = actions[queued++];
                    action = {firstX + bit, y, static_cast<uint8_t>(kind), static_cast<uint8_t>(ramp), 1, isInner};
                    kinds &= kinds - 1;
                } while (kinds != 0);
            }
        }
    }

    // The pixels of a block that have actions.
    struct ActingPixels {
        int block;
        uint64_t bits;
        int32_t firstX, y;  // of bit 0
    };

    // Measures whatever the facts don't describe.
    void MeasureBlock(const Decisions<Words>& decisions, const ActingPixels& acting) {
        MeasureDirection<RunDirection::kLeft>(kLeftRun, decisions, acting);
        MeasureDirection<RunDirection::kRight>(kRightRun, decisions, acting);
        MeasureDirection<RunDirection::kUp>(kUpRun, decisions, acting);
        MeasureDirection<RunDirection::kDown>(kDownRun, decisions, acting);
        MeasureDiagonals<kRiserDiagonals>(kRiserFade, decisions, acting);
        MeasureDiagonals<kTreadDiagonals>(kTreadFade, decisions, acting);
    }

    // kind: that of the direction's runs; its tails are the next kind.
    template <RunDirection kDirection>
    void MeasureDirection(int kind, const Decisions<Words>& decisions, const ActingPixels& acting) {
        constexpr RunScanner kForth = kRulesOf<kDirection>.forth;
        ForEach(decisions.runs[static_cast<int>(kDirection)], acting, [&](int bit, const PlaneCursor& at) {
            RunPair run = MeasureRun<kDirection>(at, RoomFrom(at.x, at.y, kForth.dx, kForth.dy, width, height));
            if (MayTouchDot(run)) run.farLength = FarLengthAtDot(kDirection, at.x, at.y, width, height, planes);
            SetMeasured(kind, bit, StairRampNumber(run), run);
        });
        ForEach(decisions.pixels[kind + 1], acting, [&](int bit, const PlaneCursor& at) {
            const int32_t length = TailLength<kRulesOf<kDirection>.tail>(at);
            SetMeasured(kind + 1, bit, RampNumberOf(kTailRamps, length), {length, 0});
        });
    }

    template <const Diagonal (&kDiagonals)[4]>
    void MeasureDiagonals(int kind, const Decisions<Words>& decisions, const ActingPixels& acting) {
        MeasureDiagonal<kDiagonals[0]>(kind, decisions, acting);
        MeasureDiagonal<kDiagonals[1]>(kind + 2, decisions, acting);
        MeasureDiagonal<kDiagonals[2]>(kind + 4, decisions, acting);
        MeasureDiagonal<kDiagonals[3]>(kind + 6, decisions, acting);
    }

    template <Diagonal kDiagonal>
    void MeasureDiagonal(int kind, const Decisions<Words>& decisions, const ActingPixels& acting) {
        ForEach(decisions.pixels[kind], acting, [&](int bit, const PlaneCursor& at) {
            const int32_t length = DiagonalLength<kDiagonal>(at);
            SetMeasured(kind, bit, RampNumberOf(kThirdRamps, length), {length, 0});
            if (kDiagonal.restores) SetMeasured(kind + 1, bit, RampNumberOf(kHalfRamps, length), {length, 0});
        });
    }

    template <class Measure>
    void ForEach(const Words& where, const ActingPixels& acting, Measure measure) {
        for (uint64_t pixels = WordOf(where, acting.block) & acting.bits; pixels != 0; pixels &= pixels - 1) {
            const int bit = TrailingZeros(pixels);
            measure(bit, CursorAt(planes, acting.firstX + bit, acting.y));
        }
    }

    void SetMeasured(int kind, int bit, uint8_t ramp, const RunPair& run) {
        measuredRamps[kind][bit] = ramp;
        if (ramp == kLongRamp) longRuns[kind][bit] = run;
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
        const auto mayRestoreAbove = [&](int i) {
            return places[i].y > kBelowFirstRows ? ColumnsBelow(width - kBesideLastColumns, places[i].x) : 0;
        };
        return {WordsOf<Words>(mayRestoreAbove), WordsOf<Words>([&](int i) { return ~ColumnsBelow(1, places[i].x); }),
                WordsOf<Words>([&](int i) { return ColumnsWithin(places[i], kFar); })};
    }

    // The bits of a block's pixels that are at least `margin` columns and rows away from the image's border.
    uint64_t ColumnsWithin(const BlockPlace& place, int32_t margin) const {
        if (place.y < margin || place.y >= height - margin) return 0;
        return ColumnsBelow(width - margin, place.x) & ~ColumnsBelow(margin, place.x);
    }

    static constexpr int kBatch = 256;  // actions

    const int32_t width, height;
    FlagPlanes& planes;
    ActionSink& sink;
    BlockPlace places[kBlocks];  // of the flagged blocks that wait for a full vector
    int placed = 0;
    // Of a block's pixels, by kind. 0 where not measured: measured ramps have the numbers from kStairRamps on.
    uint8_t measuredRamps[kActionKinds][64] = {};
    RunPair longRuns[kActionKinds][64];  // of those whose ramp is kLongRamp
    Action actions[kBatch];
    RunPair lengths[kBatch];
    int queued = 0, measuredLengths = 0;
};

}  // namespace stairmelt::inline STAIRMELT_SET
