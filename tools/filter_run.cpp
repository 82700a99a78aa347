#include "tools/filter_run.h"

#include <chrono>
#include <string>

#include "resources/plugin_ids.h"
#include "tools/host_samples.h"
#include "tools/result_words.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

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
    throw ToolError("the host has no mode for such a picture");
}

void OpenDocument(const Picture& picture, FakeDocument& document) {
    document.width = picture.width;
    document.height = picture.height;
    document.imageMode = ModeOf(picture);
    document.planes = static_cast<int16_t>(picture.SamplesPerPixel());
    document.depth = picture.depth;
    document.hasTransparency = picture.hasAlpha;
    document.source = SamplesForHost(picture);
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

}  // namespace

FilterReport RunFilterOn(FakeHost& host, PluginMainProc pluginMain, const FilterRequest& request, Picture& picture,
                         Settings& settings) {
    OpenDocument(picture, host.document);
    host.registry.persistent = settings;
    host.script.played = ValuesToPlay(request);
    // A filter that meets no script thinks that the user has chosen it from the menu, and shows its dialog.
    host.script.playsWithoutValues = !request.dialog;
    host.script.playInfo = request.dialog ? kPlugInDialogDisplay : kPlugInDialogDontDisplay;

    const auto start = std::chrono::steady_clock::now();
    const int16_t result = host.RunFilter(pluginMain, request.dialog ? RunKind::kFromMenu : RunKind::kRepeat);
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    if (result != kNoErr) throw ToolError(ResultWords(result));

    FilterReport report;
    report.seconds = time.count();
    report.threshold = Recorded(host.script, KEY_THRESHOLD);
    report.softness = Recorded(host.script, KEY_SOFTNESS);
    report.bias = Recorded(host.script, KEY_BIAS);
    report.faults = host.Faults();
    report.changedPixels = TakeHostSamples(host.document.source, host.document.result, picture);
    settings = host.registry.persistent;
    return report;
}

}  // namespace stairmelt
