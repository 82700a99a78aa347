// Paints the ramps along runs and diagonals, pixel by pixel, up to the image's border.
#pragma once

#include <cstdint>

#include "engine/image.h"
#include "engine/pixel_format.h"
#include "engine/rules/diagonal_rules.h"
#include "engine/rules/mix.h"
#include "engine/rules/ramp.h"

namespace stairmelt::inline STAIRMELT_SET {

inline bool Contains(const ImageView& image, int32_t x, int32_t y) {
    return x >= 0 && x < image.width && y >= 0 && y < image.height;
}

// Walks in steps of (dx, dy) away from the edge at (x, y). An edge is softened from both sides, and each side moves
// toward the one sample that lay across it in the source: the ramp spreads that value outward. A walk looks at nothing
// but the weight and the image's bounds, and crosses other edges.
template <class Format>
void PaintRun(const KernelJob& job, int dx, int dy, int32_t x, int32_t y, RampOf<Format> ramp) {
    const int acrossX = dx != 0, acrossY = dy != 0;
    const bool isForward = dx + dy > 0;  // begins beyond the edge
    const auto target = LoadBlendTarget<Format>(isForward ? PixelAt<Format>(*job.source, x, y)
                                                          : PixelAt<Format>(*job.source, x + acrossX, y + acrossY));
    if (isForward) x += acrossX, y += acrossY;
    for (; !ramp.finished && Contains(*job.destination, x, y); x += dx, y += dy) {
        MixPixel<Format>(PixelAt<Format>(*job.destination, x, y), target, NextBentWeight(ramp));
    }
}

// Fades a diagonal that leaves the edge at (x, y). In each pair of pixels across the stair, one takes a part of the
// other's value by the ramp `third`; where the stair goes upward, the other is also brought back toward its own source
// value by the ramp `half`. A script's softness can make the ramp outlast the measured cells.
template <class Format>
void PaintFade(const KernelJob& job, const Diagonal& diagonal, int32_t x, int32_t y, RampOf<Format> third,
               RampOf<Format> half) {
    x += diagonal.pixelX;
    y += diagonal.pixelY;
    for (; !third.finished; x += diagonal.stepX, y += diagonal.stepY) {
        const int32_t sourceX = x + diagonal.sourceX, sourceY = y + diagonal.sourceY;
        if (!Contains(*job.destination, x, y) || !Contains(*job.destination, sourceX, sourceY)) return;
        MixPixelAt<Format>(job, x, y, sourceX, sourceY, NextBentWeight(third));
        if (!diagonal.restores) continue;
        MixPixelAt<Format>(job, sourceX, sourceY, sourceX, sourceY, NextBentWeight(half));
    }
}

}  // namespace stairmelt::inline STAIRMELT_SET
