#include "host/plugin_entry.h"
#include "tests/support/plugin_under_test.h"

namespace stairmelt {

PluginMainProc PluginUnderTest() { return PluginMain; }

}  // namespace stairmelt
