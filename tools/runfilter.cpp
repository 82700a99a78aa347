// runfilter: loads a filter plug-in as the host does and filters an image file, or many. What it can't do it says in
// one line on the error output; the output file is then as it was before.
#include <windows.h>
// After windows.h, whose types they use.
#include <objbase.h>
#include <shellapi.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tools/arguments.h"
#include "tools/batch/batch.h"
#include "tools/batch/batch_worker.h"
#include "tools/failure_words.h"
#include "tools/file_bytes.h"
#include "tools/filter/picture_filter.h"
#include "tools/interrupt.h"
#include "tools/program_path.h"

namespace stairmelt {
namespace {

namespace fs = std::filesystem;

// For a batch, failed means that one of its pictures did.
enum ExitStatus { kDone = 0, kFailed = 1, kMisused = 2, kInterrupted = kInterruptedStatus };

std::vector<std::string> CommandLineWords() {
    int count = 0;
    wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> texts;
    for (int i = 1; i < count; ++i) texts.push_back(PathText(words[i]));
    LocalFree(words);
    return texts;
}

fs::path BesideProgram(const char* name) { return ProgramPath().parent_path() / name; }

void PrintPicture(const fs::path& path, const Picture& picture) {
    const char* colors = picture.colors == 1 ? "gray" : picture.colors == 3 ? "RGB" : "CMYK";
    std::printf("%s: %d x %d pixels, %s%s, %d bits per channel\n", PathText(path).c_str(), picture.width,
                picture.height, colors, picture.hasAlpha ? " with transparency" : "", picture.depth);
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

void RunOnPicture(const Arguments& arguments) {
    PictureFilter filter(*arguments.plugin, *arguments.settings, arguments.Request());
    Picture picture;  // what is told of it; the samples go another way
    const FilterReport report = filter.Filter(arguments.in, arguments.out, [&](const Picture& read) {
        PrintPicture(arguments.in, read);
        picture.width = read.width;
        picture.height = read.height;
    });
    if (!report.faults.empty()) {
        std::fprintf(stderr, "runfilter: the plug-in breaks the host's rules:\n%s", report.faults.c_str());
    }
    for (const std::string& note : report.notes) std::printf("%s\n", note.c_str());
    PrintReport(report);
    if (report.times) PrintTimes(*report.times, *arguments.repeat, picture);
    filter.Remember();
}

ExitStatus Run(Arguments arguments) {
    if (!arguments.plugin) arguments.plugin = BesideProgram("stairmelt.8bf");
    if (!arguments.settings) arguments.settings = BesideProgram("runfilter.settings");
    if (arguments.about) {
        ShowAbout(*arguments.plugin);
    } else if (arguments.isWorker) {
        IgnoreInterrupts();  // they concern the process that started this one
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

ExitStatus RunCommandLine() {
    try {
        const Arguments arguments = ParseArguments(CommandLineWords());
        if (!arguments.help) return Run(arguments);
        std::puts(kUsage);
        return kDone;
    } catch (const UsageError& error) {
        std::fprintf(stderr, "runfilter: %s\n%s\n", error.what(), kUsage);
        return kMisused;
    } catch (...) {
        std::fprintf(stderr, "runfilter: %s\n", FailureWords().c_str());
        return kFailed;
    }
}

}  // namespace
}  // namespace stairmelt

int main() {
    stairmelt::EndOnInterrupt();
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
