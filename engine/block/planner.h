// Plans the scan: decides from the flags alone what is done to the picture, and in which order. The planner doesn't
// know the pixel format, so one copy for each instruction set is enough for all kernels.
#pragma once

#include <cstdint>

#include "engine/block/action.h"
#include "engine/block/flag_planes.h"

namespace stairmelt::inline STAIRMELT_SET {

// Passes all actions on a picture to the sink, in the order of the scan. They arrive in batches, any number of rows
// after they were planned; that is safe, since flags are never built from changed rows.
void PlanVisits(int32_t width, int32_t height, FlagPlanes& planes, ActionSink& sink);

}  // namespace stairmelt::inline STAIRMELT_SET
