// The planner for any x86-64 machine.
#include "engine/block/block_planner.h"
#include "engine/block/planner.h"
#include "engine/block/words_sse2.h"

namespace stairmelt::inline STAIRMELT_SET {

void PlanVisits(int32_t width, int32_t height, FlagPlanes& planes, ActionSink& sink) {
    Planner<TwoWords>(width, height, planes, sink).Run();
}

}  // namespace stairmelt::inline STAIRMELT_SET
