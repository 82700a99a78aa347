// One run of a filter on a picture, in the fake host.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "hostkit/fake_host.h"
#include "tools/filter/settings_file.h"
#include "tools/pictures/picture.h"

namespace stairmelt {

struct FilterRequest {
    std::optional<int32_t> threshold{}, softness{}, bias{};  // passed to the filter like a script's values
    bool dialog = false;                                     // whether the filter's dialog opens
    std::optional<int32_t> repeat{};  // number of timed runs, at least 1; the result is that of the last one
};

// Medians over the runs, in seconds.
struct FilterTimes {
    double kernel = 0;  // from the host's last delivery of pixels to the end of Start: the filter's own work
    double copy = 0;    // a memcpy of the picture, just before each run
};

struct FilterReport {
    std::optional<int32_t> threshold, softness, bias;  // as the filter recorded them
    size_t changedPixels = 0;
    double seconds = 0;  // of the last run, including the host's work, but not the time the dialog was open
    std::optional<FilterTimes> times;  // if runs were timed
    std::vector<std::string> notes;    // what the user should know about a successful run; usually empty
    std::string faults;                // lines about the filter's violations of the host's rules; usually empty
};

// "threshold 20, softness 100, bias 0", or empty if the filter hasn't recorded all three.
std::string ValueText(const FilterReport& report);

// Describes values outside the range of the filter's dialog; usually empty.
std::string RangeText(const FilterReport& report);

// The user cancelled the dialog. The filter didn't fail, so messages don't mention its file.
struct CancelledError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Filters the picture in place. The host must outlive the filter's library, which may hold the host's services until it
// is unloaded. The settings are the values that the host stores for plug-ins; the filter reads and changes them. Throws
// ToolError if the filter fails, and CancelledError; picture and settings are then unchanged.
FilterReport RunFilterOn(FakeHost& host, PluginMainProc pluginMain, const FilterRequest& request, Picture& picture,
                         Settings& settings);

}  // namespace stairmelt
