// The scan in blocks: what stair_scan.h does, with the same result to the bit. It decides for a block of pixels at once
// what applies at each (step_masks.h), and then visits only the pixels at which something does, in the same order and
// with the same blends in the same order within a visit.
#pragma once

#include <xmmintrin.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "engine/diagonal_fades.h"
#include "engine/flag_block.h"
#include "engine/flag_planes.h"
#include "engine/image.h"
#include "engine/isolated_pixel.h"
#include "engine/mix.h"
#include "engine/plane_runs.h"
#include "engine/ramp_table.h"
#include "engine/ramp_walks.h"
#include "engine/scan_weights.h"
#include "engine/step_masks.h"

namespace stairmelt::inline STAIRMELT_SET {

template <class Format>
class BlockScan {
public:
    BlockScan(const KernelJob& kernelJob, FlagPlanes& flagPlanes, const ScanWeights<Format>& scanWeights)
        : job(kernelJob),
          source(*kernelJob.source),
          destination(*kernelJob.destination),
          planes(flagPlanes),
          weights(scanWeights),
          ramps(kernelJob, scanWeights.tailBias) {}

    void Run() {
        for (int32_t y = 0; y < destination.height; ++y) {
            planes.Need(y + kRowsAhead);
            if (!planes.IsMarked(y)) continue;
            const uint8_t* const rowR = planes.Row(kFlagR, y);
            const uint8_t* const rowD = planes.Row(kFlagD, y);
            for (int32_t x = 0; x < destination.width; x += kStretchColumns) {
                uint64_t flagged = 0;
                for (int block = 0; block < kBlocks; ++block) {
                    const int32_t at = x / 8 + block * kBlockBytes;
                    flagged |= LoadWord(rowR + at) | LoadWord(rowD + at);
                }
                if (flagged != 0) Enqueue(x, y);
            }
        }
        for (size_t i = 0; i < kAhead; ++i) {
            VisitNext();
            next = (next + 1) % kAhead;
        }
    }

private:
    using Word = typename Format::InstructionSet::Word;
    using Masks = StepMasks<Word>;
    static constexpr int kBlocks = kBlocksOf<Word>;  // looked at together
    static constexpr int32_t kStretchColumns = kBlocks * kBlockColumns;

    // The flags are built so far ahead of the scan: as far as a listed ramp or fade changes pixels below the visited
    // one. The builder reads its pixels from the destination, so nothing may be changed there before.
    static constexpr int32_t kRowsAhead = RampWeights<typename Format::Weights>::kMost + 4;

    // A pixel of the blocks whose masks are at hand.
    struct Place {
        const Masks& masks;
        int block;
        uint64_t bit;
        int32_t x, y;

        bool In(const Word& mask) const { return (BlockOf(mask, block) & bit) != 0; }
    };

    // The bits of a block's pixels, from column x on, whose columns lie below `end`.
    static uint64_t ColumnsBelow(int32_t end, int32_t x) {
        const int32_t columns = end - x;
        if (columns <= 0) return 0;
        if (columns >= kBlockColumns) return kBlockPixels;
        return ((uint64_t{1} << columns) - 1) << kGuardColumns;
    }

    // The blocks that are looked at together, decided and waiting for their visits.
    struct Stretch {
        int32_t x, y;
        uint64_t acting[kBlocks];  // the pixels at which something is to be done
        Masks masks;
    };

    static constexpr int32_t kPrefetchedRows[] = {0, 1, 3};

