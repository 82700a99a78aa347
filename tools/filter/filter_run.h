// One run of a filter on a picture, in an imitation of the host.
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
    std::optional<int32_t> threshold{}, softness{}, bias{};  // go in as a script's values
    bool dialog = false;                                     // without it no dialog is shown, whatever else is given
    std::optional<int32_t> repeat{};  // where given, so many runs are timed, at least 1; the picture is the last one's
};

// Medians over the runs, in seconds.
struct FilterTimes {
    double kernel = 0;  // from the host's last delivery of pixels to the end of Start: the filter's own work
    double copy = 0;    // a memcpy of the picture, right before each run
};

struct FilterReport {
    std::optional<int32_t> threshold, softness, bias;  // as the filter recorded them
    size_t changedPixels = 0;
    double seconds = 0;  // of the last run, with the host's work; from the dialog's end where there is one
    std::optional<FilterTimes> times;  // where asked for
    std::vector<std::string> notes;    // what the user should know of a run that succeeded; empty as a rule
    std::string faults;                // lines about rules of the host that the filter broke; empty as a rule
};

// "threshold 20, softness 100, bias 0"; empty where the filter has recorded less.
std::string ValueText(const FilterReport& report);

// Describes values outside the range of the filter's dialog; usually empty.
std::string RangeText(const FilterReport& report);

// The user cancelled the dialog. The filter didn't fail, so messages don't mention its file.
struct CancelledError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Filters the picture in place, in a host of its own, which must outlive the filter's library: the library may hold the
// host's services until it is unloaded. The settings are what the host keeps for plug-ins; the filter reads and changes
// them. Throws ToolError if the filter refuses, and CancelledError; picture and settings are then unchanged.
FilterReport RunFilterOn(FakeHost& host, PluginMainProc pluginMain, const FilterRequest& request, Picture& picture,
                         Settings& settings);

}  // namespace stairmelt
