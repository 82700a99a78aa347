// The three ways in which values travel: the host's handles, the persistent store, and scripts.
#include <array>
#include <cstring>

#include "tests/support/plugin_run.h"

namespace stairmelt {

namespace {

using Values = std::array<int32_t, 5>;  // in the order of the block

class Parameters : public PluginRun {
protected:
    // Handles may be looked into while they are unlocked, as long as nothing else runs.
    Values Block() const {
        Values values{};
        std::memcpy(values.data(), *Handle{host.record.parameters}, sizeof values);
        return values;
    }
    void SetBlock(const Values& values) { std::memcpy(*Handle{host.record.parameters}, values.data(), sizeof values); }
    int FlagByte() const { return **reinterpret_cast<Handle>(host.data); }

    // From now on notes what stands in the result when the host is asked to advance.
    void WatchResult() {
        host.onAdvance = [this] {
            resultAtAdvance = *host.runningResult;
            return host.pixels.Deliver();
        };
    }

    void Store(const StoredValues& values) { host.registry.persistent[PLUGIN_GUID] = values; }
    StoredValues Stored() { return host.registry.persistent[PLUGIN_GUID]; }

    // Runs from the menu with a script that holds these keys in this order, and returns what the block then has.
    Values BlockAfter(const std::vector<ScriptValue>& script) {
        EXPECT_EQ(RunScript(script), kNoErr);
        return Block();
    }

