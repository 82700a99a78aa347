#include "tools/filter/filter_run.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include "resources/plugin_ids.h"
#include "tools/filter/describe_result.h"
#include "tools/filter/host_samples.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

// For an even number of values, the upper of the two in the middle.
double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

int16_t ModeOf(const Picture& picture) {
    struct Row {
        int colors, depth;
        int16_t mode;
    };
    constexpr Row kRows[] = {
        {1, 8, kModeGrayScale}, {1, 16, kModeGray16}, {1, 32, kModeGray32},   {3, 8, kModeRGBColor},
        {3, 16, kModeRGB48},    {3, 32, kModeRGB96},  {4, 8, kModeCMYKColor}, {4, 16, kModeCMYK64},
    };
    for (const Row& row : kRows) {
        if (row.colors == picture.colors && row.depth == picture.depth) return row.mode;
    }
    throw ToolError("the host has no image mode for this picture");
}

void OpenDocument(Picture& picture, FakeDocument& document) {
    document.imageMode = ModeOf(picture);
    document.width = picture.width;
    document.height = picture.height;
    document.planes = static_cast<int16_t>(picture.SamplesPerPixel());
    document.depth = picture.depth;
    document.hasTransparency = picture.hasAlpha;
    document.source = GiveSamples(picture);
}

std::vector<ScriptValue> ValuesToPlay(const FilterRequest& request) {
    std::vector<ScriptValue> values;
    if (request.threshold) values.push_back({KEY_THRESHOLD, *request.threshold});
    if (request.softness) values.push_back({KEY_SOFTNESS, *request.softness});
    if (request.bias) values.push_back({KEY_BIAS, *request.bias});
    return values;
}

std::optional<int32_t> Recorded(const FakeScript& script, DescriptorKeyID key) {
    for (const ScriptValue& value : script.recorded) {
        if (value.key == key) return value.value;
    }
    return std::nullopt;
}

// Runs without the dialog and returns the seconds. Throws ToolError.
double RunSilently(FakeHost& host, PluginMainProc pluginMain) {
    const Clock::time_point start = Clock::now();
    const int16_t result = host.RunFilter(pluginMain, RunKind::kRepeat);
    if (result != kNoErr) throw ToolError(DescribeResult(result));
    return SecondsSince(start);
}

// Runs with the dialog. Returns the seconds after it: the clock restarts at each advance, the last of which follows it.
double RunWithDialog(FakeHost& host, PluginMainProc pluginMain) {
    Clock::time_point start = Clock::now();
    host.onAdvance = [&] {
        start = Clock::now();
        return host.pixels.Deliver();
    };
    const int16_t result = host.RunFilter(pluginMain, RunKind::kFromMenu);
    host.onAdvance = nullptr;
    if (result == kUserCanceledErr) throw CancelledError("cancelled");
    if (result != kNoErr) throw ToolError(DescribeResult(result));
    return SecondsSince(start);
}

// Timed runs. The host's own work, mainly the delivery of pixels, doesn't count: the clock restarts after it.
class TimedRuns {
public:
    explicit TimedRuns(FakeHost& host) : host_(host), copy_(host.document.source) {
        host_.onAdvance = [this] {
            const OSErr result = host_.pixels.Deliver();
            start_ = Clock::now();
            return result;
        };
        host_.onReturn = [this](int16_t selector) {
            if (selector == kFilterSelectorStart) kernels_.push_back(SecondsSince(start_));
        };
    }
    ~TimedRuns() {
        host_.onAdvance = nullptr;
        host_.onReturn = nullptr;
    }
    TimedRuns(const TimedRuns&) = delete;
    TimedRuns& operator=(const TimedRuns&) = delete;

    double Run(PluginMainProc pluginMain) {
        const Bytes& source = host_.document.source;
        start_ = Clock::now();
        std::memcpy(copy_.data(), source.data(), source.size());
        copies_.push_back(SecondsSince(start_));
        start_ = Clock::now();  // for a filter that requests no pixels
        return RunSilently(host_, pluginMain);
    }

    FilterTimes Medians() const { return {Median(kernels_), Median(copies_)}; }

private:
    FakeHost& host_;
    Bytes copy_;
    Clock::time_point start_;
    std::vector<double> kernels_, copies_;
};

}  // namespace

std::string ValueText(const FilterReport& report) {
    if (!report.threshold || !report.softness || !report.bias) return {};
    return "threshold " + std::to_string(*report.threshold) + ", softness " + std::to_string(*report.softness) +
           ", bias " + std::to_string(*report.bias);
}

std::string RangeText(const FilterReport& report) {
    struct Row {
        const char* name;
        std::optional<int32_t> value;
        int32_t max;
    };
    std::string text;
    for (const Row& row : {Row{"threshold", report.threshold, 255}, Row{"softness", report.softness, 100},
                           Row{"bias", report.bias, 100}}) {
        if (!row.value || (*row.value >= 0 && *row.value <= row.max)) continue;
        if (!text.empty()) text += ", ";
        text += std::string(row.name) + " " + std::to_string(*row.value) + " (the dialog's range is 0 to " +
                std::to_string(row.max) + ")";
    }
    return text;
}

FilterReport RunFilterOn(FakeHost& host, PluginMainProc pluginMain, const FilterRequest& request, Picture& picture,
                         Settings& settings) {
    OpenDocument(picture, host.document);
    host.registry.persistent = settings;
    host.script.played = ValuesToPlay(request);
    // Without a script, the filter would open its dialog, as if the user had chosen it from the menu.
    host.script.playsWithoutValues = !request.dialog;
    host.script.playInfo = request.dialog ? kPlugInDialogDisplay : kPlugInDialogDontDisplay;

    FakeDocument& document = host.document;
    FilterReport report;
    try {
        if (request.repeat) {
            TimedRuns runs(host);
            for (int32_t i = 0; i < *request.repeat; ++i) report.seconds = runs.Run(pluginMain);
            report.times = runs.Medians();
        } else {
            report.seconds = request.dialog ? RunWithDialog(host, pluginMain) : RunSilently(host, pluginMain);
        }
    } catch (...) {
        TakeSamples(document.source, document.source, picture);
        throw;
    }

    report.threshold = Recorded(host.script, KEY_THRESHOLD);
    report.softness = Recorded(host.script, KEY_SOFTNESS);
    report.bias = Recorded(host.script, KEY_BIAS);
    report.faults = host.Faults();
    report.changedPixels = TakeSamples(document.source, document.result, picture);
    // Free the memory: the next picture and this one's file may be large.
    document.source = Bytes();
    document.result = Bytes();
    settings = host.registry.persistent;
    return report;
}

}  // namespace stairmelt
