#include "tests/support/loaded_plugin.h"

#include <cstdio>
#include <cstdlib>

#include "tests/support/plugin_under_test.h"

namespace stairmelt {

HMODULE LoadedPlugin() {
    static const HMODULE library = LoadLibraryA(STAIRMELT_PLUGIN_FILE);
    if (library == nullptr) {
        std::fprintf(stderr, "can't load %s: error %lu\n", STAIRMELT_PLUGIN_FILE, GetLastError());
        std::exit(1);
    }
    return library;
}

PluginMainProc PluginUnderTest() {
    static const PluginMainProc entry =
        reinterpret_cast<PluginMainProc>(reinterpret_cast<void*>(GetProcAddress(LoadedPlugin(), "PluginMain")));
    if (entry == nullptr) {
        std::fputs("the library has no entry point\n", stderr);
        std::exit(1);
    }
    return entry;
}

}  // namespace stairmelt