    // Decides a stretch, has the pixels brought near that it will change or take from, and visits the one that was
    // decided kAhead stretches before it: edges are scattered, and waiting for memory would cost more than all else.
    void Enqueue(int32_t x, int32_t y) {
        VisitNext();
        Stretch& stretch = queue[next];
        const bool isInner = x > 0 && x + kStretchColumns <= destination.width - 3;
        DecideSteps<Word>(FlagBlock<Word>(planes, x, y), isInner ? innerLimits : LimitsAt(x), y, stretch.masks);
        if (IsZero(stretch.masks.any)) return;
        next = (next + 1) % kAhead;
        stretch.x = x;
        stretch.y = y;
        // Both images in the row, in the next one, and where an edge that goes down will be visited soon.
        const char* rows[6];
        for (int i = 0; i < 3; ++i) {
            const int32_t row = std::min(y + kPrefetchedRows[i], destination.height - 1);
            rows[2 * i] = reinterpret_cast<const char*>(PixelAt<Format>(source, x, row));
            rows[2 * i + 1] = reinterpret_cast<const char*>(PixelAt<Format>(destination, x, row));
        }
        for (int block = 0; block < kBlocks; ++block) {
            const int32_t column = block * kBlockColumns;
            stretch.acting[block] = BlockOf(stretch.masks.any, block) & ColumnsBelow(destination.width, x + column);
            // Not in a function of its own: compilers take one that only prefetches for one that does nothing.
            for (uint64_t left = stretch.acting[block]; left != 0; left &= left - 1) {
                const ptrdiff_t pixel = column + std::countr_zero(left) - kGuardColumns;
                for (const char* row : rows) _mm_prefetch(row + pixel * Format::kPixelBytes, _MM_HINT_T0);
            }
        }
    }

    // What the decisions about the stretch at column x are confined to.
    Limits<Word> LimitsAt(int32_t x) const {
        const auto before = [&](int32_t end) {
            return WordOf<Word>([&](int block) { return ColumnsBelow(end, x + block * kBlockColumns); });
        };
        return {before(destination.width - 3), ~before(1)};
    }

    // Visits the stretch that has waited longest.
    void VisitNext() {
        Stretch& stretch = queue[next];
        for (int block = 0; block < kBlocks; ++block) {
            const int32_t x = stretch.x + block * kBlockColumns - kGuardColumns;
            for (uint64_t left = stretch.acting[block]; left != 0; left &= left - 1) {
                const int bit = std::countr_zero(left);
                Visit({stretch.masks, block, uint64_t{1} << bit, x + bit, stretch.y});
            }
            stretch.acting[block] = 0;
        }
    }

    void Visit(const Place& at) {
        if (at.In(at.masks.rightEdge)) SmoothRightEdge(at);
        if (at.In(at.masks.bottomEdge)) SmoothBottomEdge(at);
        if (at.In(at.masks.corner)) SmoothCorners(at);
    }

    void SmoothRightEdge(const Place& at) {
        if (at.In(at.masks.leftRun)) {
            const MeasuredRun run = MeasureRun<kScanLeft>(planes, at.x, at.y);
            const int32_t k = at.x - run.length - 1;
            const int32_t farRun = k >= 0 ? FarRunLength<kScanLeft, kScanRight>(planes, k, at.y, run) : 0;
            Stair<RunDirection::kLeft>(run.length, farRun, at.x, at.y);
        } else if (at.In(at.masks.leftTail)) {
            Tail<RunDirection::kLeft>(TailLength<kTailLeft>(planes, at.x, at.y), at.x, at.y);
        }
        if (at.In(at.masks.rightRun)) {
            const MeasuredRun run = MeasureRun<kScanRight>(planes, at.x, at.y);
            const int32_t k = at.x + run.length + 1;
            const int32_t farRun =
                k < destination.width ? FarRunLength<kScanRight, kScanLeft>(planes, k, at.y, run) : 0;
            Stair<RunDirection::kRight>(run.length, farRun, at.x, at.y);
        } else if (at.In(at.masks.rightTail)) {
            Tail<RunDirection::kRight>(TailLength<kTailRight>(planes, at.x, at.y), at.x, at.y);
        }
        FadeIf<kRiserDiagonals[0]>(at, at.masks.riserFade[0]);
        FadeIf<kRiserDiagonals[1]>(at, at.masks.riserFade[1]);
        FadeIf<kRiserDiagonals[2]>(at, at.masks.riserFade[2]);
        FadeIf<kRiserDiagonals[3]>(at, at.masks.riserFade[3]);
        if (at.In(at.masks.contactRight)) Blend(at.x + 1, at.y, at.x, at.y, weights.cornerWeight);
        if (at.In(at.masks.contactLeft)) Blend(at.x, at.y, at.x + 1, at.y, weights.cornerWeight);
        RestoreIf<RestoreRight1>(at, at.masks.restoreRight[0], Format::kHalf);
        RestoreIf<RestoreRight2>(at, at.masks.restoreRight[1], Format::kHalf);
        RestoreIf<RestoreRight3>(at, at.masks.restoreRight[2], Format::kHalf);
    }

