#include <cstdio>
#include <cstring>

#include "tests/support/plugin_run.h"

namespace stairmelt {

namespace {

constexpr int16_t kHostCode = -36;  // of a failed advance: any code of the host's own

// Calls whose failure decides the run's result, by the selector that makes them. The failure of any other call only
// costs what it would have given: stored values, the script or the preview.
struct Consequence {
    const char* call;
    int16_t selector;
    int16_t result;
    bool onlyWithNewHandles = false;  // Prepare ignores the failure where the block exists
};
constexpr Consequence kConsequences[] = {
    {"newProc", kFilterSelectorParameters, kMemFullErr}, {"lockProc", kFilterSelectorParameters, kMemFullErr},
    {"newProc", kFilterSelectorPrepare, kMemFullErr},    {"lockProc", kFilterSelectorPrepare, kMemFullErr, true},
    {"lockProc", kFilterSelectorStart, kMemFullErr},     {"advanceState", kFilterSelectorStart, kHostCode},
    {"lockProc", kFilterSelectorFinish, kMemFullErr},
};

// The result of the first failed call that decides it; `otherwise` if there is none.
int16_t ResultByTable(const Lines& log, int16_t otherwise) {
    int selector = 0;
    bool hasNewHandles = false;
    for (const std::string& line : log) {
        if (line.starts_with("PluginMain ")) {
            selector = std::stoi(line.substr(11));
            hasNewHandles = false;
        }
        hasNewHandles = hasNewHandles || line.starts_with("newProc");
        if (line.back() != kFailedMark[1]) continue;
        for (const Consequence& row : kConsequences) {
            if (row.selector == selector && line.starts_with(row.call) && (hasNewHandles || !row.onlyWithNewHandles))
                return row.result;
        }
    }
    return otherwise;
}

using PictureValues = std::vector<int32_t>;  // of the picture, in the order of the keys
constexpr DescriptorKeyID kKeys[] = {kThsh, kSftn, kBias, kPdpx, kPdpy};
const PictureValues kStoredValues = {24, 55, 15}, kDefaultValues = {10, 70, 0};
const StoredValues kStoredAtFirst = {{kThsh, 24}, {kSftn, 55}, {kBias, 15}, {kPdpx, 40}, {kPdpy, 30}};

// All that a run leaves with the host.
struct Outcome {
    int16_t result = 0;
    PictureValues used;  // what the block held when Start was over
    bool isFinished = false;
    std::vector<uint8_t> pixels;
    StoredValues stored;
    std::vector<ScriptValue> recorded;
    bool operator==(const Outcome&) const = default;
};

Outcome Observe(ProbedHost& host, const std::function<int16_t()>& run) {
    Outcome outcome;
    host.registry.persistent[PLUGIN_GUID] = kStoredAtFirst;
    host.document.result = host.document.source;
    host.log.clear();
    host.script.recorded.clear();
    host.onReturn = [&](int16_t selector) {
        outcome.isFinished = outcome.isFinished || selector == kFilterSelectorFinish;
        if (selector != kFilterSelectorStart || Handle{host.record.parameters} == nullptr) return;
        outcome.used.resize(3);
        std::memcpy(outcome.used.data(), *Handle{host.record.parameters}, 3 * sizeof(int32_t));
    };
    outcome.result = run();
    host.onReturn = nullptr;
    outcome.pixels = host.document.result;
    outcome.stored = host.registry.persistent[PLUGIN_GUID];
    outcome.recorded = host.script.recorded;
    return outcome;
}

}  // namespace

std::string PluginRun::Strays() const {
    std::string held = host.StillHeld();
    const auto remove = [&](const std::string& line) {
        if (const size_t at = held.find(line + "\n"); at != std::string::npos) held.erase(at, line.size() + 1);
    };
    // A script that a broken-off run never read stays the host's.
    for (const Handle kept : {Handle{host.record.parameters}, reinterpret_cast<Handle>(host.data),
                              Handle{host.script.parameters.descriptor}})
        remove("handle " + host.handles.blocks.NameOf(kept));
    remove(std::string("suite ") + kUIHooksSuite + " acquired 1");
    return held;
}

void PluginRun::FailEachCall(const FailingRun& failing, const Drive& drive) {
    const auto run = [&] { return drive(failing.kind, failing.isAccepted); };
    const auto runAfterwards = [&] { return drive(RunKind::kFromMenu, true); };
    const Outcome goodAfterwards = Observe(host, runAfterwards);
    EXPECT_EQ(goodAfterwards.result, kNoErr) << failing.name;
    if (failing.isFirst) ForgetHandles();
    const Outcome good = Observe(host, run);
    Observe(host, runAfterwards);
    const bool resetsFirst = failing.isFirst || failing.kind == RunKind::kFromMenu;
    int runs = 0;
    for (const bool failureLasts : {false, true}) {
        if (failureLasts && failing.isBrief) break;
        for (int call = 1; !HasFailure(); ++call) {
            SCOPED_TRACE(testing::Message() << failing.name << ": call " << call << (failureLasts ? " and on" : ""));
            if (failing.isFirst) ForgetHandles();
            host.failures.anyCall = call;
            host.failures.failureLasts = failureLasts;
            host.failures.calls["advanceState"].code = kHostCode;
            const Outcome bad = Observe(host, run);
            const bool hasFailed = host.failures.anyCall <= 0;
            host.failures = {};
            if (!hasFailed) break;
            ++runs;

            EXPECT_EQ(bad.result, ResultByTable(host.log, good.result));
            EXPECT_EQ(Strays(), "");
            EXPECT_EQ(host.Faults(), "");
            if (!bad.isFinished) {
                EXPECT_TRUE(bad.pixels == host.document.source);
                EXPECT_EQ(bad.stored, kStoredAtFirst);
            } else {
                // A value that could not be read is the stored one, or what the block held before.
                for (size_t i = 0; i < bad.used.size(); ++i) {
                    const int32_t value = bad.used[i];
                    const int32_t last = goodAfterwards.used[i];
                    EXPECT_TRUE(value == good.used[i] || value == kStoredValues[i] ||
                                value == (resetsFirst ? kDefaultValues[i] : last))
                        << value;
                }
                EXPECT_TRUE(bad.pixels == Smoothed(bad.used[0], bad.used[1], bad.used[2]));
                // What could be put is stored, and recorded.
                for (size_t i = 0; bad.stored != kStoredAtFirst && i < bad.stored.size(); ++i) {
                    EXPECT_EQ(bad.stored[i].first, kKeys[i]);
                    EXPECT_TRUE(i >= 3 || bad.stored[i].second == bad.used[i]);
                }
                for (const ScriptValue& value : bad.recorded) {
                    const auto key = std::find(std::begin(kKeys), std::begin(kKeys) + 3, value.key) - kKeys;
                    EXPECT_EQ(value.value, bad.used.at(static_cast<size_t>(key)));
                }
            }
            const Outcome afterwards = Observe(host, runAfterwards);
            EXPECT_EQ(afterwards.stored, goodAfterwards.stored) << "the run after it";
            EXPECT_TRUE(afterwards == goodAfterwards) << "the run after it";
            EXPECT_EQ(Strays() + host.Faults(), "");
        }
    }
    std::printf("%6d runs with a failing call: %s\n", runs, failing.name);
}

}  // namespace stairmelt
