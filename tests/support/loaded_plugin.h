// The built library, for tests that look at more than its entry point.
#pragma once

#include <windows.h>

namespace stairmelt {

// Loaded once for the life of the program. Ends the program when it can't be loaded.
HMODULE LoadedPlugin();

}  // namespace stairmelt
