// Plans the scan: writes down, from the flags alone, what is to be done to the picture and in which order. It knows
// nothing of the pixel format, so that one copy for each instruction set serves all kernels.
#pragma once

#include <cstdint>

#include "engine/block/action.h"
#include "engine/block/flag_planes.h"
#include "engine/image.h"

namespace stairmelt::inline STAIRMELT_SET {

// Hands all actions on a picture of the job's size to the sink, in the order of the scan. The sink gets them in batches,
// any number of rows after they were planned, which is safe: flags are never built from changed rows. The pixels that
// the actions concern are prefetched meanwhile.
void PlanVisits(const KernelJob& job, int pixelBytes, FlagPlanes& planes, ActionSink& sink);

}  // namespace stairmelt::inline STAIRMELT_SET
