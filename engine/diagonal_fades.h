// Fades the diagonals that leave a straight piece of edge, with a ramp that starts at about a third of full weight. In
// each pair of pixels across the stair, one takes a part of the other's value; where the stair goes upward, the other
// is also brought back toward its own source value.
#pragma once

#include "engine/diagonal_measure.h"
#include "engine/image.h"
#include "engine/mix.h"
#include "engine/pixel_format.h"
#include "engine/ramp.h"

namespace stairmelt::inline STAIRMELT_SET {

inline bool Contains(const ImageView& view, int32_t x, int32_t y) {
    return x >= 0 && x < view.width && y >= 0 && y < view.height;
}

// Fades a diagonal of n steps. With a softness in percent the ramp ends on the measured cells; a script's softness can
// make it outlast them, and then the walk ends before the first turn that would leave the image.
template <class Format>
void FadeDiagonal(const KernelJob& job, int32_t x, int32_t y, const Diagonal& diagonal, int32_t n) {
    const auto step = RampStep<typename Format::Weights>(job.softness, n);
    RampOf<Format> third{false, Format::kThird, Format::kThird, step, job.bias};
    // The half ramp starts higher and has no say in the end of the walk.
    RampOf<Format> half{false, Format::kHalf, Format::kHalf, step, job.bias};

    x += diagonal.pixelX;
    y += diagonal.pixelY;
    while (!third.finished) {
        const int32_t sourceX = x + diagonal.sourceX;
        const int32_t sourceY = y + diagonal.sourceY;
        if (!Contains(*job.destination, x, y) || !Contains(*job.source, sourceX, sourceY)) return;
        MixPixelAt<Format>(PixelAt<Format>(*job.destination, x, y),
                           LoadToward<Format>(PixelAt<Format>(*job.source, sourceX, sourceY)), NextBentWeight(third));
        if (diagonal.restores) {
            RestorePixel<Format>(*job.source, *job.destination, sourceX, sourceY, NextBentWeight(half));
        }
        x += diagonal.stepX;
        y += diagonal.stepY;
    }
}

}  // namespace stairmelt::inline STAIRMELT_SET
