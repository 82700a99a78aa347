// Carries out what the planner wrote down, in one pixel format: the ramps, fades, averages and single blends.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "engine/block/bits.h"
#include "engine/block/flag_planes.h"
#include "engine/block/ramp_cache.h"
#include "engine/block/visit.h"
#include "engine/image.h"
#include "engine/pixel_format.h"
#include "engine/rules/diagonal_rules.h"
#include "engine/rules/isolated_pixel.h"
#include "engine/rules/mix.h"
#include "engine/rules/ramp.h"
#include "engine/rules/scan_weights.h"

namespace stairmelt::inline STAIRMELT_SET {

template <class Format>
class Painter final : public VisitSink {
public:
    Painter(const KernelJob& kernelJob, const ScanWeights<Format>& scanWeights, FlagPlanes& flagPlanes)
        : job(kernelJob),
          neighbourWeight(scanWeights.neighbourWeight),
          planes(flagPlanes),
          ramps(kernelJob, scanWeights.tailBias, scanWeights.cornerWeight) {
        for (int kind = 0; kind < kActionKinds; ++kind) {
            const Blend& blend = kBlends.of[kind];
            strokes[kind] = {0, 0, Offset(*job.destination, blend.dx, blend.dy),
                             Offset(*job.source, blend.fromDx, blend.fromDy), 0};
        }
        SetRun(kLeftRun, RunDirection::kLeft);
        SetRun(kRightRun, RunDirection::kRight);
        SetRun(kUpRun, RunDirection::kUp);
        SetRun(kDownRun, RunDirection::kDown);
    }

    void Perform(const Visit* visits, int count, const RunPair* lengths) override {
        for (const Visit* visit = visits; visit < visits + count; ++visit) {
            if (visit->span != 0) {
                PaintAverages(visit->x, visit->y, visit->span);
            } else {
                lengths = PaintVisit(*visit, lengths);
            }
        }
    }

private:
    using Weights = typename Format::Weights;
    using Cached = CachedRamp<Weights>;

    // How a kind that walks, or blends one pixel, goes about it.
    struct Stroke {
        int dx, dy;          // from one pixel to the next; both 0 for a single blend
        ptrdiff_t to, from;  // bytes from the visited pixel to the first one, and to the one that all move toward
        ptrdiff_t advance;   // bytes from one pixel to the next
    };

    // An edge is softened from both sides, and each side moves toward the one sample that lay across it in the source:
    // walks to the right and down begin beyond the edge.
    void SetRun(ActionKind kind, RunDirection direction) {
        const int dx = kDirections[static_cast<int>(direction)].forth.dx;
        const int dy = kDirections[static_cast<int>(direction)].forth.dy;
        const bool isForward = dx + dy > 0;
        const ptrdiff_t advance = Offset(*job.destination, dx, dy);
        strokes[kind] = {dx, dy, isForward ? advance : 0, isForward ? 0 : Offset(*job.source, -dx, -dy), advance};
        strokes[kind + 1] = strokes[kind];  // the tail
    }

    // Returns the lengths of the next visit.
    const RunPair* PaintVisit(const Visit& visit, const RunPair* lengths) {
        uint8_t* const to = PixelAt<Format>(*job.destination, visit.x, visit.y);
        const uint8_t* const from = PixelAt<Format>(*job.source, visit.x, visit.y);
        const bool isInner = IsInner(visit.x, visit.y);
        constexpr uint64_t kAverages = uint64_t{1} << kAverage;
        for (uint64_t rest = visit.kinds; rest != 0; rest &= rest - 1) {
            const int kind = TrailingZeros(rest);
            const uint64_t bit = rest & (0 - rest);
            const Cached* ramp;
            if (((visit.measured | kAverages) & bit) == 0) {
                ramp = ramps.FindKnown(kind, visit.facts);
            } else if ((bit & kAverages) != 0) {
                AverageIsolatedPixel<Format>(job, visit.x, visit.y, neighbourWeight);
                continue;
            } else if ((bit & kFadeKinds) != 0) {
                PaintFade(kind, visit.x, visit.y, lengths++->length);
                continue;
            } else {
                ramp = ramps.FindMeasured((bit & kTailKinds) != 0, *lengths++);
            }
            const Stroke& stroke = strokes[kind];
            if (ramp == nullptr || !isInner) {
                const RunPair run = (visit.measured & bit) != 0
                                        ? lengths[-1]
                                        : ShortRun(visit.facts >> kKnownRamps.of[kind].factShift, 0);
                PaintCarefully(visit, (bit & kTailKinds) != 0, run, stroke, ramp);
            } else if (!Format::kMixesRows || stroke.dx == 0 || !ramp->isInRange) {
                const auto target = LoadBlendTarget<Format>(from + stroke.from);
                uint8_t* at = to + stroke.to;
                int32_t i = 0;
                do {
                    MixPixel<Format>(at, target, ramp->weights[i]);
                    at += stroke.advance;
                } while (++i < ramp->count);
            } else if constexpr (Format::kMixesRows) {
                using Set = typename Format::InstructionSet;
                if (stroke.dx < 0) {
                    Set::template MixRow<Format, -1>(to + stroke.to, from + stroke.from, *ramp);
                } else {
                    Set::template MixRow<Format, 1>(to + stroke.to, from + stroke.from, *ramp);
                }
            }
        }
        return lengths;
    }

