#include "tools/filter/plugin_library.h"

#ifdef _WIN32
#include <windows.h>
#endif

#include <string>
#include <system_error>

#include "host/plugin_entry.h"
#include "tools/tool_error.h"
#include "ui/about_box.h"
#include "ui/parameter_dialog.h"

namespace stairmelt {

#ifdef _WIN32

PluginLibrary::PluginLibrary(const std::filesystem::path& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) throw ToolError("there is no such file");
    // Windows would search its own directories for a bare name.
    const HMODULE module = LoadLibraryW(std::filesystem::absolute(path).c_str());
    if (module == nullptr)
        throw ToolError("can't be loaded as a library (code " + std::to_string(GetLastError()) + ")");
    module_ = module;
    entry_ = reinterpret_cast<EntryPoint>(reinterpret_cast<void (*)()>(GetProcAddress(module, "PluginMain")));
    if (entry_ == nullptr) {
        FreeLibrary(module);
        throw ToolError("doesn't export PluginMain, so it isn't this kind of plug-in");
    }
}

PluginLibrary::~PluginLibrary() { FreeLibrary(static_cast<HMODULE>(module_)); }

#else  // linked in, without its dialogs

PluginLibrary::PluginLibrary(const std::filesystem::path&) : entry_(PluginMain) {}
PluginLibrary::~PluginLibrary() = default;

void ShowAboutBox(intptr_t) {}
bool ShowParameterDialog() { return false; }

#endif

}  // namespace stairmelt
