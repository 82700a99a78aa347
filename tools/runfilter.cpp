// runfilter: loads a filter plug-in the way the host does and filters one or more image files. A failure is reported in
// one line on the error output and leaves the output file unchanged.
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "resources/version_numbers.h"
#include "tools/arguments.h"
#include "tools/batch/batch.h"
#include "tools/batch/batch_worker.h"
#include "tools/file_bytes.h"
#include "tools/filter/picture_filter.h"
#include "tools/messages.h"
#include "tools/system.h"

namespace stairmelt {
namespace {

namespace fs = std::filesystem;

// A batch has failed if any of its pictures has.
enum ExitStatus { kDone = 0, kFailed = 1, kMisused = 2, kInterrupted = kInterruptedStatus };

std::string Printed(const char* format, auto... values) {
    char text[512];
    std::snprintf(text, sizeof(text), format, values...);
    return text;
}

void PrintPicture(const fs::path& path, const Picture& picture) {
    const char* colors = picture.colors == 1 ? "gray" : picture.colors == 3 ? "RGB" : "CMYK";
    PrintLine(PathText(path) + Printed(": %d x %d pixels, %s%s, %d bits per channel", picture.width, picture.height,
                                       colors, picture.hasAlpha ? " with transparency" : "", picture.depth));
}

void PrintReport(const FilterReport& report) {
    if (const std::string values = ValueText(report); !values.empty()) PrintLine(values);
    if (const std::string range = RangeText(report); !range.empty()) PrintLine("not remembered: " + range);
    PrintLine(Printed("%zu pixels changed in %.3f seconds", report.changedPixels, report.seconds));
}

void PrintTimes(const FilterTimes& times, int32_t runs, const Picture& picture) {
    const double megapixels = picture.width * 1e-6 * picture.height;
    const auto print = [&](const char* what, double seconds) {
        PrintLine(Printed("%s %.3f ms, %.3f ms per megapixel", what, seconds * 1e3, seconds * 1e3 / megapixels));
    };
    PrintLine("medians of " + std::to_string(runs) + " runs:");
    print("plug-in", times.kernel);
    print("copy   ", times.copy);
    // Copying a few pixels is too short for the clock.
    if (times.copy > 0) PrintLine(Printed("ratio   %.2f", times.kernel / times.copy));
}

void ShowAbout(const fs::path& pluginPath) {
    FakeHost host;
    With(pluginPath, [&] {
        const PluginLibrary plugin(pluginPath);
        host.RunFilter(plugin.entry(), RunKind::kAbout);
    });
}

void RunOnPicture(const Arguments& arguments) {
    PictureFilter filter(*arguments.plugin, *arguments.settings, arguments.Request());
    Picture picture;  // only its size, for the report
    const FilterReport report = filter.Filter(arguments.in, arguments.out, [&](const Picture& read) {
        PrintPicture(arguments.in, read);
        picture.width = read.width;
        picture.height = read.height;
    });
    if (!report.faults.empty()) {
        PrintError("the plug-in breaks the host's rules:\n" + report.faults);
    }
    for (const std::string& note : report.notes) PrintLine(note);
    PrintReport(report);
    if (report.times) PrintTimes(*report.times, *arguments.repeat, picture);
    filter.Remember();
}

ExitStatus Run(Arguments arguments) {
    RequireSupported(arguments);
    if (!arguments.plugin) arguments.plugin = ProgramPath().parent_path() / "stairmelt.8bf";
    if (!arguments.settings) arguments.settings = SettingsFolder() / "runfilter.settings";
    if (arguments.about) {
        ShowAbout(*arguments.plugin);
    } else if (arguments.isWorker) {
        PictureFilter filter(*arguments.plugin, *arguments.settings, arguments.Request());
        RunWorker(filter);
    } else if (arguments.outDirectory) {
        const BatchResult result = RunBatch(arguments);
        if (result.isInterrupted) return kInterrupted;
        if (result.counts.failed != 0) return kFailed;
    } else {
        RunOnPicture(arguments);
    }
    return kDone;
}

// Replaces the tool's name in its usage by that of the command that the user started.
std::string WithProgramName(std::string text) {
    constexpr std::string_view kName = "runfilter ";
    const std::string name = ProgramName() + ' ';
    for (size_t at = 0; (at = text.find(kName, at)) != std::string::npos; at += name.size())
        text.replace(at, kName.size(), name);
    return text;
}

ExitStatus RunCommandLine(const std::vector<std::string>& words) {
    try {
        const Arguments arguments = ParseArguments(words);
        if (arguments.help) {
            PrintLine(WithProgramName(kUsage) + "\n\n" + WithProgramName(kHelp));
        } else if (arguments.version) {
            PrintLine("stairmelt " VERSION_TEXT);
        } else {
            return Run(arguments);
        }
        return kDone;
    } catch (const UsageError& error) {
        PrintError(error.what() + ("\n" + WithProgramName(kUsage)));
        return kMisused;
    } catch (...) {
        PrintError(DescribeException());
        return kFailed;
    }
}

}  // namespace
}  // namespace stairmelt

int main(int count, char** words) {
    stairmelt::PrepareSystem();
    for (FILE* const stream : {stdout, stderr}) std::setvbuf(stream, nullptr, _IOFBF, 1 << 12);  // whole lines
    return stairmelt::RunCommandLine(stairmelt::CommandLineWords(count, words));
}
