// The planner for machines with AVX2.
#include "engine/block/block_planner.h"
#include "engine/block/planner.h"
#include "engine/block/words_avx2.h"

namespace stairmelt::inline STAIRMELT_SET {

void PlanVisits(int32_t width, int32_t height, FlagPlanes& planes, ActionSink& sink) {
    Planner<FourWords>(width, height, planes, sink).Run();
}

}  // namespace stairmelt::inline STAIRMELT_SET
