#include <windows.h>

#include <cstdio>
#include <cstdlib>

#include "tests/support/plugin_under_test.h"

namespace stairmelt {

PluginMainProc PluginUnderTest() {
    static const HMODULE library = LoadLibraryA(STAIRMELT_PLUGIN_FILE);
    void* const entry = library != nullptr ? reinterpret_cast<void*>(GetProcAddress(library, "PluginMain")) : nullptr;
    if (entry == nullptr) {
        std::fprintf(stderr, "cannot load %s: error %lu\n", STAIRMELT_PLUGIN_FILE, GetLastError());
        std::exit(1);
    }
    return reinterpret_cast<PluginMainProc>(entry);
}

}  // namespace stairmelt
