// The planner for machines with AVX2.
#include "engine/block/block_planner.h"
#include "engine/block/planner.h"
#include "engine/block/words_avx2.h"

namespace stairmelt::inline STAIRMELT_SET {

void PlanVisits(const KernelJob& job, int pixelBytes, FlagPlanes& planes, ActionSink& sink) {
    Planner<FourWords>(job, pixelBytes, planes, sink).Run();
}

}  // namespace stairmelt::inline STAIRMELT_SET
