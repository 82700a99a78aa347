// The host's user interface hooks, for the cursors over the preview pane.
#pragma once

#include "host/filter_api.h"

namespace stairmelt {

// Thrown if the host lacks the suite of user interface hooks.
struct HostSuiteError {
    int32_t code;  // the host's, or kSPBadParameter without a basic suite
};

// The host's hooks, acquired once and kept until the process ends or the library is unloaded. Throws HostSuiteError.
const PSUIHooksSuite1& AcquireUIHooks();

// Set the pointer's shape until its next move: the host's cursor, or the system's if the host lacks the suite. They do
// not throw, since the system calls the window procedures above them.
void SetHandCursor();
void SetArrowCursor();

}  // namespace stairmelt
