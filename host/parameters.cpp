#include "host/parameters.h"

#include "host/plugin_entry.h"
#include "host/usable_table.h"
#include "resources/plugin_ids.h"

namespace stairmelt {

namespace {

// The scripting terminology declares the same keys.
static_assert(kParameters[0].key == KEY_THRESHOLD && kParameters[1].key == KEY_SOFTNESS &&
              kParameters[2].key == KEY_BIAS && kParameters[3].key == KEY_WINDOW_X &&
              kParameters[4].key == KEY_WINDOW_Y);

Handle NewHandle(int32_t size) {
    const HandleProcs* const procs = UsableOrNull(gFilterRecord->handleProcs);
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
    // Start reads the user's last values from the persistent store.
    for (const Parameter& parameter : kParameters) gParameterBlock->*parameter.field = parameter.defaultValue;
    *gShowDialog = 1;
}

}  // namespace stairmelt
