// Loads a plug-in once and filters picture files with it, one after the other. For one thread, like the host.
#pragma once

#include <filesystem>
#include <functional>

#include "hostkit/fake_host.h"
#include "tools/filter/filter_run.h"
#include "tools/filter/plugin_library.h"
#include "tools/filter/settings_file.h"
#include "tools/pictures/picture.h"

namespace stairmelt {

class PictureFilter {
public:
    // Loads plug-in and settings. Throws ToolError.
    PictureFilter(const std::filesystem::path& plugin, const std::filesystem::path& settings,
                  const FilterRequest& request);

    // Reads the picture `in`, calls `onRead`, filters the picture and writes the result to `out`.
    // Throws ToolError or std::bad_alloc; `out` is then unchanged.
    FilterReport Filter(const std::filesystem::path& in, const std::filesystem::path& out,
                        const std::function<void(const Picture&)>& onRead = {});

    // Stores the settings of the last run if they have changed and are within the dialog's range. A failure is only
    // reported on the error output: the pictures are complete, and the next run just won't remember the values.
    void Remember();

private:
    std::filesystem::path pluginPath_, settingsPath_;
    FilterRequest request_;
    FakeHost host_;  // outlives the library, which may hold its services
    PluginLibrary plugin_;
    Settings loaded_, settings_;
    bool isBeyondDialog_ = false;  // whether the last run's values are outside the dialog's range
};

}  // namespace stairmelt
