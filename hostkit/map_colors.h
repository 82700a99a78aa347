// Converts a preview map to screen colours.
#pragma once

#include <cstdint>
#include <vector>

#include "host/filter_api.h"

namespace stairmelt {

// Colour planes of an 8-bit mode; 0 for a mode that a map can't have. Multichannel maps show their first plane only.
int MapPlanes(int32_t imageMode);

// The part of the map, row by row, as 0x00RRGGBB. A checkerboard shows through where the first mask isn't fully
// opaque. The part must be within the map's bounds.
std::vector<uint32_t> ScreenPixels(const PSPixelMap& map, const VRect& part);

}  // namespace stairmelt
