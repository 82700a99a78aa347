// Selectors, results, locks and unlocks.
#include "tests/support/plugin_run.h"

namespace stairmelt {

namespace {

const std::vector<std::string> kLocks = {"lockProc", "unlockProc"};

using Entry = PluginRun;

}  // namespace

TEST_F(Entry, EachSelectorLocksAndUnlocksItsHandles) {
    // Handle #1 is the parameter block, #2 the flag byte, whose word is unlocked first.
    struct Row {
        const char* name;
        int16_t selector;
        Lines locks;
        int16_t result;
    };
    const Lines both = {"lockProc #1", "lockProc #2", "unlockProc #2", "unlockProc #1"};
    // Results are numbers here: hosts know no names.
    const Row rows[] = {
        {"Parameters", kFilterSelectorParameters, both, kNoErr},
        {"Prepare", kFilterSelectorPrepare, {"lockProc #1", "unlockProc #2", "unlockProc #1"}, kNoErr},
        {"Continue", kFilterSelectorContinue, {"unlockProc #2", "unlockProc #1"}, kNoErr},
        {"Finish", kFilterSelectorFinish, both, kNoErr},
        {"unknown", 6, {"unlockProc #2", "unlockProc #1"}, -30100},
        {"low byte 0 only", 256, {"unlockProc #2", "unlockProc #1"}, -30100},
    };
    for (const Row& row : rows) {
        host.log.clear();
        EXPECT_EQ(Call(row.selector), row.result) << row.name;
        EXPECT_EQ(Logged(kLocks), row.locks) << row.name;
    }

    host.script.played = {{kThsh, 10}};
    host.script.playInfo = kPlugInDialogDontDisplay;
    host.BeginRun();
    host.log.clear();
    EXPECT_EQ(Call(kFilterSelectorStart), kNoErr);
    EXPECT_EQ(Logged(kLocks), both);

    host.document.imageMode = kModeIndexedColor;
    host.BeginRun();
    host.log.clear();
    EXPECT_EQ(Call(kFilterSelectorStart), -30101);
    EXPECT_EQ(Logged(kLocks), (Lines{"unlockProc #2", "unlockProc #1"})) << "refused before any lock";
    EXPECT_EQ(Logged({"advanceState"}), Lines{});
}

TEST_F(Entry, PrepareMakesMissingHandlesAndWantsNoSpace) {
    EXPECT_EQ(Call(kFilterSelectorContinue), kNoErr);
    EXPECT_EQ(Logged(kLocks), Lines{}) << "missing handles aren't unlocked";
    EXPECT_NE(static_cast<int32_t>(host.record.maxSpace), 0);
    host.record.bufferSpace = 5;
    EXPECT_EQ(Call(kFilterSelectorPrepare), kNoErr);
    EXPECT_EQ(Logged({"newProc", "lockProc", "unlockProc"}),
              (Lines{"newProc 20", "newProc 1", "lockProc #1", "lockProc #2", "unlockProc #2", "unlockProc #1"}));
    EXPECT_EQ(static_cast<int32_t>(host.record.maxSpace), 0);
    EXPECT_EQ(static_cast<int32_t>(host.record.bufferSpace), 0);
}

TEST_F(Entry, OtherHostsAreTurnedAwayOnceWideCoordinatesAreOn) {
    Call(kFilterSelectorParameters);
    host.failures.hostSig = FourCharCode("MIB8");
    host.log.clear();
    for (int16_t selector = 1; selector <= 6; ++selector) {
        host.BeginRun();
        EXPECT_EQ(host.big.PluginUsing32BitCoordinates, 0);
        EXPECT_EQ(Call(selector), kFilterBadParameters) << selector;
        EXPECT_EQ(host.big.PluginUsing32BitCoordinates, 1) << selector;
    }
    EXPECT_EQ(Logged({"lockProc", "unlockProc", "newProc", "advanceState"}), Lines{});
}

}  // namespace stairmelt
