// What the tests of the host boundary share: a host with a small document, run through the plug-in under test.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "hostkit/probe/probed_host.h"
#include "resources/plugin_ids.h"
#include "tests/support/plugin_under_test.h"
#include "tests/support/scenes.h"

namespace stairmelt {

constexpr DescriptorKeyID kThsh = KEY_THRESHOLD, kSftn = KEY_SOFTNESS, kBias = KEY_BIAS, kPdpx = KEY_WINDOW_X,
                          kPdpy = KEY_WINDOW_Y;

using Lines = std::vector<std::string>;

// The document of a format: modes that leave the channel count to the table, or multichannel for two channels.
inline FakeDocument DocumentOf(const KernelCase& format, int width, int height, uint64_t seed) {
    FakeDocument document;
    document.width = width;
    document.height = height;
    constexpr int16_t kModes[] = {kModeGrayScale, kModeMultichannel, kModeRGBColor, kModeCMYKColor};
    document.imageMode = kModes[format.channels - 1];
    document.planes = static_cast<int16_t>(format.channels + format.extra);
    document.depth = format.depth;
    document.hasTransparency = format.extra != 0;
    SeededRandom random(seed);
    document.source = Patchwork(format, width, height, random);
    return document;
}

// A run whose calls into the host are made to fail, see PluginRun::FailEachCall.
struct FailingRun {
    const char* name;
    RunKind kind = RunKind::kFromMenu;
    bool isAccepted = true;  // the dialog, if the run has one
    bool isFirst = false;    // the plug-in has no handles yet
    bool isBrief = false;    // only one call fails at a time, never all from one on
};
using Drive = std::function<int16_t(RunKind kind, bool isAccepted)>;

class PluginRun : public testing::Test {
protected:
    PluginRun() {
        host.document = DocumentOf(kAllKernels[4], 20, 14, 1);  // 8-bit RGB
        host.BeginRun();
    }

    // Nothing may be written out of place. When the host has disposed of what it keeps between runs, and of the
    // descriptor of an unfinished run, nothing may remain. Locks never outlast a selector.
    void TearDown() override {
        EXPECT_EQ(host.handles.blocks.CountLocked(), 0);
        for (const Handle kept : {Handle{host.record.parameters}, reinterpret_cast<Handle>(host.data),
                                  Handle{host.script.parameters.descriptor}})
            host.handles.procs.disposeProc(kept);
        EXPECT_EQ(host.StillHeld(), "");
        EXPECT_EQ(host.Faults(), "");
    }

    int16_t Call(int16_t selector) { return host.Call(PluginUnderTest(), selector); }
    int16_t Run(RunKind kind) { return host.RunFilter(PluginUnderTest(), kind); }

    // A silent run from the menu with the given script values.
    int16_t RunScript(const std::vector<ScriptValue>& values) {
        host.script.played = values;
        host.script.playInfo = kPlugInDialogDontDisplay;
        return Run(RunKind::kFromMenu);
    }

    // Repeats the run for each of its calls that can fail, with that call failing, then with all calls from that one
    // on. Checks the result, the pixels and what is left behind, and that an accepted run from the menu then works as
    // before.
    void FailEachCall(const FailingRun& failing, const Drive& drive);

    // What the plug-in holds between runs besides its two handles and the host's UI hooks, as lines.
    std::string Strays() const;

    // Brings the host into the state before the first run. Records of disposed handles are dropped.
    void ForgetHandles() {
        for (const Handle handle : {Handle{host.record.parameters}, reinterpret_cast<Handle>(host.data)})
            host.handles.procs.disposeProc(handle);
        host.record.parameters = nullptr;
        host.data = 0;
        if (host.handles.blocks.CountLive() == 0) host.handles.blocks.made.clear();
        if (host.registry.CountLiveDescriptors() == 0) host.registry.descriptors.clear();
    }

    // Log lines that begin with one of the words.
    Lines Logged(const std::vector<std::string>& words) const {
        Lines lines;
        std::copy_if(host.log.begin(), host.log.end(), std::back_inserter(lines), [&](const std::string& line) {
            return std::any_of(words.begin(), words.end(), [&](auto& word) { return line.starts_with(word); });
        });
        return lines;
    }

    // The document's pixels, smoothed with these values.
    std::vector<uint8_t> Smoothed(const KernelCase& format, int32_t threshold, int32_t softness, int32_t bias) const {
        std::vector<uint8_t> source = host.document.source, result = host.document.source;
        const int32_t width = host.document.width, height = host.document.height;
        const int32_t stride = width * format.PixelBytes();
        const ImageView from = {width, height, source.data(), stride}, to = {width, height, result.data(), stride};
        EXPECT_EQ(format.kernel({threshold, softness, bias, nullptr, format.Key(), &from, &to, 0, 0, 0, 0}), 0);
        return result;
    }
    std::vector<uint8_t> Smoothed(int32_t threshold, int32_t softness, int32_t bias) const {
        return Smoothed(kAllKernels[4], threshold, softness, bias);
    }

    ProbedHost host;
};

}  // namespace stairmelt
