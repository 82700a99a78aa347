#include "tools/filter/filter_run.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "tools/tool_error.h"

namespace stairmelt {
namespace {

// What the filter below has seen, and what it is to answer.
struct Seen {
    int16_t firstSelector = -1, playInfo = -1;
    int16_t answer = 0;
} gSeen;

// Neither reads the script nor takes its descriptor, and asks for no pixels.
void PluginMain(int16_t selector, void* data, intptr_t*, int16_t* result) {
    if (gSeen.firstSelector < 0) gSeen.firstSelector = selector;
    if (selector != kFilterSelectorStart) return;
    gSeen.playInfo = static_cast<FilterRecord*>(data)->descriptorParameters->playInfo;
    *result = gSeen.answer;
}

// Milliseconds; of the times with pixels, each run takes the next one.
constexpr int kBeforePixels = 100, kWithPixels[] = {5, 300, 5, 100};
int gRun = 0;

void Wait(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

// Has the host deliver the one pixel, and adds 1 to its first byte.
void IncrementPixel(int16_t selector, void* data, intptr_t*, int16_t* result) {
    if (selector != kFilterSelectorStart) return;
    auto* const record = static_cast<FilterRecord*>(data);
    record->outRect = {0, 0, 1, 1};
    Wait(kBeforePixels);
    *result = record->advanceState();
    Wait(kWithPixels[gRun++ % 4]);
    ++*static_cast<uint8_t*>(record->outData);
    record->outRect = {};
}

class FilterRun : public testing::Test {
protected:
    FilterRun() {
        gSeen = {};
        picture.width = picture.height = picture.colors = 1;
        picture.depth = 8;
        picture.samples = {41};
    }
    FakeHost host;
    Picture picture;
    Settings settings = {{"name", {{1, 2}}}};
};

TEST_F(FilterRun, SilentRunsPlayAScriptAndTellOfBrokenRules) {
    const FilterReport report = RunFilterOn(host, PluginMain, {}, picture, settings);
    EXPECT_EQ(gSeen.firstSelector, kFilterSelectorPrepare);
    EXPECT_EQ(gSeen.playInfo, kPlugInDialogDontDisplay);
    EXPECT_EQ(report.faults, "the filter left the played descriptor in its place\n");
    EXPECT_FALSE(report.threshold.has_value()) << "this filter records nothing";
}

TEST_F(FilterRun, TheDialogIsAskedForEvenWithValues) {
    RunFilterOn(host, PluginMain, {.threshold = -77, .dialog = true}, picture, settings);
    EXPECT_EQ(gSeen.firstSelector, kFilterSelectorParameters);
    EXPECT_EQ(gSeen.playInfo, kPlugInDialogDisplay);
    EXPECT_EQ(host.script.played, (std::vector<ScriptValue>{{FourCharCode("Thsh"), -77}}));
}

TEST_F(FilterRun, RepeatedRunsStartFromTheSamePixelsAndLeaveTheHostOutOfTheTime) {
    const FilterReport once = RunFilterOn(host, IncrementPixel, {}, picture, settings);
    EXPECT_EQ(picture.samples, Bytes{42});
    EXPECT_FALSE(once.times.has_value());

    const FilterReport report = RunFilterOn(host, IncrementPixel, {.repeat = 4}, picture, settings);
    EXPECT_EQ(picture.samples, Bytes{43});
    EXPECT_EQ(report.changedPixels, 1u);
    ASSERT_TRUE(report.times.has_value());
    EXPECT_GE(report.times->kernel, 0.1) << "the upper of the two middle times";
    EXPECT_LT(report.times->kernel, 0.2);
}

TEST_F(FilterRun, ARefusalIsToldInWordsAndChangesNothing) {
    const std::pair<int16_t, const char*> cases[] = {
        {kFilterBadMode, "mode"}, {0x454D, "memory"}, {-9999, "failed (result -9999)"}, {1, "stopped"}};
    for (const auto& [answer, words] : cases) {
        gSeen.answer = answer;
        try {
            RunFilterOn(host, PluginMain, {}, picture, settings);
            ADD_FAILURE() << "no refusal of " << answer;
        } catch (const ToolError& error) {
            EXPECT_NE(std::string(error.what()).find(words), std::string::npos) << error.what();
        }
    }
    EXPECT_EQ(picture.samples, Bytes{41});
    EXPECT_EQ(settings, (Settings{{"name", {{1, 2}}}}));

    picture.colors = 4;
    picture.depth = 32;
    EXPECT_THROW(RunFilterOn(host, PluginMain, {}, picture, settings), ToolError) << "the host has no such mode";
}

TEST(RangeText, DescribesValuesThatTheDialogRefuses) {
    FilterReport report;
    report.threshold = 255, report.softness = 100, report.bias = 0;
    EXPECT_EQ(RangeText(report), "");
    report.threshold = 256, report.softness = 101, report.bias = -1;
    EXPECT_EQ(RangeText(report),
              "threshold 256 (the dialog's range is 0 to 255), softness 101 (the dialog's range is 0 to 100), "
              "bias -1 (the dialog's range is 0 to 100)");
}

}  // namespace
}  // namespace stairmelt
