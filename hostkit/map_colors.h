// Turning a preview map into what is seen on the screen.
#pragma once

#include <cstdint>
#include <vector>

#include "host/filter_api.h"

namespace stairmelt {

// Colour planes of an 8-bit mode; 0 for a mode that a map can't have. Multichannel maps are shown by their first plane.
int MapPlanes(int32_t imageMode);

// The part of the map, row by row, as 0x00RRGGBB. Where the first mask isn't full, a checkerboard shows through. The
// part must lie within the map's bounds.
std::vector<uint32_t> ScreenPixels(const PSPixelMap& map, const VRect& part);

}  // namespace stairmelt
