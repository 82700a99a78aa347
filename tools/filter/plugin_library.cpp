#include "tools/filter/plugin_library.h"

#include <windows.h>

#include <string>
#include <system_error>

#include "tools/tool_error.h"

namespace stairmelt {
PluginLibrary::PluginLibrary(const std::filesystem::path& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) throw ToolError("there is no such file");
    // A bare name would be searched for in the system's directories.
    const HMODULE module = LoadLibraryW(std::filesystem::absolute(path).c_str());
    if (module == nullptr)
        throw ToolError("isn't a library that can be loaded (code " + std::to_string(GetLastError()) + ")");
    module_ = module;
    entry_ = reinterpret_cast<EntryPoint>(reinterpret_cast<void (*)()>(GetProcAddress(module, "PluginMain")));
    if (entry_ == nullptr) {
        FreeLibrary(module);
        throw ToolError("doesn't export PluginMain, so it isn't this kind of plug-in");
    }
}

PluginLibrary::~PluginLibrary() { FreeLibrary(static_cast<HMODULE>(module_)); }

}  // namespace stairmelt