    // Near the image's border, where a walk may end early, and for ramps that aren't cached.
    void PaintCarefully(const Visit& visit, bool isTail, const RunPair& run, const Stroke& stroke, const Cached* ramp) {
        const ImageView& image = *job.destination;
        const bool isForward = stroke.dx + stroke.dy > 0;
        const int32_t room =
            RoomFrom(visit.x, visit.y, stroke.dx, stroke.dy, image.width, image.height) + (isForward ? 0 : 1);
        uint8_t* to = PixelAt<Format>(image, visit.x, visit.y) + stroke.to;
        const auto target = LoadBlendTarget<Format>(PixelAt<Format>(*job.source, visit.x, visit.y) + stroke.from);
        if (ramp != nullptr) {
            const int32_t count = std::min(room, ramp->count);
            for (int32_t i = 0; i < count; ++i, to += stroke.advance) MixPixel<Format>(to, target, ramp->weights[i]);
            return;
        }
        RampOf<Format> walk = isTail ? ramps.Tail(run.length) : ramps.Stair(run);
        if (stroke.dy > 0) NeedRows(walk, visit.y + 1);
        for (int32_t i = 0; i < room && !walk.finished; ++i, to += stroke.advance) {
            MixPixel<Format>(to, target, NextBentWeight(walk));
        }
    }

    // So far from the image's border that no cached ramp reaches it.
    bool IsInner(int32_t x, int32_t y) const {
        constexpr int32_t kMargin = 16;
        static_assert(kMargin > Cached::kMaxCount && kRowsAhead > Cached::kMaxCount + 1);
        const ImageView& image = *job.destination;
        return x >= kMargin && x < image.width - kMargin && y >= kMargin && y < image.height - kMargin;
    }

    void PaintFade(int kind, int32_t visitX, int32_t visitY, int32_t length) {
        const Diagonal& diagonal = DiagonalOf(kind);
        const ImageView& image = *job.destination;
        const int32_t x = visitX + diagonal.pixelX, y = visitY + diagonal.pixelY;
        const int32_t fromX = x + diagonal.sourceX, fromY = y + diagonal.sourceY;
        const auto cached = ramps.FindFade(length);
        const bool isCached = cached.third != nullptr;
        RampOf<Format> third{}, half{};
        int32_t count;
        if (isCached) {
            // No longer than the diagonal that was measured: every pixel lies inside the image.
            count = cached.third->count;
        } else {
            // A script's softness can make the ramp outlast the diagonal: it ends before it leaves the image.
            third = ramps.Fade(Weights::kThird, length);
            half = ramps.Fade(Weights::kHalf, length);
            if (diagonal.stepY > 0) NeedRows(third, std::max(y, fromY));
            const int32_t columns = diagonal.stepX > 0 ? image.width - std::max(x, fromX) : std::min(x, fromX) + 1;
            const int32_t rows = diagonal.stepY > 0 ? image.height - std::max(y, fromY) : std::min(y, fromY) + 1;
            count = std::min(columns, rows);
        }
        uint8_t* to = PixelAt<Format>(image, x, y);
        uint8_t* restored = PixelAt<Format>(image, fromX, fromY);
        const uint8_t* from = PixelAt<Format>(*job.source, fromX, fromY);
        const ptrdiff_t toStep = Offset(image, diagonal.stepX, diagonal.stepY);
        const ptrdiff_t fromStep = Offset(*job.source, diagonal.stepX, diagonal.stepY);
        for (int32_t i = 0; i < count && !third.finished; ++i) {
            const auto target = LoadBlendTarget<Format>(from);
            MixPixel<Format>(to, target, isCached ? cached.third->weights[i] : NextBentWeight(third));
            if (diagonal.restores) {
                MixPixel<Format>(restored, target, isCached ? cached.half->weights[i] : NextBentWeight(half));
            }
            to += toStep;
            restored += toStep;
            from += fromStep;
        }
    }

    void PaintAverages(int32_t x, int32_t y, int32_t count) {
        if constexpr (Format::kMixesRows) {
            if (Format::InstructionSet::template AverageRow<Format>(job, x, y, count, neighbourWeight)) return;
        }
        for (; count > 0; --count) AverageIsolatedPixel<Format>(job, x++, y, neighbourWeight);
    }

    // Before a ramp that isn't cached changes pixels from row y on downward: the flags that are still to be read from
    // them.
    void NeedRows(const RampOf<Format>& ramp, int32_t y) {
        planes.Need(y + std::min(MaxPixels(ramp), job.destination->height - y));
    }

    static ptrdiff_t Offset(const ImageView& image, int dx, int dy) {
        return dx * Format::kPixelBytes + dy * static_cast<ptrdiff_t>(image.rowStride);
    }

    const KernelJob& job;
    const typename Format::Weight neighbourWeight;
    FlagPlanes& planes;
    RampCache<Weights> ramps;
    Stroke strokes[kActionKinds];
};

}  // namespace stairmelt::inline STAIRMELT_SET
