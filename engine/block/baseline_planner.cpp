// The planner for any x86-64 machine.
#include "engine/block/block_planner.h"
#include "engine/block/planner.h"
#include "engine/block/words_sse2.h"

namespace stairmelt::inline STAIRMELT_SET {

void PlanVisits(const KernelJob& job, int pixelBytes, FlagPlanes& planes, ActionSink& sink) {
    Planner<TwoWords>(job, pixelBytes, planes, sink).Run();
}

}  // namespace stairmelt::inline STAIRMELT_SET
