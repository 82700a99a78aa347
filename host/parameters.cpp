#include "host/parameters.h"

#include "host/complete_table.h"
#include "host/plugin_entry.h"
#include "resources/plugin_ids.h"

namespace stairmelt {

namespace {

// The terminology that scripts use declares the same keys.
static_assert(kParameters[0].key == KEY_THRESHOLD && kParameters[1].key == KEY_SOFTNESS &&
              kParameters[2].key == KEY_BIAS && kParameters[3].key == KEY_WINDOW_X &&
              kParameters[4].key == KEY_WINDOW_Y);

Handle NewHandle(int32_t size) {
    const HandleProcs* const procs = Complete(gFilterRecord->handleProcs);
    return procs != nullptr ? procs->newProc(size) : nullptr;
}

}  // namespace

void DoParameters() {
    if (gFilterRecord->parameters == nullptr) {
        gFilterRecord->parameters = NewHandle(sizeof(ParameterBlock));
        if (gFilterRecord->parameters == nullptr) {
            *gResult = kMemFullErr;
            return;
        }
    }
    if (*gDataHandle == 0) {
        const Handle flagByte = NewHandle(1);
        if (flagByte == nullptr) {
            *gResult = kMemFullErr;
            return;
        }
        *gDataHandle = reinterpret_cast<intptr_t>(flagByte);
    }
    if (!LockHandles()) return;
    // What the user last chose comes back from the persistent store at Start.
    for (const Parameter& parameter : kParameters) gParameterBlock->*parameter.field = parameter.defaultValue;
    *gShowDialog = 1;
}

}  // namespace stairmelt
