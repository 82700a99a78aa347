// The command line.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tools/filter/filter_run.h"
#include "tools/tool_error.h"

namespace stairmelt {

inline constexpr char kUsage[] =
    "usage: runfilter [options] [--dialog | --repeat N] IN OUT\n"
    "       runfilter [options] --out DIR [--jobs N] [--skip-existing] [--files LIST] [FILE|PATTERN...]\n"
    "       runfilter [--plugin FILE] --about\n"
    "options: [--plugin FILE] [--settings FILE] [--threshold N] [--softness N] [--bias N]";

constexpr int32_t kMostRuns = 10000;
constexpr int32_t kMostJobs = 64;

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

    // Many pictures at once, where a directory for the results is given. `in` and `out` are empty then.
    std::optional<std::filesystem::path> outDirectory;
    std::vector<std::string> files;            // names and patterns
    std::vector<std::filesystem::path> lists;  // text files with more of them, one in a line; "-" is the input
    int32_t jobs = 1;                          // processes, 1..kMostJobs
    bool skipExisting = false;                 // pictures whose result is there are left out
    bool isWorker = false;                     // one of a batch's processes; only the tool asks for it

    FilterRequest Request() const { return {threshold, softness, bias, dialog, repeat}; }
};

// Takes the words behind the program's name, in UTF-8. Options stand anywhere, the last of several equal ones counts,
// and "--" ends them. Throws UsageError.
Arguments ParseArguments(const std::vector<std::string>& words);

}  // namespace stairmelt