    int16_t resultAtAdvance = 1;
};

constexpr Values kDefaults = {10, 70, 0, -1, -1};
const StoredValues kStored = {{kThsh, 1}, {kSftn, 2}, {kBias, 3}, {kPdpx, 4}, {kPdpy, 5}};

}  // namespace

TEST_F(Parameters, AreResetByTheirSelector) {
    EXPECT_EQ(Call(kFilterSelectorParameters), kNoErr);
    EXPECT_EQ(Block(), kDefaults);
    EXPECT_EQ(FlagByte(), 1);
    EXPECT_EQ(Logged({"newProc"}), (Lines{"newProc 20", "newProc 1"}));

    SetBlock({1, 2, 3, 4, 5});
    **reinterpret_cast<Handle>(host.data) = 0;
    host.log.clear();
    EXPECT_EQ(Call(kFilterSelectorParameters), kNoErr);
    EXPECT_EQ(Block(), kDefaults) << "whether or not the block was new";
    EXPECT_EQ(FlagByte(), 1);
    EXPECT_EQ(Logged({"newProc"}), Lines{});
}

TEST_F(Parameters, WithoutMemoryNothingIsSet) {
    host.failures.newProc = 1;
    EXPECT_EQ(Call(kFilterSelectorParameters), -108);
    EXPECT_EQ(Handle{host.record.parameters}, nullptr);
    EXPECT_EQ(host.data, 0);

    host.failures.newProc = 2;
    EXPECT_EQ(Call(kFilterSelectorParameters), kMemFullErr);
    EXPECT_NE(Handle{host.record.parameters}, nullptr);
    EXPECT_EQ(host.data, 0);

    EXPECT_EQ(Call(kFilterSelectorParameters), kNoErr);
    for (const int failingLock : {1, 2}) {
        SetBlock({1, 2, 3, 4, 5});
        host.failures.lockProc = failingLock;
        EXPECT_EQ(Call(kFilterSelectorParameters), kMemFullErr) << failingLock;
        EXPECT_EQ(Block(), (Values{1, 2, 3, 4, 5})) << failingLock;
    }
}

TEST_F(Parameters, TravelThroughTheStore) {
    EXPECT_EQ(BlockAfter({{kThsh, 11}, {kSftn, 22}, {kBias, 33}}), (Values{11, 22, 33, -1, -1}));
    EXPECT_EQ(Stored(), (StoredValues{{kThsh, 11}, {kSftn, 22}, {kBias, 33}, {kPdpx, -1}, {kPdpy, -1}}));

    // A repeat takes what was stored, not what the handle holds, and shows no dialog.
    host.script.played.clear();
    Store(kStored);
    SetBlock({9, 9, 9, 9, 9});
    EXPECT_EQ(Run(RunKind::kRepeat), kNoErr);
    EXPECT_EQ(Block(), (Values{1, 2, 3, 4, 5}));
    EXPECT_TRUE(host.document.result == Smoothed(1, 2, 3));
}

TEST_F(Parameters, StoreIsReadUpToTheFirstMissingKey) {
    struct Row {
        const char* name;
        StoredValues stored;
        Values wanted;
    };
    const Row rows[] = {
        {"nothing stored", {}, kDefaults},
        {"no softness", {{kThsh, 1}, {kBias, 3}, {kPdpx, 4}, {kPdpy, 5}}, {1, 70, 0, -1, -1}},
        {"no last key", {{kThsh, 1}, {kSftn, 2}, {kBias, 3}, {kPdpx, 4}}, {1, 2, 3, 4, -1}},
        {"in another order, with others",
         {{kPdpy, 5}, {7, 7}, {kSftn, 2}, {kThsh, 1}, {kBias, 3}, {kPdpx, 4}},
         {1, 2, 3, 4, 5}},
    };
    for (const Row& row : rows) {
        host.registry.persistent.clear();
        if (!row.stored.empty()) Store(row.stored);
        // The script keeps the dialog away and leaves alone what was stored.
        host.script.playsWithoutValues = true;
        host.script.playInfo = kPlugInDialogDontDisplay;
        EXPECT_EQ(Run(RunKind::kFromMenu), kNoErr);
        EXPECT_EQ(Block(), row.wanted) << row.name;
    }
}

TEST_F(Parameters, StoreFailuresLeaveTheRunAlone) {
    struct Row {
        const char* name;
        void (*fail)(Failures& failures);
        Values wanted;  // in the block
        bool isStored;  // the new values reached the store
        size_t counts;  // calls of GetCount, in Start and Finish
    };
    constexpr Values unread = {50, 70, 0, -1, -1}, read = {50, 2, 3, 4, 5};
    const Row rows[] = {
        {"no suites", [](Failures& f) { f.noBasicSuite = true; }, unread, false, 0},
        {"no registry", [](Failures& f) { f.refusedSuites = {kDescriptorRegistrySuite}; }, unread, false, 0},
        {"no descriptors", [](Failures& f) { f.refusedSuites = {kActionDescriptorSuite}; }, unread, false, 0},
        {"registry without table", [](Failures& f) { f.emptySuites = {kDescriptorRegistrySuite}; }, unread, false, 0},
        {"descriptors without table", [](Failures& f) { f.emptySuites = {kActionDescriptorSuite}; }, unread, false, 0},
        {"Get fails", [](Failures& f) { f.registryGet = kEveryCall; }, unread, true, 2},
        {"GetInteger fails", [](Failures& f) { f.getIntegerKey = kBias; }, {50, 2, 0, -1, -1}, true, 3},
        {"Make fails", [](Failures& f) { f.makeDescriptor = kEveryCall; }, read, false, 1},
        {"Register fails", [](Failures& f) { f.registryRegister = kEveryCall; }, read, false, 2},
    };
    for (const Row& row : rows) {
        Store(kStored);
        host.failures = {};
        row.fail(host.failures);
        host.log.clear();
        EXPECT_EQ(BlockAfter({{kThsh, 50}}), row.wanted) << row.name;
        EXPECT_EQ(Stored() != kStored, row.isStored) << row.name;
        EXPECT_EQ(Logged({"GetCount"}).size(), row.counts) << row.name;
        EXPECT_EQ(host.StillHeld(), kOwnHandles) << row.name;
    }

    // What can be put is registered, even if a later value can't.
    Store(kStored);
    host.failures = {};
    host.failures.putIntegerKey = kBias;
    BlockAfter({{kThsh, 50}});
    EXPECT_EQ(Stored(), (StoredValues{{kThsh, 50}, {kSftn, 2}}));
}

TEST_F(Parameters, StoreIsCalledInOrder) {
    const std::string guid = PLUGIN_GUID;
    const std::string registry = std::string(kDescriptorRegistrySuite) + " 1";
    const std::string descriptors = std::string(kActionDescriptorSuite) + " 3";
    Store({{kThsh, 1}});
    host.script.played = {{kSftn, 70}};
    host.script.playInfo = kPlugInDialogDontDisplay;
    host.BeginRun();
    Call(kFilterSelectorParameters);
    host.log.clear();
    Call(kFilterSelectorStart);
    const std::vector<std::string> words = {"AcquireSuite", "ReleaseSuite", "Get",  "Put",
                                            "HasKey",       "Make",         "Free", "Register"};
    EXPECT_EQ(Logged(words), (Lines{"AcquireSuite " + registry, "AcquireSuite " + descriptors, "Get " + guid,
                                    "GetCount", "GetInteger Thsh", "GetInteger Sftn", "Free",
                                    "ReleaseSuite " + registry, "ReleaseSuite " + descriptors}));
    host.log.clear();
    Call(kFilterSelectorFinish);
    EXPECT_EQ(Logged(words), (Lines{"AcquireSuite " + registry, "AcquireSuite " + descriptors, "Make",
                                    "PutInteger Thsh 1", "HasKey Thsh", "PutInteger Sftn 70", "HasKey Sftn",
                                    "PutInteger Bias 0", "HasKey Bias", "PutInteger PDPX -1", "HasKey PDPX",
                                    "PutInteger PDPY -1", "HasKey PDPY", "GetCount", "Register " + guid + " persistent",
                                    "GetCount", "Free", "ReleaseSuite " + registry, "ReleaseSuite " + descriptors}));
}

TEST_F(Parameters, ScriptsSetThreeKeys) {
    struct Row {
        const char* name;
        std::vector<ScriptValue> script;
        Values wanted;
        size_t keyCalls;  // the key after a bad one is still taken, for nothing
    };
    const Row rows[] = {
        {"all, in another order", {{kBias, 33}, {kThsh, 11}, {kSftn, 22}}, {11, 22, 33, 4, 5}, 4},
        {"position first: stops the reading", {{kPdpx, 99}, {kThsh, 11}, {kSftn, 22}}, {1, 2, 3, 4, 5}, 2},
        {"position last", {{kThsh, 11}, {kPdpy, 99}}, {11, 2, 3, 4, 5}, 3},
        {"unknown key in between", {{kThsh, 11}, {FourCharCode("Abcd"), 7}, {kSftn, 22}}, {11, 2, 3, 4, 5}, 3},
        {"any number", {{kThsh, INT32_MIN}, {kSftn, INT32_MAX}}, {INT32_MIN, INT32_MAX, 3, 4, 5}, 3},
    };
    WatchResult();
    for (const Row& row : rows) {
        Store(kStored);
        host.log.clear();
        EXPECT_EQ(BlockAfter(row.script), row.wanted) << row.name;
        EXPECT_EQ(Logged({"getKeyProc"}).size(), row.keyCalls) << row.name;
        EXPECT_EQ(resultAtAdvance, kNoErr) << row.name << ": closing went well";
        EXPECT_EQ(FlagByte(), 0) << row.name;
    }
}

TEST_F(Parameters, ScriptFailuresAreForgottenByTheAdvance) {
    struct Row {
        const char* name;
        void (*fail)(Failures& failures);
        Values wanted;
        int16_t resultAtAdvance;
    };
    const Row rows[] = {
        {"closing fails", [](Failures& f) { f.closeReadCode = kErrMissingParameter; }, {11, 22, 3, 4, 5}, kReadErr},
        {"a value comes with an error: kept, and the last",
         [](Failures& f) { f.getInteger = 1; },
         {11, 2, 3, 4, 5},
         kReadErr},
        {"the same, but closing hides it",
         [](Failures& f) {
             f.getInteger = 1;
             f.closeReadCode = kNoErr;
         },
         {11, 2, 3, 4, 5},
         kNoErr},
        {"can't be opened", [](Failures& f) { f.openRead = 1; }, {1, 2, 3, 4, 5}, kNoErr},
        {"no read routines", [](Failures& f) { f.noReadProcs = true; }, {1, 2, 3, 4, 5}, kNoErr},
        {"no scripting at all", [](Failures& f) { f.noDescriptorParameters = true; }, {1, 2, 3, 4, 5}, kNoErr},
    };
    WatchResult();
    for (const Row& row : rows) {
        Store(kStored);
        host.failures = {};
        row.fail(host.failures);
        host.script.played = {{kThsh, 11}, {kSftn, 22}};
        host.script.playInfo = kPlugInDialogDontDisplay;
        EXPECT_EQ(Run(RunKind::kRepeat), kNoErr) << row.name;
        EXPECT_EQ(Block(), row.wanted) << row.name;
        EXPECT_EQ(resultAtAdvance, row.resultAtAdvance) << row.name;
    }
}

TEST_F(Parameters, ScriptDescriptorIsTakenOver) {
    host.script.played = {{kThsh, 11}};
    host.script.playInfo = kPlugInDialogDontDisplay;
    host.BeginRun();
    Call(kFilterSelectorParameters);
    host.log.clear();
    Call(kFilterSelectorStart);
    EXPECT_EQ(Logged({"openRead", "getKey", "getIntegerProc", "closeRead", "disposeProc"}),
              (Lines{"openReadDescriptorProc #1", "getKeyProc Thsh", "getIntegerProc Thsh", "getKeyProc end",
                     "closeReadDescriptorProc", "disposeProc #1"}));
    EXPECT_EQ(host.script.parameters.descriptor, nullptr);
    host.log.clear();
    Call(kFilterSelectorFinish);
    EXPECT_EQ(Logged({"openWrite", "putIntegerProc", "closeWrite"}),
              (Lines{"openWriteDescriptorProc", "putIntegerProc Thsh 11", "putIntegerProc Sftn 70",
                     "putIntegerProc Bias 0", "closeWriteDescriptorProc"}));
    EXPECT_NE(host.script.parameters.descriptor, nullptr);
}

TEST_F(Parameters, WhatCanBePutIsRecordedButNothingWithoutAToken) {
    host.failures.putInteger = 2;
    EXPECT_EQ(RunScript({{kThsh, 11}}), kNoErr);
    EXPECT_EQ(host.script.recorded, (std::vector<ScriptValue>{{kThsh, 11}, {kBias, 0}}));
    EXPECT_EQ(host.script.recordInfo, kPlugInDialogOptional);

    host.failures.openWrite = 1;
    EXPECT_EQ(RunScript({{kThsh, 11}}), kNoErr);
    EXPECT_FALSE(host.script.hasRecorded);
    EXPECT_EQ(host.script.recordInfo, -1) << "left as the host set it";
    host.failures.noWriteProcs = true;
    EXPECT_EQ(RunScript({{kThsh, 11}}), kNoErr);
    EXPECT_FALSE(host.script.hasRecorded);
}

}  // namespace stairmelt
