// Takes a pixel half-way back toward its own source value where a small pattern of flags says that the blends around it
// went too far. Each function tries its patterns in order; the first that matches restores its pixel. The patterns are
// complete as they stand: they aren't symmetric, and no mirrored forms exist.
//
// The nearer cells come first in a pattern, so that no test reads past the guard border, and each pattern demands a
// flag of the pixel that it restores, so that the pixel lies inside the image.
#pragma once

#include "engine/edge_map.h"
#include "engine/flag_pattern.h"
#include "engine/image.h"
#include "engine/mix.h"
#include "engine/pixel_format.h"

namespace stairmelt {

// Moves a destination pixel toward its own source value.
template <class Format>
void RestorePixel(const ImageView& source, const ImageView& destination, int32_t x, int32_t y,
                  typename Format::Weight weight) {
    MixPixelAt<Format>(PixelAt<Format>(destination, x, y), Load<Format>(PixelAt<Format>(source, x, y)), weight);
}

template <class Format>
void RestoreHalf(const ImageView& source, const ImageView& destination, int32_t x, int32_t y) {
    RestorePixel<Format>(source, destination, x, y, Format::kHalf);
}

// After the right edge of (x, y).
template <class Format>
void RestoreAfterRight(const ImageView& source, const ImageView& destination, int32_t x, int32_t y,
                       const EdgeMap& map) {
    const FlagCursor at(map, x, y);
    if (All<D(0, -1), Not(X(0, 0)), D(-1, -1), Not(R(-1, 0)), D(-1, 0), R(-2, 0), D(-2, -1), R(-2, -1), Not(X(-2, -1)),
            D(-2, -2)>(at)) {
        RestoreHalf<Format>(source, destination, x - 1, y);
    } else if (All<R(-1, 0), D(0, -1), R(0, -1), Not(A(0, -1)), D(1, -1), R(1, -1), R(0, -2), Not(D(1, -2)), R(1, -3),
                   Not(A(1, -3))>(at)) {
        RestoreHalf<Format>(source, destination, x + 1, y - 1);
    } else if (All<R(-1, 0), D(0, -1), R(-1, -1), Not(X(-1, -1)), D(-1, -1), R(-2, -1), R(-1, -2), Not(D(-1, -2)),
                   D(-1, -3), Not(X(-2, -3))>(at)) {
        RestoreHalf<Format>(source, destination, x - 1, y - 1);
    }
}

// After the bottom edge of (x, y).
template <class Format>
void RestoreAfterDown(const ImageView& source, const ImageView& destination, int32_t x, int32_t y, const EdgeMap& map) {
    const FlagCursor at(map, x, y);
    if (All<D(0, -1), Not(A(0, -1)), R(0, -1), D(1, -1), D(1, -2), D(-1, -1), R(-2, 0), Not(R(-1, 0)), Not(A(-2, 0))>(
            at)) {
        RestoreHalf<Format>(source, destination, x, y);
    } else if (All<R(-1, 0), D(0, -1), Not(X(-1, -1)), D(-1, -1), R(-1, -1), D(-1, -2), D(-2, -1), R(-3, -1),
                   Not(R(-2, -1)), Not(X(-3, -2))>(at)) {
        RestoreHalf<Format>(source, destination, x - 1, y - 1);
    } else if (All<R(-1, 0), R(-1, -1), Not(D(0, -1)), R(0, -1), D(0, -2), R(-1, -2), D(-1, -2), Not(X(-1, -2)),
                   R(-2, -2), Not(X(0, 0))>(at)) {
        RestoreHalf<Format>(source, destination, x, y - 1);
    }
}

// After a pixel with both edges.
template <class Format>
void RestoreAfterCorner(const ImageView& source, const ImageView& destination, int32_t x, int32_t y,
                        const EdgeMap& map) {
    const FlagCursor at(map, x, y);
    if (All<R(0, -1), D(0, -1), D(1, -1), D(1, -2), R(2, -1), D(2, -1), Not(R(1, -1)), Not(A(2, -2)), Not(A(0, -1))>(
            at)) {
        RestoreHalf<Format>(source, destination, x + 1, y - 1);
    } else if (All<R(0, -1), R(0, -2), R(-1, -1), D(0, -2), D(1, -2), R(1, -2), Not(D(0, -1)), Not(A(0, -2)),
                   Not(A(-1, 0))>(at)) {
        RestoreHalf<Format>(source, destination, x, y - 1);
    }
}

}  // namespace stairmelt
