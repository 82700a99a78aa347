// Walks a ramp away from an edge, along a row or a column. An edge is softened from both sides, and each side moves
// toward the one sample that lay across the edge in the source: the ramp spreads that value outward. The pixels that
// change are the destination's, so that ramps which cross compound in the order of the scan.
//
// A walk looks at nothing but the weight and the image's bounds; it crosses other edges. A start outside the image is a
// walk of no pixels.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "engine/image.h"
#include "engine/mix.h"
#include "engine/pixel_format.h"
#include "engine/ramp.h"
#include "engine/ramp_table.h"

namespace stairmelt::inline STAIRMELT_SET {

// Blends at most `pixels` pixels from `at` on, `advance` bytes apart, toward the pixel at `neighbour`.
template <class Format>
void WalkRamp(uint8_t* at, ptrdiff_t advance, int32_t pixels, const uint8_t* neighbour, RampOf<Format> ramp) {
    if (pixels < 1) return;
    const auto toward = LoadToward<Format>(neighbour);
    while (true) {
        MixPixelAt<Format>(at, toward, NextBentWeight(ramp));
        if (ramp.finished || --pixels == 0) return;
        at += advance;
    }
}

// The same for weights that stand in a list.
template <class Format>
void WalkRamp(uint8_t* at, ptrdiff_t advance, int32_t pixels, const uint8_t* neighbour,
              const RampWeights<typename Format::Weights>& ramp) {
    if (pixels < 1) return;
    const auto toward = LoadToward<Format>(neighbour);
    const int32_t count = std::min(pixels, ramp.count);
    for (int32_t i = 0; i < count; ++i, at += advance) MixPixelAt<Format>(at, toward, ramp.weights[i]);
}

template <class Format, class Ramp>
void RampLeft(const ImageView& source, const ImageView& destination, int32_t x, int32_t y, const Ramp& ramp) {
    WalkRamp<Format>(PixelAt<Format>(destination, x, y), -Format::kPixelBytes, x + 1, PixelAt<Format>(source, x + 1, y),
                     ramp);
}

template <class Format, class Ramp>
void RampRight(const ImageView& source, const ImageView& destination, int32_t x, int32_t y, const Ramp& ramp) {
    WalkRamp<Format>(PixelAt<Format>(destination, x + 1, y), Format::kPixelBytes, destination.width - 1 - x,
                     PixelAt<Format>(source, x, y), ramp);
}

template <class Format, class Ramp>
void RampUp(const ImageView& source, const ImageView& destination, int32_t x, int32_t y, const Ramp& ramp) {
    WalkRamp<Format>(PixelAt<Format>(destination, x, y), -static_cast<ptrdiff_t>(destination.rowStride), y + 1,
                     PixelAt<Format>(source, x, y + 1), ramp);
}

template <class Format, class Ramp>
void RampDown(const ImageView& source, const ImageView& destination, int32_t x, int32_t y, const Ramp& ramp) {
    WalkRamp<Format>(PixelAt<Format>(destination, x, y + 1), destination.rowStride, destination.height - 1 - y,
                     PixelAt<Format>(source, x, y), ramp);
}

}  // namespace stairmelt::inline STAIRMELT_SET
