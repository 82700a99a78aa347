// runfilter: loads a filter plug-in as the host does and filters an image file. What it can't do it says in one line on
// the error output; the output file is then as it was before.
#include <windows.h>
// After windows.h, whose types they use.
#include <objbase.h>
#include <shellapi.h>

#include <cstdio>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/arguments.h"
#include "tools/file_bytes.h"
#include "tools/filter_run.h"
#include "tools/image_file.h"
#include "tools/plugin_library.h"
#include "tools/settings_file.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

namespace fs = std::filesystem;

constexpr char kNoMemory[] = "there isn't enough memory for the picture";

enum ExitStatus { kDone = 0, kFailed = 1, kMisused = 2 };

std::vector<std::string> CommandLineWords() {
    int count = 0;
    wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> texts;
    for (int i = 1; i < count; ++i) texts.push_back(PathText(words[i]));
    LocalFree(words);
    return texts;
}

fs::path BesideProgram(const char* name) {
    std::wstring program(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
        if (length < program.size()) {
            program.resize(length);
            return fs::path(program).parent_path() / name;
        }
        program.resize(program.size() * 2);
    }
}

// Runs a step that has to do with one file, whose name goes before the message of a failure.
template <class Step>
auto With(const fs::path& file, Step step) {
    try {
        return step();
    } catch (const ToolError& error) {
        throw ToolError(PathText(file) + ": " + error.what());
    }
}

void PrintPicture(const fs::path& path, const Picture& picture) {
    const char* colors = picture.colors == 1 ? "gray" : picture.colors == 3 ? "RGB" : "CMYK";
    std::printf("%s: %d x %d pixels, %s%s, %d bits per channel\n", PathText(path).c_str(), picture.width,
                picture.height, colors, picture.hasAlpha ? " with transparency" : "", picture.depth);
    if (picture.morePages) std::printf("only the first of its pictures is read\n");
}

void PrintReport(const FilterReport& report) {
    if (report.threshold && report.softness && report.bias) {
        std::printf("threshold %d, softness %d, bias %d\n", *report.threshold, *report.softness, *report.bias);
    }
    std::printf("%zu pixels changed in %.3f seconds\n", report.changedPixels, report.seconds);
}

void PrintTimes(const FilterTimes& times, int32_t runs, const Picture& picture) {
    const double megapixels = picture.width * 1e-6 * picture.height;
    const auto print = [&](const char* what, double seconds) {
        std::printf("%s %.3f ms, %.3f ms per megapixel\n", what, seconds * 1e3, seconds * 1e3 / megapixels);
    };
    std::printf("medians of %d runs:\n", runs);
    print("plug-in", times.kernel);
    print("copy   ", times.copy);
    // The clock doesn't see the copy of a few pixels.
    if (times.copy > 0) std::printf("ratio   %.2f\n", times.kernel / times.copy);
}

void ShowAbout(const fs::path& pluginPath) {
    FakeHost host;
    With(pluginPath, [&] {
        const PluginLibrary plugin(pluginPath);
        host.RunFilter(plugin.entry(), RunKind::kAbout);
    });
}

void Run(const Arguments& arguments) {
    const fs::path pluginPath = arguments.plugin.value_or(BesideProgram("stairmelt.8bf"));
    if (arguments.about) return ShowAbout(pluginPath);
    const fs::path settingsPath = arguments.settings.value_or(BesideProgram("runfilter.settings"));
    const FileKind kind = With(arguments.out, [&] { return KindToWrite(arguments.out); });
    Picture picture = With(arguments.in, [&] { return ReadPicture(arguments.in); });
    With(arguments.out, [&] { RequireWritable(picture, kind); });
    PrintPicture(arguments.in, picture);
    const Settings before = With(settingsPath, [&] { return LoadSettings(settingsPath); });
    Settings settings = before;

    const FilterRequest request = {arguments.threshold, arguments.softness, arguments.bias, arguments.dialog,
                                   arguments.repeat};
    FakeHost host;
    const FilterReport report = With(pluginPath, [&] {
        const PluginLibrary plugin(pluginPath);
        return RunFilterOn(host, plugin.entry(), request, picture, settings);
    });
    if (!report.faults.empty()) {
        std::fprintf(stderr, "runfilter: the plug-in breaks the host's rules:\n%s", report.faults.c_str());
    }
    With(arguments.out, [&] { StoreFile(arguments.out, EncodePicture(picture, kind)); });
    PrintReport(report);
    if (report.times) PrintTimes(*report.times, *arguments.repeat, picture);
    if (settings == before) return;
    try {
        StoreSettings(settingsPath, settings);
    } catch (const ToolError& error) {
        // The picture is there; the next run only won't remember the values.
        std::fprintf(stderr, "runfilter: %s: %s\n", PathText(settingsPath).c_str(), error.what());
    }
}

ExitStatus RunCommandLine() {
    try {
        const Arguments arguments = ParseArguments(CommandLineWords());
        if (arguments.help) {
            std::puts(kUsage);
            return kDone;
        }
        Run(arguments);
        return kDone;
    } catch (const UsageError& error) {
        std::fprintf(stderr, "runfilter: %s\n%s\n", error.what(), kUsage);
        return kMisused;
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "runfilter: %s\n", kNoMemory);
    } catch (const std::length_error&) {
        std::fprintf(stderr, "runfilter: %s\n", kNoMemory);  // beyond what a vector could ever hold
    } catch (const std::exception& error) {
        std::fprintf(stderr, "runfilter: %s\n", error.what());
    }
    return kFailed;
}

}  // namespace
}  // namespace stairmelt

int main() {
    // A plug-in that can't be loaded is told in a line, not in a box.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    const UINT codePage = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    const int status = stairmelt::RunCommandLine();
    CoUninitialize();
    std::fflush(stdout);
    if (codePage != 0) SetConsoleOutputCP(codePage);
    return status;
}
