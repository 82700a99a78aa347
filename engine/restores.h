// Takes a pixel part of the way back toward its own source value where a small pattern of flags says that the blends
// around it went too far.
#pragma once

#include "engine/edge_map.h"
#include "engine/image.h"
#include "engine/mix.h"
#include "engine/pixel_format.h"
#include "engine/scan_patterns.h"

namespace stairmelt {

// Restores the pixel of the first rule that holds at (x, y), half-way.
template <class Format, class... Rules>
void RestoreFirst(const ImageView& source, const ImageView& destination, int32_t x, int32_t y, const EdgeMap& map) {
    const FlagCursor at(map, x, y);
    const auto restoreIf = [&]<class Rule>(Rule) {
        if (!Rule::Holds(at)) return false;
        RestorePixel<Format>(source, destination, x + Rule::dx, y + Rule::dy, Format::kHalf);
        return true;
    };
    (void)(restoreIf(Rules{}) || ...);
}

// After the right edge of (x, y).
template <class Format>
void RestoreAfterRight(const ImageView& source, const ImageView& destination, int32_t x, int32_t y,
                       const EdgeMap& map) {
    RestoreFirst<Format, RestoreRight1, RestoreRight2, RestoreRight3>(source, destination, x, y, map);
}

// After the bottom edge of (x, y).
template <class Format>
void RestoreAfterDown(const ImageView& source, const ImageView& destination, int32_t x, int32_t y, const EdgeMap& map) {
    RestoreFirst<Format, RestoreDown1, RestoreDown2, RestoreDown3>(source, destination, x, y, map);
}

// After a pixel with both edges.
template <class Format>
void RestoreAfterCorner(const ImageView& source, const ImageView& destination, int32_t x, int32_t y,
                        const EdgeMap& map) {
    RestoreFirst<Format, RestoreCorner1, RestoreCorner2>(source, destination, x, y, map);
}

}  // namespace stairmelt