    void SmoothBottomEdge(const Place& at) {
        if (at.In(at.masks.upRun)) {
            const MeasuredRun run = MeasureRun<kScanUp>(planes, at.x, at.y);
            const int32_t k = at.y - run.length - 1;
            const int32_t farRun = k >= 0 ? FarRunLength<kScanUp, kScanDown>(planes, at.x, k, run) : 0;
            Stair<RunDirection::kUp>(run.length, farRun, at.x, at.y);
        } else if (at.In(at.masks.upTail)) {
            Tail<RunDirection::kUp>(TailLength<kTailUp>(planes, at.x, at.y), at.x, at.y);
        }
        if (at.In(at.masks.downRun)) {
            const MeasuredRun run = MeasureRun<kScanDown>(planes, at.x, at.y);
            const int32_t k = at.y + run.length + 1;
            const int32_t farRun = k < destination.height ? FarRunLength<kScanDown, kScanUp>(planes, at.x, k, run) : 0;
            Stair<RunDirection::kDown>(run.length, farRun, at.x, at.y);
        } else if (at.In(at.masks.downTail)) {
            Tail<RunDirection::kDown>(TailLength<kTailDown>(planes, at.x, at.y), at.x, at.y);
        }
        FadeIf<kTreadDiagonals[0]>(at, at.masks.treadFade[0]);
        FadeIf<kTreadDiagonals[1]>(at, at.masks.treadFade[1]);
        FadeIf<kTreadDiagonals[2]>(at, at.masks.treadFade[2]);
        FadeIf<kTreadDiagonals[3]>(at, at.masks.treadFade[3]);
        RestoreIf<RestoreDown1>(at, at.masks.restoreDown[0], Format::kHalf);
        RestoreIf<RestoreDown2>(at, at.masks.restoreDown[1], Format::kHalf);
        RestoreIf<RestoreDown3>(at, at.masks.restoreDown[2], Format::kHalf);
        RestoreIf<RestoreCorner1>(at, at.masks.restoreCorner[0], Format::kHalf);
        RestoreIf<RestoreCorner2>(at, at.masks.restoreCorner[1], Format::kHalf);
    }

    void SmoothCorners(const Place& at) {
        if (at.In(at.masks.average)) {
            AverageIsolatedPixel<Format>(source, destination, at.x, at.y, weights.neighbourWeight);
        }
        RestoreIf<RestoreMost1>(at, at.masks.restoreMost[0], Format::kThreeQuarters);
        RestoreIf<RestoreMost2>(at, at.masks.restoreMost[1], Format::kThreeQuarters);
        BlendIf<Sixth1>(at, at.masks.sixth[0]);
        BlendIf<Sixth2>(at, at.masks.sixth[1]);
        BlendIf<Sixth3>(at, at.masks.sixth[2]);
        BlendIf<Sixth4>(at, at.masks.sixth[3]);
        BlendIf<Sixth5>(at, at.masks.sixth[4]);
        BlendIf<Sixth6>(at, at.masks.sixth[5]);
        BlendIf<Sixth7>(at, at.masks.sixth[6]);
        BlendIf<Sixth8>(at, at.masks.sixth[7]);
    }

    template <Diagonal kDiagonal>
    void FadeIf(const Place& at, const Word& mask) {
        if (!at.In(mask)) return;
        const int32_t n = DiagonalLength<kDiagonal>(planes, at.x, at.y);
        const auto fade = ramps.ListedFade(n);
        if (fade.third == nullptr) {
            if constexpr (kDiagonal.stepY > 0) NeedRowsOf(ramps.Third(n), at.y + 2);
            return FadeDiagonal<Format>(job, at.x, at.y, kDiagonal, n);
        }
        // No longer than the diagonal that was measured: every pixel lies inside the image.
        uint8_t* to = PixelAt<Format>(destination, at.x + kDiagonal.pixelX, at.y + kDiagonal.pixelY);
        const int32_t fromX = at.x + kDiagonal.pixelX + kDiagonal.sourceX;
        const int32_t fromY = at.y + kDiagonal.pixelY + kDiagonal.sourceY;
        const uint8_t* from = PixelAt<Format>(source, fromX, fromY);
        uint8_t* restored = PixelAt<Format>(destination, fromX, fromY);
        const ptrdiff_t toStep = StepBytes(destination, kDiagonal), fromStep = StepBytes(source, kDiagonal);
        for (int32_t i = 0; i < fade.third->count; ++i) {
            const auto toward = LoadToward<Format>(from);
            MixPixelAt<Format>(to, toward, fade.third->weights[i]);
            if constexpr (kDiagonal.restores) MixPixelAt<Format>(restored, toward, fade.half->weights[i]);
            to += toStep;
            restored += toStep;
            from += fromStep;
        }
    }

