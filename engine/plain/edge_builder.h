// Builds the edge map, in the plain form.
#pragma once

#include <cstdint>

#include "engine/image.h"
#include "engine/plain/edge_map.h"
#include "engine/rules/cell_builder.h"

namespace stairmelt {

// Sets the flags of a zeroed map of the image's size. An image without pixels gets none, and nothing is read.
template <class Format>
void BuildEdgeMap(const ImageView& image, EdgeThreshold<Format> threshold, EdgeMap& map) {
    if (image.width < 1 || image.height < 1) return;
    const CellBuilder<Format> builder{image, threshold};
    const int32_t packedEnd = builder.PackedEnd();
    for (int32_t y = 0; y < image.height - 1; ++y) {
        for (int32_t group = 0; group < packedEnd; group += 4) {
            const uint32_t word = builder.PackedStep(group, y);
            for (int k = 0; k < 4; ++k) *map.CellAt(group + k, y) = static_cast<uint8_t>(word >> (8 * k));
        }
        for (int32_t x = packedEnd; x < image.width - 1; ++x) *map.CellAt(x, y) = builder.PlainStep(x, y);
        *map.CellAt(image.width - 1, y) = builder.LastColumnStep(y);
    }
    for (int32_t x = 0; x < image.width - 1; ++x) *map.CellAt(x, image.height - 1) = builder.LastRowStep(x);
}

}  // namespace stairmelt
