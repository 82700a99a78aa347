// The command line.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tools/tool_error.h"

namespace stairmelt {

inline constexpr char kUsage[] =
    "usage: runfilter [--plugin FILE] [--threshold N] [--softness N] [--bias N] [--dialog | --repeat N]\n"
    "                 [--settings FILE] IN OUT\n"
    "       runfilter [--plugin FILE] --about";

constexpr int32_t kMostRuns = 10000;

// A command line that isn't understood; the usage line follows it.
struct UsageError : ToolError {
    using ToolError::ToolError;
};

struct Arguments {
    std::optional<std::filesystem::path> plugin;    // stairmelt.8bf beside the program when not given
    std::optional<std::filesystem::path> settings;  // runfilter.settings beside the program when not given
    // Any 32-bit value goes through to the plug-in; what isn't given comes from the settings.
    std::optional<int32_t> threshold, softness, bias;
    std::optional<int32_t> repeat;  // runs to be timed, 1..kMostRuns; never with a dialog
    bool dialog = false;
    bool about = false;  // only the about box, without files
    bool help = false;   // nothing else counts then
    std::filesystem::path in, out;
};

// Takes the words behind the program's name, in UTF-8. Options stand anywhere, the last of several equal ones counts,
// and "--" ends them. Throws UsageError.
Arguments ParseArguments(const std::vector<std::string>& words);

}  // namespace stairmelt
