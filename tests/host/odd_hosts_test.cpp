// Hosts that lack something.
#include <cstring>
#include <set>

#include "tests/support/plugin_run.h"

namespace stairmelt {

namespace {

class OddHosts : public PluginRun {
protected:
    // A silent run with the handles of an earlier one, which hold the defaults.
    int16_t Repeat(const std::vector<ScriptValue>& script = {{kThsh, 40}}) {
        host.script.played = script;
        host.script.playInfo = kPlugInDialogDontDisplay;
        host.registry.persistent[PLUGIN_GUID] = {{kThsh, 24}, {kSftn, 55}, {kBias, 15}, {kPdpx, 4}, {kPdpy, 5}};
        constexpr int32_t kDefaults[] = {10, 70, 0, -1, -1};
        std::memcpy(*Handle{host.record.parameters}, kDefaults, sizeof kDefaults);
        return Run(RunKind::kRepeat);
    }
    void SetUp() override { ASSERT_EQ(RunScript({{kThsh, 10}}), kNoErr); }

    bool HasStored() { return host.registry.persistent[PLUGIN_GUID].size() == 5 && StoredThreshold() != 24; }
    int32_t StoredThreshold() { return host.registry.persistent[PLUGIN_GUID][0].second; }
};

// The result of a run without one of its services.
struct Without {
    int16_t result;
    int32_t threshold, softness, bias;  // used, if the run went ahead
    bool isStored, isRecorded;
};

}  // namespace

TEST_F(OddHosts, LackAnyRoutineOfAnyTable) {
    constexpr Without kNothingLost = {kNoErr, 40, 55, 15, true, true};
    struct Row {
        const char* name;
        void* table;
        size_t size, firstSlot;   // in bytes; behind version and count
        std::set<size_t> needed;  // slots that make the table unusable when one is null
        Without without;
    };
    auto* const bytes = reinterpret_cast<uint8_t*>(&host.record);
    PSActionDescriptorProcs& actions = host.registry.descriptorProcs;
    const Without kNoStore = {kNoErr, 40, 70, 0, false, true};
    const Without kNoScript = {kNoErr, 24, 55, 15, false, true}, kNoRecord = {kNoErr, 40, 55, 15, true, false};
    const Without kNoHandles = {kMemFullErr, 0, 0, 0, false, false};
    const Without kNoAdvance = {kFilterBadParameters, 0, 0, 0, false, false};
    const Row rows[] = {
        {"handles", &host.handles.procs, sizeof(HandleProcs), 1, {1, 2, 5, 6}, kNoHandles},
        {"reading", &host.script.readProcs, sizeof(ReadDescriptorProcs), 1, {1, 2, 3, 4}, kNoScript},
        {"writing", &host.script.writeProcs, sizeof(WriteDescriptorProcs), 1, {1, 2, 3}, kNoRecord},
        {"basic suite", &host.suites.basic, sizeof(SPBasicSuite), 0, {0, 1}, kNoStore},
        {"registry", &host.registry.registryProcs, sizeof(PSDescriptorRegistryProcs), 0, {0, 2}, kNoStore},
        {"descriptors", &actions, sizeof actions, 0, {0, 1, 4, 5, 9, 22}, kNoStore},
        {"buffers", &host.buffers.procs, sizeof(BufferProcs), 1, {}, kNothingLost},
        {"UI hooks", &host.ui.hooks, sizeof(PSUIHooksSuite1), 0, {}, kNothingLost},
        {"advance", bytes + offsetof(FilterRecord, advanceState), 8, 0, {0}, kNoAdvance},
    };
    int runs = 0;
    for (const Row& row : rows) {
        const size_t slots = row.size / 8;
        // Each slot, and all from a slot on, as in the shorter table of an older host.
        for (size_t slot = row.firstSlot; slot < slots; ++slot) {
            for (const size_t end : {slot + 1, slots}) {
                SCOPED_TRACE(testing::Message() << row.name << ", slots " << slot << " to " << end);
                auto* const table = static_cast<uint8_t*>(row.table);
                std::vector<uint8_t> whole;
                const bool isNeeded = row.needed.lower_bound(slot) != row.needed.lower_bound(end);
                const Without& wanted = isNeeded ? row.without : kNothingLost;
                host.onBegin = [&] {
                    host.script.isUnreadable = isNeeded && row.table == &host.script.readProcs;
                    whole.assign(table, table + row.size);
                    std::memset(table + slot * 8, 0, (end - slot) * 8);
                };
                EXPECT_EQ(Repeat(), wanted.result);
                host.onBegin = nullptr;
                std::memcpy(table, whole.data(), row.size);
                EXPECT_TRUE(host.document.result == (wanted.result == kNoErr
                                                         ? Smoothed(wanted.threshold, wanted.softness, wanted.bias)
                                                         : host.document.source));
                EXPECT_EQ(HasStored(), wanted.isStored);
                EXPECT_EQ(host.script.hasRecorded, wanted.isRecorded);
                EXPECT_EQ(Strays(), "");
                ++runs;
            }
        }
    }
    std::printf("%6d runs with null routines\n", runs);
}

TEST_F(OddHosts, LackWholePartsOfTheRecord) {
    bool Failures::*const lacks[] = {&Failures::noBigDocument,   &Failures::noPlatformData, &Failures::noBufferProcs,
                                     &Failures::noDisplayPixels, &Failures::noProgressProc, &Failures::noBasicSuite};
    for (size_t i = 0; i < std::size(lacks); ++i) {
        host.failures = {};
        host.failures.*lacks[i] = true;
        EXPECT_EQ(Repeat(), kNoErr) << i;
        const bool hasStore = !host.failures.noBasicSuite;
        EXPECT_TRUE(host.document.result == Smoothed(40, hasStore ? 55 : 70, hasStore ? 15 : 0)) << i;
    }
    // All of them at once, and no scripting either: the block keeps its own values.
    for (const auto lack : lacks) host.failures.*lack = true;
    host.failures.noDescriptorParameters = true;
    EXPECT_EQ(Repeat(), kNoErr);
    EXPECT_TRUE(host.document.result == Smoothed(10, 70, 0));
}

}  // namespace stairmelt
