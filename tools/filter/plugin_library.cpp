#include "tools/filter/plugin_library.h"

#include <windows.h>

#include <string>
#include <system_error>

#include "tools/filter/property_list.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

// The first resource of type PIPL, whatever its number.
BOOL CALLBACK KeepFirst(HMODULE module, LPCWSTR type, LPWSTR name, LONG_PTR found) {
    *reinterpret_cast<HRSRC*>(found) = FindResourceW(module, name, type);
    return FALSE;
}

// Mapped without running any of its code.
std::string ReadEntryPointName(const std::filesystem::path& path) {
    const HMODULE file =
        LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
    if (file == nullptr) throw ToolError("isn't a library");
    std::string name;
    ToolError failure("has no PIPL resource, so it isn't a plug-in");
    HRSRC found = nullptr;
    EnumResourceNamesW(file, L"PIPL", KeepFirst, reinterpret_cast<LONG_PTR>(&found));
    if (found != nullptr) {
        const auto* data = static_cast<const uint8_t*>(LockResource(LoadResource(file, found)));
        try {
            name = EntryPointName({data, data == nullptr ? 0 : SizeofResource(file, found)});
        } catch (const ToolError& error) {
            failure = error;
        }
    }
    FreeLibrary(file);
    if (name.empty()) throw failure;
    return name;
}

}  // namespace

PluginLibrary::PluginLibrary(const std::filesystem::path& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) throw ToolError("there is no such file");
    // A bare name would be looked for in the system's directories.
    const std::filesystem::path full = std::filesystem::absolute(path);
    const std::string name = ReadEntryPointName(full);
    const HMODULE module = LoadLibraryW(full.c_str());
    if (module == nullptr) throw ToolError("can't be loaded (code " + std::to_string(GetLastError()) + ")");
    module_ = module;
    entry_ = reinterpret_cast<EntryPoint>(reinterpret_cast<void (*)()>(GetProcAddress(module, name.c_str())));
    if (entry_ == nullptr) {
        FreeLibrary(module);
        throw ToolError("doesn't export " + name + ", which its resources name");
    }
}

PluginLibrary::~PluginLibrary() { FreeLibrary(static_cast<HMODULE>(module_)); }

}  // namespace stairmelt
