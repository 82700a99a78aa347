// The planner for one kind of vector. As many flagged blocks as fit a vector are decided at once (decisions.h); then
// each pixel at which something is done gets its actions, with the runs, tails and diagonals measured that they depend
// on.
#pragma once

#include <xmmintrin.h>

#include <algorithm>
#include <cstdint>

#include "engine/block/bits.h"
#include "engine/block/decisions.h"
#include "engine/block/flag_block.h"
#include "engine/block/flag_planes.h"
#include "engine/block/visit.h"
#include "engine/image.h"
#include "engine/rules/diagonal_rules.h"
#include "engine/rules/run_rules.h"
#include "engine/rules/run_softness.h"

namespace stairmelt::inline STAIRMELT_SET {

template <class Words>
class Planner {
public:
    Planner(const KernelJob& kernelJob, int bytesOfPixel, FlagPlanes& flagPlanes, VisitSink& visitSink)
        : job(kernelJob),
          width(kernelJob.destination->width),
          height(kernelJob.destination->height),
          pixelBytes(bytesOfPixel),
          planes(flagPlanes),
          sink(visitSink) {}

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

    // Plans the blocks that were placed, in their order.
    void PlanBlocks() {
        const int count = placed;
        while (placed < kBlocks) places[placed++] = places[0];
        placed = 0;
        const FlagBlocks<Words> block(planes, places);
        Decisions<Words> decisions;
        Decide(block, LimitsOfBlocks(), decisions);
        if (IsZero(decisions.others | decisions.pixels[kAverage])) return;
        const ActionGroup<Words> groups[kActionGroups] = {ActionGroup<Words>(decisions.pixels),
                                                          ActionGroup<Words>(decisions.pixels + 16),
                                                          ActionGroup<Words>(decisions.pixels + 32)};
        const ActionGroup<Words> facts(decisions.facts);
        if (!IsZero(decisions.touches)) {
            decisions.measured = decisions.measured | (decisions.touches & IsNearDot(block));
        }

        for (int i = 0; i < count; ++i) {
            const int32_t y = places[i].y, firstX = places[i].x - kGuardColumns;  // of bit 0
            const uint64_t others = BlockOf(decisions.others, i), average = BlockOf(decisions.pixels[kAverage], i);
            uint64_t acting = (others | average) & ColumnsBelow(width, places[i].x);
            const uint64_t lone = average & ~others & acting, measured = BlockOf(decisions.measured, i);
            if (acting == 0) continue;
            Prefetch(firstX + TrailingZeros(acting), firstX + 63 - LeadingZeros(acting), y);
            while (acting != 0) {
                const int32_t bit = TrailingZeros(acting);
                if (queued == kBatch) Flush();
                if ((lone >> bit & 1) != 0) {
                    const int32_t length = TrailingOnes(lone >> bit, kBlockColumns);
                    visits[queued++] = {uint64_t{1} << kAverage, 0, firstX + bit, y, 0, static_cast<uint8_t>(length)};
                    acting &= ~(((uint64_t{1} << length) - 1) << bit);
                    continue;
                }
                acting &= acting - 1;
                const uint64_t kinds = groups[0].At(i, bit) | groups[1].At(i, bit) << 16 | groups[2].At(i, bit) << 32;
                const uint64_t fact = facts.At(i, bit);
                visits[queued] = {kinds, 0, firstX + bit, y, static_cast<uint16_t>(fact), 0};
                if ((measured >> bit & 1) != 0) Measure(visits[queued], fact >> kIsShort);
                ++queued;
            }
        }
    }

