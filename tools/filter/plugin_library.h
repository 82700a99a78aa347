// A loaded plug-in. On systems other than Windows, the code of stairmelt is linked in instead.
#pragma once

#include <cstdint>
#include <filesystem>

namespace stairmelt {

class PluginLibrary {
public:
    using EntryPoint = void (*)(int16_t selector, void* record, intptr_t* data, int16_t* result);

    // Throws ToolError if the file isn't a plug-in or can't be loaded.
    explicit PluginLibrary(const std::filesystem::path& path);
    ~PluginLibrary();
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    EntryPoint entry() const { return entry_; }

private:
    [[maybe_unused]] void* module_ = nullptr;
    EntryPoint entry_ = nullptr;
};

}  // namespace stairmelt
