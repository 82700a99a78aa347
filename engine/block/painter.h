// Carries out the planner's actions in one pixel format: ramps, fades, averages and single blends.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

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

namespace stairmelt::inline STAIRMELT_SET {

// The form that a format's instruction set gives to strokes if it mixes several pixels at once.
template <class Format, bool kMixesStrokes>
struct OwnStrokeOf {
    struct Type {};
};
template <class Format>
struct OwnStrokeOf<Format, true> {
    using Type = typename Format::InstructionSet::template StrokeOf<Format>;
};

template <class Format>
class Painter final : public ActionSink {
public:
    Painter(const KernelJob& kernelJob, const ScanWeights<Format>& scanWeights, FlagPlanes& flagPlanes)
        : job(kernelJob),
          neighbourWeight(scanWeights.neighbourWeight),
          planes(flagPlanes),
          ramps(kernelJob, scanWeights.tailBias, scanWeights.cornerWeight) {
        for (int kind = 0; kind < kActionKinds; ++kind) {
            if (IsFade(kind)) {
                SetFade(kind, DiagonalOf(kind));
            } else {
                const Blend& blend = kBlends.of[kind];
                strokes[kind] = {Offset(*job.destination, blend.dx, blend.dy),
                                 Offset(*job.source, blend.fromDx, blend.fromDy), 0, 0};
            }
        }
        SetRun(kLeftRun, RunDirection::kLeft);
        SetRun(kRightRun, RunDirection::kRight);
        SetRun(kUpRun, RunDirection::kUp);
        SetRun(kDownRun, RunDirection::kDown);
        if constexpr (Format::kMixesStrokes) {
            for (int kind = 0; kind < kActionKinds; ++kind) ownStrokes[kind] = OwnStroke(strokes[kind]);
        }
    }

    void Perform(const Action* actions, int count, const RunPair* lengths) override {
        using Cached = CachedRamp<Weights>;
        constexpr auto kPaintable = Format::kMixesStrokes ? Cached::kReady : Cached::kOutOfRange;
        for (const Action* action = actions; action < actions + count; ++action) {
            const int32_t x = action->x, y = action->y;
            if (action->kind == kAverage) {
                PaintAverages(x, y, action->span);
                continue;
            }
            const Cached& ramp = ramps.Find(action->ramp);
            if (ramp.state < kPaintable || !action->isInner) {
                PaintCarefully(*action, action->ramp == kLongRamp ? *lengths++ : RunOfRamp(action->ramp));
                continue;
            }
            uint8_t* to = PixelAt<Format>(*job.destination, x, y);
            const uint8_t* from = PixelAt<Format>(*job.source, x, y);
            if constexpr (Format::kMixesStrokes) {
                ownStrokes[action->kind].Mix(to, from, ramp);
            } else {
                const Stroke& stroke = strokes[action->kind];
                to += stroke.to;
                from += stroke.from;
                int32_t i = 0;
                do {
                    MixPixel<Format>(to, LoadBlendTarget<Format>(from), ramp.weights[i]);
                    to += stroke.advance;
                    from += stroke.fromAdvance;
                } while (++i < ramp.count);
            }
        }
    }

private:
    using Weights = typename Format::Weights;
    using OwnStroke = typename OwnStrokeOf<Format, Format::kMixesStrokes>::Type;
    // The farthest pixel below a visit that a cached ramp changes: a fade begins one row below it.
    static_assert(kRowsAhead > kMaxCached + 1 && kMargin > kMaxCached + 1);

    // An edge is softened from both sides, and each side moves toward the one sample that lay across it in the source:
    // walks to the right and down begin beyond the edge.
    void SetRun(ActionKind kind, RunDirection direction) {
        const RunScanner& forth = kDirections[static_cast<int>(direction)].forth;
        const ptrdiff_t advance = Offset(*job.destination, forth.dx, forth.dy);
        const bool isForward = forth.dx + forth.dy > 0;
        strokes[kind] = {isForward ? advance : 0, isForward ? 0 : Offset(*job.source, -forth.dx, -forth.dy), advance,
                         0};
        strokes[kind + 1] = strokes[kind];  // the tail
    }

