// Plans the scan: decides from the flags alone what is done to the picture, and in which order. The planner doesn't
// know the pixel format, so one copy for each instruction set is enough for all kernels.
#pragma once

#include "engine/block/action.h"
#include "engine/block/flag_planes.h"
#include "engine/image.h"

namespace stairmelt::inline STAIRMELT_SET {

// Passes all actions on a picture of the job's size to the sink, in the order of the scan. They arrive in batches, any
// number of rows after they were planned; that is safe, since flags are never built from changed rows. Meanwhile the
// pixels concerned are prefetched.
void PlanVisits(const KernelJob& job, int pixelBytes, FlagPlanes& planes, ActionSink& sink);

}  // namespace stairmelt::inline STAIRMELT_SET
