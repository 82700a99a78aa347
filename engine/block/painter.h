// Carries out the planner's actions in one pixel format: ramps, fades, averages and single blends.
#pragma once

#include <emmintrin.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "engine/block/action.h"
#include "engine/block/flag_planes.h"
#include "engine/block/ramp_cache.h"
#include "engine/image.h"
#include "engine/pixel_format.h"
#include "engine/rules/diagonal_rules.h"
#include "engine/rules/isolated_pixel.h"
#include "engine/rules/mix.h"
#include "engine/rules/ramp.h"
#include "engine/rules/scan_weights.h"
#include "engine/rules/walks.h"

namespace stairmelt::inline STAIRMELT_SET {

// A stroke that mixes pixel by pixel.
template <class Format>
struct PixelStroke : Stroke {
    void Mix(uint8_t* pixel, const uint8_t* fromPixel, const CachedRamp<typename Format::Weights>& ramp) const {
        uint8_t* at = pixel + to;
        const uint8_t* target = fromPixel + from;
        int32_t i = 0;
        do {
            MixPixel<Format>(at, LoadBlendTarget<Format>(target), ramp.weights[i]);
            at += advance;
            target += fromAdvance;
        } while (++i < ramp.count);
    }
};

template <class Format>
class Painter final : public ActionSink {
public:
    Painter(const KernelJob& kernelJob, const ScanWeights<Format>& scanWeights, FlagPlanes& flagPlanes)
        : job(kernelJob),
          neighbourWeight(scanWeights.neighbourWeight),
          planes(flagPlanes),
          ramps(kernelJob, scanWeights.tailBias, scanWeights.cornerWeight) {
        for (int kind = 0; kind < kActionKinds; ++kind) strokes[kind] = CachedStroke{StrokeOf(kind)};
    }

    void Perform(const Action* actions, int count, const RunPair* lengths) override {
        using Cached = CachedRamp<Weights>;
        constexpr int kAhead = 8;  // actions; the source's row below them isn't in the cache yet when they are planned
        // Only strokes that mix several pixels need weights in range.
        constexpr auto kPaintable = Format::kMixesStrokes ? Cached::kReady : Cached::kOutOfRange;
        for (const Action* action = actions; action < actions + count; ++action) {
            const int32_t x = action->x, y = action->y;
            const Action& later = actions + count - action > kAhead ? action[kAhead] : *action;
            const int32_t below = std::min(later.y + 1, job.source->height - 1);
            _mm_prefetch(reinterpret_cast<const char*>(PixelAt<Format>(*job.source, later.x, below)), _MM_HINT_T0);
            if (action->kind == kAverage) {
                PaintAverages(x, y, action->span);
                continue;
            }
            const Cached& ramp = ramps.Find(action->ramp);
            if (ramp.state < kPaintable || !action->isInner) {
                PaintCarefully(*action,
                               action->ramp >= kLongRamp ? lengths[action - actions] : RunOfRamp(action->ramp));
                continue;
            }
            uint8_t* to = PixelAt<Format>(*job.destination, x, y);
            const uint8_t* from = PixelAt<Format>(*job.source, x, y);
            strokes[action->kind].Mix(to, from, ramp);
            const uint8_t restore = kKinds[action->kind].restore;
            if (restore != 0) strokes[restore].Mix(to, from, ramps.Find(HalfRampOf(action->ramp)));
        }
    }

private:
    using Weights = typename Format::Weights;
    // Mixes the ramps that are cached.
    using CachedStroke =
        std::conditional_t<Format::kMixesStrokes, typename Format::InstructionSet::template StrokeOf<Format>,
                           PixelStroke<Format>>;

    // A cached ramp begins at most one row or column beyond the visited pixel, and what it moves toward one farther.
    static_assert(kRowsAhead > kMaxCached + 1 && kMargin > kMaxCached + 1);

    // For pixels near the image's border, where a walk may end early, and for ramps that aren't cached. Before a ramp
    // goes down, builds the flags that depend on the pixels that it changes.
    void PaintCarefully(const Action& action, const RunPair& run) {
        const KindInfo& kind = kKinds[action.kind];
        const int32_t x = action.x, y = action.y;
        if (kind.shape == Shape::kFade) {
            const Diagonal& diagonal = DiagonalOf(kind.way);
            const RampOf<Format> third = ramps.Fade(Weights::kThird, run.length);
            if (diagonal.stepY > 0) NeedRows(third, y + diagonal.pixelY + std::max(diagonal.sourceY, 0));
            PaintFade<Format>(job, diagonal, x, y, third, ramps.Fade(Weights::kHalf, run.length));
        } else if (kind.shape == Shape::kRun) {
            const RunScanner& forth = kDirections[kind.way].forth;
            const RampOf<Format> ramp = IsTail(action.ramp) ? ramps.Tail(run.length) : ramps.Stair(run);
            if (forth.dy > 0) NeedRows(ramp, y + 1);
            PaintRun<Format>(job, forth.dx, forth.dy, x, y, ramp);
        } else {
            PixelStroke<Format>{StrokeOf(action.kind)}.Mix(PixelAt<Format>(*job.destination, x, y),
                                                           PixelAt<Format>(*job.source, x, y), ramps.Find(action.ramp));
        }
    }

    void PaintAverages(int32_t x, int32_t y, int32_t count) {
        if constexpr (Format::kMixesStrokes) {
            if (Format::InstructionSet::template AverageRow<Format>(job, x, y, count, neighbourWeight)) return;
        }
        for (; count > 0; --count) AverageIsolatedPixel<Format>(job, x++, y, neighbourWeight);
    }

    // For a ramp that changes pixels from row y on.
    void NeedRows(const RampOf<Format>& ramp, int32_t y) {
        planes.Need(y + std::min(MaxPixels(ramp), job.destination->height - y));
    }

    Stroke StrokeOf(int kind) const {
        const Track& track = kKinds[static_cast<size_t>(kind)].track;
        const auto offset = [](const ImageView& image, int dx, int dy) {
            return dx * Format::kPixelBytes + dy * static_cast<ptrdiff_t>(image.rowStride);
        };
        return {offset(*job.destination, track.toX, track.toY), offset(*job.source, track.fromX, track.fromY),
                offset(*job.destination, track.stepX, track.stepY),
                offset(*job.source, track.fromStepX, track.fromStepY)};
    }

    const KernelJob& job;
    const typename Format::Weight neighbourWeight;
    FlagPlanes& planes;
    RampCache<Weights> ramps;
    CachedStroke strokes[kActionKinds];
};

}  // namespace stairmelt::inline STAIRMELT_SET
