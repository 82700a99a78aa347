// The plug-in that a test program drives: the code linked into it, or the built library, loaded as the host does. Tests
// of the host boundary use this entry alone, so that they apply to both.
#pragma once

#include "host/filter_api.h"

namespace stairmelt {

// Ends the program when the library can't be loaded.
PluginMainProc PluginUnderTest();

}  // namespace stairmelt
