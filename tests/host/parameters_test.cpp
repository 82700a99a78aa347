// The three ways in which values travel: the host's handles, the persistent store, and scripts.
#include <array>
#include <cstring>

#include "tests/support/plugin_run.h"

namespace stairmelt {

namespace {

using Values = std::array<int32_t, 5>;  // in the order of the block

class Parameters : public PluginRun {
protected:
    // Handles may be read while they are unlocked, as long as nothing else runs.
    Values Block() const {
        Values values{};
        std::memcpy(values.data(), *Handle{host.record.parameters}, sizeof values);
        return values;
    }
    void SetBlock(const Values& values) { std::memcpy(*Handle{host.record.parameters}, values.data(), sizeof values); }
    int FlagByte() const { return **reinterpret_cast<Handle>(host.data); }

    // Records the result at the moment when the host is asked to advance.
    void WatchResult() {
        host.onAdvance = [this] {
            resultAtAdvance = *host.runningResult;
            return host.pixels.Deliver();
        };
    }

    void Store(const StoredValues& values) { host.registry.persistent[PLUGIN_GUID] = values; }
    StoredValues Stored() { return host.registry.persistent[PLUGIN_GUID]; }

    // Runs from the menu with a script that holds these keys in this order, and returns the block after it.
    Values BlockAfter(const std::vector<ScriptValue>& script) {
        EXPECT_EQ(RunScript(script), kNoErr);
        return Block();
    }

    int16_t resultAtAdvance = 1;
};

constexpr FailingCall kCoerced = {1, kCoercedParamErr};
const StoredValues kStored = {{kThsh, 1}, {kSftn, 2}, {kBias, 3}, {kPdpx, 4}, {kPdpy, 5}};

}  // namespace

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

    // What can be put is stored, even if a later value can't.
    host.failures.calls["PutInteger Bias"] = {kEveryCall};
    BlockAfter({{kThsh, 50}});
    EXPECT_EQ(Stored(), (StoredValues{{kThsh, 50}, {kSftn, 2}}));
}

TEST_F(Parameters, ScriptsSetThreeKeys) {
    using Fail = void (*)(Failures&);
    const struct {
        const char* name;
        std::vector<ScriptValue> script;
        Values wanted;
        int16_t resultAtAdvance = kNoErr;
        Fail fail = [](Failures&) {};
    } rows[] = {
        {"all, in another order", {{kBias, 33}, {kThsh, 11}, {kSftn, 22}}, {11, 22, 33, 4, 5}},
        {"position first: stops the reading", {{kPdpx, 99}, {kThsh, 11}, {kSftn, 22}}, {1, 2, 3, 4, 5}},
        {"position last", {{kThsh, 11}, {kPdpy, 99}}, {11, 2, 3, 4, 5}},
        {"unknown key in between", {{kThsh, 11}, {FourCharCode("Abcd"), 7}, {kSftn, 22}}, {11, 2, 3, 4, 5}},
        {"any number", {{kThsh, INT32_MIN}, {kSftn, INT32_MAX}}, {INT32_MIN, INT32_MAX, 3, 4, 5}},
        {"closing fails",
         {{kThsh, 11}, {kSftn, 22}},
         {11, 22, 3, 4, 5},
         kReadErr,
         [](Failures& f) { f.closeReadCode = kErrMissingParameter; }},
        {"a value comes with an error: kept, and the last",
         {{kThsh, 11}, {kSftn, 22}},
         {11, 2, 3, 4, 5},
         kReadErr,
         [](Failures& f) { f.calls["getIntegerProc"] = kCoerced; }},
        {"the same, but closing hides it",
         {{kThsh, 11}, {kSftn, 22}},
         {11, 2, 3, 4, 5},
         kNoErr,
         [](Failures& f) {
             f.calls["getIntegerProc"] = kCoerced;
             f.closeReadCode = kNoErr;
         }},
    };
    WatchResult();
    for (const auto& row : rows) {
        Store(kStored);
        host.failures = {};
        row.fail(host.failures);
        EXPECT_EQ(BlockAfter(row.script), row.wanted) << row.name;
        EXPECT_EQ(resultAtAdvance, row.resultAtAdvance) << row.name;
        EXPECT_EQ(FlagByte(), 0) << row.name;
    }
}

}  // namespace stairmelt