    static ptrdiff_t StepBytes(const ImageView& image, const Diagonal& diagonal) {
        return diagonal.stepX * Format::kPixelBytes + diagonal.stepY * static_cast<ptrdiff_t>(image.rowStride);
    }

    template <class Rule>
    void RestoreIf(const Place& at, const Word& mask, typename Format::Weight weight) {
        if (at.In(mask)) RestorePixel<Format>(source, destination, at.x + Rule::dx, at.y + Rule::dy, weight);
    }

    template <class Rule>
    void BlendIf(const Place& at, const Word& mask) {
        if (at.In(mask)) {
            Blend(at.x + Rule::dx, at.y + Rule::dy, at.x + Rule::fromDx, at.y + Rule::fromDy, Format::kOneSixth);
        }
    }

    // Moves destination (x, y) toward source (fromX, fromY).
    void Blend(int32_t x, int32_t y, int32_t fromX, int32_t fromY, typename Format::Weight weight) {
        MixPixelAt<Format>(PixelAt<Format>(destination, x, y),
                           LoadToward<Format>(PixelAt<Format>(source, fromX, fromY)), weight);
    }

    template <RunDirection kDirection>
    void Stair(int32_t n, int32_t farRun, int32_t x, int32_t y) {
        if (n == 1 && farRun == 1) {
            const int32_t percent = DotPercent(kDirection, x, y, destination.width, destination.height, planes);
            if (percent != 0) {
                const auto ramp = ramps.DotStair(percent);
                if constexpr (kDirection == RunDirection::kDown) NeedRowsOf(ramp, y);
                return Walk<kDirection>(x, y, ramp);
            }
        }
        if (const auto* listed = ramps.ListedStair(n, farRun)) return Walk<kDirection>(x, y, *listed);
        const auto ramp = ramps.Stair(n, farRun);
        if constexpr (kDirection == RunDirection::kDown) NeedRowsOf(ramp, y);
        Walk<kDirection>(x, y, ramp);
    }

    template <RunDirection kDirection>
    void Tail(int32_t n, int32_t x, int32_t y) {
        if (const auto* listed = ramps.ListedTail(n)) return Walk<kDirection>(x, y, *listed);
        const auto ramp = ramps.Tail(n);
        if constexpr (kDirection == RunDirection::kDown) NeedRowsOf(ramp, y);
        Walk<kDirection>(x, y, ramp);
    }

    // Before a ramp that isn't listed changes pixels from row y on: the flags that are still to be taken from them.
    void NeedRowsOf(const RampOf<Format>& ramp, int32_t y) {
        const int32_t pixels = std::min(MostPixels(ramp), destination.height - y);
        planes.Need(y + pixels);
    }

    template <RunDirection kDirection, class Ramp>
    void Walk(int32_t x, int32_t y, const Ramp& ramp) {
        if constexpr (kDirection == RunDirection::kLeft) RampLeft<Format>(source, destination, x, y, ramp);
        if constexpr (kDirection == RunDirection::kRight) RampRight<Format>(source, destination, x, y, ramp);
        if constexpr (kDirection == RunDirection::kUp) RampUp<Format>(source, destination, x, y, ramp);
        if constexpr (kDirection == RunDirection::kDown) RampDown<Format>(source, destination, x, y, ramp);
    }

    const KernelJob& job;
    const ImageView& source;
    const ImageView& destination;
    FlagPlanes& planes;
    const ScanWeights<Format> weights;
    RampTable<typename Format::Weights> ramps;
    const Limits<Word> innerLimits = {~Word{}, ~Word{}};  // away from the first and the last columns
    static constexpr size_t kAhead = 16;
    Stretch queue[kAhead] = {};
    size_t next = 0;  // the place in the queue that is filled next; what stands in it has waited longest
};

}  // namespace stairmelt::inline STAIRMELT_SET
