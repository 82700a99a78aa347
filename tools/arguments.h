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

// Text about options that only runfilter.exe supports: on other systems the plug-in is linked in, without its dialogs.
#ifdef _WIN32
#define ON_WINDOWS(text) text
#else
#define ON_WINDOWS(text) ""
#endif

inline constexpr char kUsage[] =
    "usage: runfilter [options] [" ON_WINDOWS("--dialog | ") "--repeat N] IN OUT\n"
    "       runfilter [options] --out DIR " ON_WINDOWS("[--jobs N] ") "[--skip-existing] [--files LIST] [FILE|PATTERN...]\n"
    ON_WINDOWS("       runfilter [--plugin FILE] --about\n")
    "       runfilter --help | --version\n"
    "options: " ON_WINDOWS("[--plugin FILE] ") "[--settings FILE] [--threshold N] [--softness N] [--bias N]";

// The text of --help after the usage.
inline constexpr char kHelp[] =
    "Smooths the jagged edges in pictures with the filter plug-in stairmelt.\n"
    "\n"
    "Values; each defaults to that of the previous run:\n"
    "  --threshold N    color threshold, 0 to 255; 10 at first\n"
    "  --softness N     softness, 0 to 100; 70 at first\n"
    "  --bias N         bias, 0 to 100; 0 at first\n"
    "  Values outside these ranges are used, but not remembered.\n"
    "One picture:\n"
    ON_WINDOWS("  --dialog         asks for the values in the plug-in's dialog\n")
    "  --repeat N       times N runs, 1 to 10000, and prints the medians\n"
    "Many pictures:\n"
    "  --out DIR        folder for the results, created if it is missing\n"
    "  --files LIST     text file with one picture per line; - reads standard input\n"
    ON_WINDOWS("  --jobs N         processes, 1 to 64; default 1\n")
    "  --skip-existing  skips pictures whose result exists\n"
    "Other options:\n"
    ON_WINDOWS("  --plugin FILE    default: stairmelt.8bf beside this program\n")
    "  --settings FILE  where values are remembered; default: in the user's application data\n"
    ON_WINDOWS("  --about          shows the plug-in's about box\n")
    "  --help, -h       shows this text\n"
    "  --version        shows the version\n"
    "  --               ends the options, for names that begin with -\n"
    "An option's value can also follow an equals sign: --threshold=20\n"
    "\n"
    "Formats: reads PNG, TIFF and JPEG; writes PNG and TIFF.\n"
    "Exit status: 0 done, 1 failed (of many pictures: at least one), 2 wrong command line,\n"
    "             130 interrupted\n"
    "\n"
    "Examples:\n"
    "  runfilter --threshold 20 --softness 100 drawing.png smooth.png\n"
    "  runfilter --out smoothed " ON_WINDOWS("--jobs 4 ") "frames/*.png";

constexpr int32_t kMaxRuns = 10000;
constexpr int32_t kMaxJobs = 64;

// An invalid command line; the usage line follows the message.
struct UsageError : ToolError {
    using ToolError::ToolError;
};

struct Arguments {
    std::optional<std::filesystem::path> plugin;    // default: stairmelt.8bf beside the program
    std::optional<std::filesystem::path> settings;  // default: in the user's application data
    // Any 32-bit value is passed to the plug-in; omitted ones come from the settings.
    std::optional<int32_t> threshold, softness, bias;
    std::optional<int32_t> repeat;  // number of timed runs, 1..kMaxRuns; never with a dialog
    bool dialog = false;
    bool about = false;                  // only the about box, without files
    bool help = false, version = false;  // if set, everything else is ignored
    std::filesystem::path in, out;

    // A batch if an output directory is given; `in` and `out` are then empty.
    std::optional<std::filesystem::path> outDirectory;
    std::vector<std::string> files;            // names and patterns
    std::vector<std::filesystem::path> lists;  // text files with more of them, one per line; "-" is standard input
    int32_t jobs = 1;                          // processes, 1..kMaxJobs
    bool skipExisting = false;                 // skip pictures whose result exists
    bool isWorker = false;                     // one of a batch's processes; only the tool itself sets it

    FilterRequest Request() const { return {threshold, softness, bias, dialog, repeat}; }
};

// Parses the words after the program's name, in UTF-8. Options may appear anywhere before "--", and the last one of a
// kind wins. An option's value follows an equals sign, or is the next word, which then can't begin with "--". Throws
// UsageError.
Arguments ParseArguments(const std::vector<std::string>& words);

}  // namespace stairmelt
