// What a run does with the parameter dialog's answer, and what the about selector passes on. The dialogs are scripted.
#include "host/parameters.h"
#include "host/plugin_entry.h"
#include "tests/support/plugin_run.h"
#include "tests/support/stub_dialogs.h"

namespace stairmelt {

namespace {

class DialogAnswer : public PluginRun {
protected:
    DialogAnswer() { gStubDialogs = {}; }
};

}  // namespace

TEST_F(DialogAnswer, LaterValuesReplaceEarlierOnes) {
    host.registry.persistent[PLUGIN_GUID] = {{kThsh, 1}, {kSftn, 2}, {kBias, 3}, {kPdpx, 4}, {kPdpy, 5}};
    host.script.played = {{kSftn, 20}, {kBias, 30}};
    host.script.playInfo = kPlugInDialogDisplay;
    gStubDialogs.whileOpen = [this] {
        EXPECT_EQ(gParameterBlock->colorThreshold, 1);
        EXPECT_EQ(gParameterBlock->softness, 20);
        EXPECT_EQ(gParameterBlock->bias, 30);
        gParameterBlock->bias = 40;
        // The input has been delivered for the preview, and no output was requested.
        EXPECT_NE(static_cast<void*>(gFilterRecord->inData), nullptr);
        EXPECT_EQ(host.big.outRect32.right, 0);
    };
    EXPECT_EQ(Run(RunKind::kRepeat), kNoErr) << "a script may ask for the dialog without the menu";
    EXPECT_EQ(gStubDialogs.shown, 1);
    EXPECT_EQ(host.pixels.advances, 2);
    EXPECT_TRUE(host.document.result == Smoothed(1, 20, 40));
    EXPECT_EQ(host.script.recorded, (std::vector<ScriptValue>{{kThsh, 1}, {kSftn, 20}, {kBias, 40}}));
    EXPECT_EQ(host.script.recordInfo, kPlugInDialogOptional);
}

TEST_F(DialogAnswer, IsAskedForByTheMenuAndByScripts) {
    struct Row {
        const char* name;
        RunKind kind;
        std::vector<ScriptValue> script;
        int16_t playInfo;
        int shown;
        bool isRefused = false;  // the script can't be opened
    };
    const Row rows[] = {
        {"menu", RunKind::kFromMenu, {}, kPlugInDialogDontDisplay, 1},
        {"last filter", RunKind::kRepeat, {}, kPlugInDialogDisplay, 0},
        {"script, display", RunKind::kFromMenu, {{kThsh, 1}}, kPlugInDialogDisplay, 1},
        {"script, don't display", RunKind::kFromMenu, {{kThsh, 1}}, kPlugInDialogDontDisplay, 0},
        {"script, silent", RunKind::kFromMenu, {{kThsh, 1}}, kPlugInDialogSilent, 0},
        {"refused script, display", RunKind::kRepeat, {{kThsh, 1}}, kPlugInDialogDisplay, 1, true},
        {"refused script, don't display", RunKind::kFromMenu, {{kThsh, 1}}, kPlugInDialogDontDisplay, 0, true},
    };
    for (const Row& row : rows) {
        gStubDialogs = {};
        host.script.played = row.script;
        host.script.playInfo = row.playInfo;
        host.failures.calls["openRead"] = {row.isRefused ? kEveryCall : 0};
        EXPECT_EQ(Run(row.kind), kNoErr) << row.name;
        EXPECT_EQ(gStubDialogs.shown, row.shown) << row.name;
    }
}

TEST_F(DialogAnswer, FailuresLeaveNothingBehind) {
    const Drive drive = [this](RunKind kind, bool isAccepted) {
        gStubDialogs.isAccepted = isAccepted;
        gStubDialogs.whileOpen = [] { gParameterBlock->bias = 50; };
        return Run(kind);
    };
    const FailingRun runs[] = {
        {"menu, first run", RunKind::kFromMenu, true, true},
        {"menu, first run, cancelled", RunKind::kFromMenu, false, true},
        {"menu", RunKind::kFromMenu, true},
        {"menu, cancelled", RunKind::kFromMenu, false},
        {"Prepare, first run", RunKind::kRepeat, true, true},
        {"last filter again", RunKind::kRepeat},
        {"about", RunKind::kAbout},
    };
    for (const FailingRun& run : runs) FailEachCall(run, drive);
    host.script.played = {{kThsh, 40}, {kSftn, 90}};
    FailEachCall({"script, display", RunKind::kFromMenu, true, true}, drive);
    FailEachCall({"script, display, cancelled", RunKind::kFromMenu, false, true}, drive);
}

TEST_F(DialogAnswer, AboutTakesItsParentFromTheRecord) {
    host.platform.hwnd = 1234;
    EXPECT_EQ(Call(kFilterSelectorAbout), kNoErr);
    EXPECT_EQ(gStubDialogs.aboutParent, 1234);
    EXPECT_EQ(gSPBasic, &host.suites.basic);
    host.failures.noPlatformData = true;
    host.failures.noBasicSuite = true;
    host.BeginRun();
    EXPECT_EQ(Call(kFilterSelectorAbout), kNoErr);
    EXPECT_EQ(gStubDialogs.aboutParent, 0);
    EXPECT_EQ(gSPBasic, nullptr);
    EXPECT_EQ(gStubDialogs.aboutShown, 2);
    EXPECT_EQ(Logged({"lockProc", "unlockProc"}), Lines{});
}

}  // namespace stairmelt