    // Measures what the facts don't tell. isShort: by direction.
    void Measure(Visit& visit, uint64_t isShort) {
        const int32_t x = visit.x, y = visit.y;
        const PlaneCursor at = CursorAt(planes, x, y);
        const auto add = [&](int kind, RunPair run) {
            visit.measured |= uint64_t{1} << kind;
            lengths[measuredLengths++] = run;
        };
        const auto addRun = [&]<RunDirection kDirection>(int kind) {
            constexpr int direction = static_cast<int>(kDirection);
            constexpr RunScanner kForth = kDirections[direction].forth;
            const bool isKnown = (isShort >> direction & 1) != 0;
            RunPair run = isKnown ? ShortRun(visit.facts, direction)
                                  : MeasureRun<kDirection>(at, RoomFrom(x, y, kForth.dx, kForth.dy, width, height));
            if (MayTouchDot(run)) run.farLength = FarLengthAtDot(kDirection, x, y, width, height, planes);
            if (!isKnown || run.farLength < 0) add(kind, run);
        };
        for (uint64_t rest = visit.kinds & (kRunKinds | kTailKinds | kFadeKinds); rest != 0; rest &= rest - 1) {
            const int kind = TrailingZeros(rest);
            switch (kind) {
                case kLeftRun: addRun.template operator()<RunDirection::kLeft>(kind); break;
                case kRightRun: addRun.template operator()<RunDirection::kRight>(kind); break;
                case kUpRun: addRun.template operator()<RunDirection::kUp>(kind); break;
                case kDownRun: addRun.template operator()<RunDirection::kDown>(kind); break;
                case kLeftTail: add(kind, {TailLength<kTailLeft>(at), 0}); break;
                case kRightTail: add(kind, {TailLength<kTailRight>(at), 0}); break;
                case kUpTail: add(kind, {TailLength<kTailUp>(at), 0}); break;
                case kDownTail: add(kind, {TailLength<kTailDown>(at), 0}); break;
                default: add(kind, {DiagonalLength(at, DiagonalOf(kind)), 0}); break;
            }
        }
    }

    void Flush() {
        sink.Perform(visits, queued, lengths);
        queued = 0;
        measuredLengths = 0;
    }

    // The bits of a block's pixels, from column x on, whose columns lie below `end`.
    static uint64_t ColumnsBelow(int32_t end, int32_t x) {
        const int32_t columns = end - x;
        if (columns <= 0) return 0;
        if (columns >= kBlockColumns) return kBlockPixels;
        return ((uint64_t{1} << columns) - 1) << kGuardColumns;
    }

    Limits<Words> LimitsOfBlocks() const {
        constexpr int32_t kFar = 3;  // columns or rows from an edge to the far end of a run of two cells
        static_assert(kFar >= kBesideLastColumns && kFar > kBelowFirstRows);
        const auto isInside = [&](const BlockPlace& place) {
            return place.x > 0 && place.x + kBlockColumns <= width - kFar && place.y >= kFar && place.y < height - kFar;
        };
        if (std::all_of(places, places + kBlocks, isInside)) return {~Words{}, ~Words{}, ~Words{}};
        const auto confined = [&](auto pixels) {
            return WordsOf<Words>([&](int i) { return pixels(places[i].x, places[i].y); });
        };
        return {confined([&](int32_t x, int32_t y) {
                    return y > kBelowFirstRows ? ColumnsBelow(width - kBesideLastColumns, x) : 0;
                }),
                confined([&](int32_t x, int32_t) { return ~ColumnsBelow(1, x); }), confined([&](int32_t x, int32_t y) {
                    return y >= kFar && y < height - kFar ? ColumnsBelow(width - kFar, x) & ~ColumnsBelow(kFar, x) : 0;
                })};
    }

    // The cache lines of the pixels from one column to another: in the row, in the next one, and where an edge that
    // goes down will be visited soon. Edges are scattered, and waiting for memory would cost more than all else.
    void Prefetch(int32_t fromX, int32_t toX, int32_t y) const {
        constexpr ptrdiff_t kCacheLine = 64;
        for (const int32_t row : {y, std::min(y + 1, height - 1), std::min(y + 3, height - 1)}) {
            for (const ImageView* image : {job.source, job.destination}) {
                const uint8_t* const start = image->base + static_cast<ptrdiff_t>(row) * image->rowStride;
                const ptrdiff_t end = static_cast<ptrdiff_t>(toX + 1) * pixelBytes;
                for (ptrdiff_t byte = static_cast<ptrdiff_t>(fromX) * pixelBytes; byte < end; byte += kCacheLine) {
                    _mm_prefetch(reinterpret_cast<const char*>(start + byte), _MM_HINT_T0);
                }
            }
        }
    }

    static constexpr int kBatch = 128;          // visits
    static constexpr int kMaxMeasured = 4 + 8;  // of a visit: runs or tails, and fades

    const KernelJob& job;
    const int32_t width, height;
    const int pixelBytes;
    FlagPlanes& planes;
    VisitSink& sink;
    BlockPlace places[kBlocks];  // of the flagged blocks that wait for a full vector
    int placed = 0;
    Visit visits[kBatch];
    RunPair lengths[kBatch * kMaxMeasured];
    int queued = 0, measuredLengths = 0;
};

}  // namespace stairmelt::inline STAIRMELT_SET
