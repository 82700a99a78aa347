#include "tools/filter_run.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "resources/plugin_ids.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

// What the filter below has seen, and what it is to answer.
struct Seen {
    std::vector<int16_t> selectors;
    bool hasScript = false;
    int16_t playInfo = -1;
    int32_t threshold = 0;
    int16_t imageMode = -1, planes = 0;
    int16_t answer = 0;
} gSeen;

void ReadScript(FilterRecord& record) {
    PIDescriptorParameters& script = *record.descriptorParameters;
    gSeen.hasScript = script.descriptor != nullptr;
    gSeen.playInfo = script.playInfo;
    if (!gSeen.hasScript) return;
    DescriptorKeyID keys[] = {KEY_THRESHOLD, 0};
    const PIReadDescriptor token = script.readDescriptorProcs->openReadDescriptorProc(script.descriptor, keys);
    DescriptorKeyID key;
    DescriptorTypeID type;
    int32_t flags;
    while (script.readDescriptorProcs->getKeyProc(token, &key, &type, &flags)) {
        script.readDescriptorProcs->getIntegerProc(token, &gSeen.threshold);
    }
    script.readDescriptorProcs->closeReadDescriptorProc(token);
    record.handleProcs->disposeProc(script.descriptor);
    script.descriptor = nullptr;
}

// Sets the second sample of the first pixel to the host's half.
void PluginMain(int16_t selector, void* data, intptr_t*, int16_t* result) {
    FilterRecord& record = *static_cast<FilterRecord*>(data);
    gSeen.selectors.push_back(selector);
    if (selector != kFilterSelectorStart) return;
    ReadScript(record);
    gSeen.imageMode = record.imageMode;
    gSeen.planes = record.planes;
    *result = gSeen.answer;
    if (gSeen.answer != 0) return;
    const Rect all = {0, 0, record.imageSize.v, record.imageSize.h};
    record.inRect = record.outRect = all;
    record.inHiPlane = record.outHiPlane = static_cast<int16_t>(record.planes - 1);
    const AdvanceStateProc advance = record.advanceState;
    advance();
    const uint16_t half = 16384;
    std::memcpy(static_cast<uint8_t*>(record.outData) + 2, &half, 2);
    record.inRect = record.outRect = {};
}

Picture SixteenBitPicture() {
    Picture picture;
    picture.width = 2;
    picture.height = 1;
    picture.colors = 1;
    picture.hasAlpha = true;
    picture.depth = 16;
    for (uint32_t sample : {1U, 2U, 3U, 65533U}) AppendNumber(picture.samples, static_cast<uint16_t>(sample), false);
    return picture;
}

TEST(FilterRun, SilentRunsAlwaysPlayAScript) {
    FakeHost host;
    gSeen = {};
    Picture picture = SixteenBitPicture();
    Settings settings;
    const FilterReport report = RunFilterOn(host, PluginMain, {}, picture, settings);
    EXPECT_EQ(report.faults, "");
    EXPECT_EQ(gSeen.selectors,
              (std::vector<int16_t>{kFilterSelectorPrepare, kFilterSelectorStart, kFilterSelectorFinish}));
    EXPECT_TRUE(gSeen.hasScript);
    EXPECT_EQ(gSeen.playInfo, kPlugInDialogDontDisplay);
    EXPECT_EQ(gSeen.imageMode, kModeGray16);
    EXPECT_EQ(gSeen.planes, 2);
    EXPECT_FALSE(report.threshold.has_value());  // this filter records nothing

    // One sample is the filter's, the others are the file's although the host has fewer values.
    EXPECT_EQ(report.changedPixels, 1U);
    Bytes expected;
    for (uint32_t sample : {1U, 32768U, 3U, 65533U}) AppendNumber(expected, static_cast<uint16_t>(sample), false);
    EXPECT_EQ(picture.samples, expected);
}

TEST(FilterRun, ValuesGoInAsAScriptAndTheDialogIsAskedFor) {
    FakeHost host;
    gSeen = {};
    Picture picture = SixteenBitPicture();
    Settings settings;
    FilterRequest request;
    request.threshold = -77;
    request.dialog = true;
    RunFilterOn(host, PluginMain, request, picture, settings);
    EXPECT_EQ(gSeen.selectors[0], kFilterSelectorParameters);
    EXPECT_EQ(gSeen.playInfo, kPlugInDialogDisplay);
    EXPECT_EQ(gSeen.threshold, -77);
}

TEST(FilterRun, ARefusalIsToldInWordsAndChangesNothing) {
    FakeHost host;
    Picture picture = SixteenBitPicture();
    const Bytes before = picture.samples;
    Settings settings = {{"name", {{1, 2}}}};
    const std::pair<int16_t, const char*> cases[] = {{kFilterBadMode, "mode"},         {kMemFullErr, "memory"},
                                                     {kUserCanceledErr, "cancelled"},  {0x454D, "memory"},
                                                     {-9999, "failed (result -9999)"}, {1, "stopped"}};
    for (const auto& [answer, words] : cases) {
        gSeen = {};
        gSeen.answer = answer;
        try {
            RunFilterOn(host, PluginMain, {}, picture, settings);
            ADD_FAILURE() << "no refusal of " << answer;
        } catch (const ToolError& error) {
            EXPECT_NE(std::string(error.what()).find(words), std::string::npos) << error.what();
        }
    }
    EXPECT_EQ(picture.samples, before);
    EXPECT_EQ(settings, (Settings{{"name", {{1, 2}}}}));

    picture.colors = 4;
    picture.depth = 32;
    EXPECT_THROW(RunFilterOn(host, PluginMain, {}, picture, settings), ToolError);
}

}  // namespace
}  // namespace stairmelt