    // The two parts of a fade lie on parallel diagonals and never change the same pixel: their order makes no
    // difference.
    void SetFade(int kind, const Diagonal& diagonal) {
        const int fromX = diagonal.pixelX + diagonal.sourceX, fromY = diagonal.pixelY + diagonal.sourceY;
        strokes[kind] = {IsRestoringFade(kind) ? Offset(*job.destination, fromX, fromY)
                                               : Offset(*job.destination, diagonal.pixelX, diagonal.pixelY),
                         Offset(*job.source, fromX, fromY), Offset(*job.destination, diagonal.stepX, diagonal.stepY),
                         Offset(*job.source, diagonal.stepX, diagonal.stepY)};
    }

    // For pixels near the image's border, where a walk may end early, and for ramps that aren't cached.
    void PaintCarefully(const Action& action, const RunPair& run) {
        const int kind = action.kind;
        if (IsFade(kind)) {
            if (!IsRestoringFade(kind)) PaintFade(DiagonalOf(kind), action.x, action.y, run.length);
            return;
        }
        uint8_t* to = PixelAt<Format>(*job.destination, action.x, action.y) + strokes[kind].to;
        const auto target =
            LoadBlendTarget<Format>(PixelAt<Format>(*job.source, action.x, action.y) + strokes[kind].from);
        if (action.ramp >= kBlendRamps && action.ramp < kStairRamps) {
            return MixPixel<Format>(to, target, ramps.Find(action.ramp).weights[0]);
        }
        const RunScanner& forth = ScannerOf(kind);
        const bool isForward = forth.dx + forth.dy > 0;
        const int32_t room =
            RoomFrom(action.x, action.y, forth.dx, forth.dy, job.destination->width, job.destination->height) +
            (isForward ? 0 : 1);
        RampOf<Format> walk = IsTail(kind) ? ramps.Tail(run.length) : ramps.Stair(run);
        if (forth.dy > 0) NeedRows(walk, action.y + 1);
        for (int32_t i = 0; i < room && !walk.finished; ++i, to += strokes[kind].advance) {
            MixPixel<Format>(to, target, NextBentWeight(walk));
        }
    }

    void PaintFade(const Diagonal& diagonal, int32_t visitX, int32_t visitY, int32_t length) {
        const ImageView& image = *job.destination;
        const int32_t x = visitX + diagonal.pixelX, y = visitY + diagonal.pixelY;
        const int32_t fromX = x + diagonal.sourceX, fromY = y + diagonal.sourceY;
        RampOf<Format> third = ramps.Fade(Weights::kThird, length);
        RampOf<Format> half = ramps.Fade(Weights::kHalf, length);
        if (diagonal.stepY > 0) NeedRows(third, std::max(y, fromY));
        // A script's softness can make the ramp outlast the diagonal; it then ends at the image's border.
        const int32_t columns = diagonal.stepX > 0 ? image.width - std::max(x, fromX) : std::min(x, fromX) + 1;
        const int32_t rows = diagonal.stepY > 0 ? image.height - std::max(y, fromY) : std::min(y, fromY) + 1;
        const int32_t count = std::min(columns, rows);
        uint8_t* to = PixelAt<Format>(image, x, y);
        uint8_t* restored = PixelAt<Format>(image, fromX, fromY);
        const uint8_t* from = PixelAt<Format>(*job.source, fromX, fromY);
        const ptrdiff_t toStep = Offset(image, diagonal.stepX, diagonal.stepY);
        const ptrdiff_t fromStep = Offset(*job.source, diagonal.stepX, diagonal.stepY);
        for (int32_t i = 0; i < count && !third.finished; ++i) {
            const auto target = LoadBlendTarget<Format>(from);
            MixPixel<Format>(to, target, NextBentWeight(third));
            if (diagonal.restores) MixPixel<Format>(restored, target, NextBentWeight(half));
            to += toStep;
            restored += toStep;
            from += fromStep;
        }
    }

    void PaintAverages(int32_t x, int32_t y, int32_t count) {
        if constexpr (Format::kMixesStrokes) {
            if (Format::InstructionSet::template AverageRow<Format>(job, x, y, count, neighbourWeight)) return;
        }
        for (; count > 0; --count) AverageIsolatedPixel<Format>(job, x++, y, neighbourWeight);
    }

    // Builds the flags that depend on pixels from row y on before a ramp that isn't cached changes them.
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
    OwnStroke ownStrokes[kActionKinds];
};

}  // namespace stairmelt::inline STAIRMELT_SET
