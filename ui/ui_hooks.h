// The cursors over the preview pane, which are the host's own.
#pragma once

#include "host/filter_api.h"

namespace stairmelt {

// Raised where the host lacks its suite of user interface hooks.
struct HostSuiteError {
    int32_t code;  // the host's, or kSPBadParameter without a basic suite
};

// The host's hooks, acquired once and kept until the process ends or the library is unloaded. Raises HostSuiteError.
const PSUIHooksSuite1& AcquireUIHooks();

// Set the pointer's shape until it next moves: the host's, or the system's where the host lacks the suite. They raise
// nothing, since they are called beneath the system's frames.
void SetHandCursor();
void SetArrowCursor();

}  // namespace stairmelt
