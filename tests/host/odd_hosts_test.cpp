// Hosts that aren't as they should be: what is missing, lost, left over or out of all proportion.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>

#include "tests/support/plugin_run.h"

namespace stairmelt {

namespace {

class OddHosts : public PluginRun {
protected:
    // A silent run, with the handles there from an earlier one and the defaults in them.
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

// What a run is without one of its services.
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
        std::set<size_t> needed;  // slots; without one of them the table is none
        Without without;
    };
    auto* const bytes = reinterpret_cast<uint8_t*>(&host.record);
    PSActionDescriptorProcs& actions = host.registry.descriptorProcs;
    // What a table is for decides what is lost with it.
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
        {"abort, progress", bytes + offsetof(FilterRecord, abortProc), 16, 0, {}, kNothingLost},
        {"host's own", bytes + offsetof(FilterRecord, hostProc), 8, 0, {}, kNothingLost},
        {"events, displaying", bytes + offsetof(FilterRecord, processEvent), 16, 0, {}, kNothingLost},
        {"advance", bytes + offsetof(FilterRecord, advanceState), 8, 0, {0}, kNoAdvance},
        {"properties", bytes + offsetof(FilterRecord, getPropertyObsolete), 8, 0, {}, kNothingLost},
        {"colours", bytes + offsetof(FilterRecord, colorServices), 8, 0, {}, kNothingLost},
    };
    int runs = 0;
    for (const Row& row : rows) {
        const size_t slots = row.size / 8;
        // Each slot, and all from a slot on: a table that an older host has filled up to there.
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
    using Lack = void (*)(Failures&);
    const Lack lacks[] = {
        [](Failures& f) { f.noBigDocument = true; },  [](Failures& f) { f.noPlatformData = true; },
        [](Failures& f) { f.noBufferProcs = true; },  [](Failures& f) { f.noDisplayPixels = true; },
        [](Failures& f) { f.noProgressProc = true; }, [](Failures& f) { f.refusedSuites = {kUIHooksSuite}; },
        [](Failures& f) { f.noBasicSuite = true; },
    };
    for (size_t i = 0; i < std::size(lacks); ++i) {
        host.failures = {};
        lacks[i](host.failures);
        EXPECT_EQ(Repeat(), kNoErr) << i;
        const bool hasStore = !host.failures.noBasicSuite;
        EXPECT_TRUE(host.document.result == Smoothed(40, hasStore ? 55 : 70, hasStore ? 15 : 0)) << i;
    }
    // All of them at once, and no scripting either: the block's own values stand.
    for (const Lack lack : lacks) lack(host.failures);
    host.failures.noDescriptorParameters = true;
    EXPECT_EQ(Repeat(), kNoErr);
    EXPECT_TRUE(host.document.result == Smoothed(10, 70, 0));
}

TEST_F(OddHosts, LoseTheHandlesOrBringStaleOnes) {
    enum State { kKept, kNull, kDisposed };
    const struct {
        State block, word;
        int16_t parameters, prepare, start, finish;  // results
    } rows[] = {
        {kKept, kNull, kNoErr, kNoErr, kMemFullErr, kMemFullErr},
        {kNull, kKept, kNoErr, kNoErr, kFilterBadParameters, kFilterBadParameters},
        {kNull, kNull, kNoErr, kNoErr, kFilterBadParameters, kFilterBadParameters},
        {kKept, kDisposed, kMemFullErr, kNoErr, kMemFullErr, kMemFullErr},
        {kDisposed, kKept, kMemFullErr, kNoErr, kMemFullErr, kMemFullErr},
        {kDisposed, kDisposed, kMemFullErr, kNoErr, kMemFullErr, kMemFullErr},
    };
    const HandleProcs& procs = host.handles.procs;
    for (const auto& row : rows) {
        for (int16_t selector = kFilterSelectorParameters; selector <= kFilterSelectorFinish; ++selector) {
            SCOPED_TRACE(testing::Message() << row.block << row.word << " selector " << selector);
            const int16_t wanted[] = {0, row.parameters, row.prepare, row.start, kNoErr, row.finish};
            host.script.played.clear();
            host.BeginRun();
            const Handle block = host.record.parameters, flagByte = reinterpret_cast<Handle>(host.data);
            if (row.block != kKept) procs.disposeProc(block);
            if (row.word != kKept) procs.disposeProc(flagByte);
            if (row.block == kNull) host.record.parameters = nullptr;
            if (row.word == kNull) host.data = 0;
            EXPECT_EQ(Call(selector), wanted[selector]);
            EXPECT_EQ(host.pixels.advances, 0);
            EXPECT_EQ(host.handles.blocks.CountLocked(), 0);
            // Using a disposed handle is the host's fault here. It forgets both and goes on.
            host.faults.clear();
            if (row.block == kDisposed) host.record.parameters = nullptr;
            if (row.word == kDisposed) host.data = 0;
            ForgetHandles();
            EXPECT_EQ(RunScript({{kThsh, 40}, {kSftn, 55}, {kBias, 15}}), kNoErr);
            EXPECT_TRUE(host.document.result == Smoothed(40, 55, 15));
        }
    }
    EXPECT_EQ(Strays(), "");
}

TEST_F(OddHosts, LeaveAnOldResultInPlace) {
    const int16_t leftover = kUserCanceledErr;
    const int16_t wanted[] = {0, leftover, leftover, kNoErr, leftover, leftover, kFilterBadParameters};
    host.failures.resultOnEntry = leftover;
    host.script.playsWithoutValues = true;
    host.BeginRun();
    for (int16_t selector = 1; selector <= 6; ++selector) {
        EXPECT_EQ(Call(selector), wanted[selector]) << selector;
        if (selector == kFilterSelectorStart) host.EndRun(true);
    }
    EXPECT_TRUE(host.document.result == Smoothed(10, 70, 0));
    host.document.imageMode = kModeBitmap;
    host.BeginRun();
    EXPECT_EQ(Call(kFilterSelectorStart), kFilterBadMode);
}

TEST_F(OddHosts, GiveNoServedDepthOrPlanes) {
    for (const auto& [depth, planes] : {std::pair{0, 3}, {1, 3}, {24, 3}, {-8, 3}, {8, 0}, {8, -1}, {8, 5}}) {
        host.onBegin = [&] {
            host.record.depth = depth;
            host.record.planes = static_cast<int16_t>(planes);
        };
        EXPECT_EQ(Repeat(), kFilterBadMode) << depth << " bits, " << planes << " planes";
        host.onBegin = nullptr;
        EXPECT_EQ(Repeat(), kNoErr);
    }
}

TEST_F(OddHosts, GiveHugeRows) {
    // Two buffers of up to 2.2 GB, of which only the pages with pixels are ever touched.
    for (const auto& [stride, rows] : {std::pair<size_t, int>{60, 14}, {61, 14}, {70001, 14}, {1100000000, 3}}) {
        host.document = DocumentOf(kAllKernels[4], 20, rows, 1);
        const std::vector<uint8_t> source = host.document.source, wanted = Smoothed(40, 55, 15);
        const size_t rowBytes = host.document.RowBytes(), rowCount = static_cast<size_t>(rows);
        const size_t size = (rowCount - 1) * stride + rowBytes;
        const std::unique_ptr<void, void (*)(void*)> in(std::calloc(size, 1), std::free),
            out(std::calloc(size, 1), std::free);
        if (!in || !out) continue;  // no such address space here
        const auto row = [&, step = stride](const auto& memory, size_t y) {
            return static_cast<uint8_t*>(memory.get()) + y * step;
        };
        host.onAdvance = [&, rowStep = static_cast<int32_t>(stride)]() -> OSErr {
            for (size_t y = 0; y < rowCount; ++y) {
                for (const auto* memory : {&in, &out}) std::memcpy(row(*memory, y), &source[y * rowBytes], rowBytes);
            }
            host.record.inData = in.get();
            host.record.outData = out.get();
            host.record.inRowBytes = host.record.outRowBytes = rowStep;
            return kNoErr;
        };
        EXPECT_EQ(Repeat(), kNoErr) << stride;
        for (size_t y = 0; y < rowCount; ++y) {
            EXPECT_EQ(std::memcmp(row(out, y), &wanted[y * rowBytes], rowBytes), 0) << stride << " row " << y;
            EXPECT_EQ(std::memcmp(row(in, y), &source[y * rowBytes], rowBytes), 0) << stride << " row " << y;
        }
    }
}

TEST_F(OddHosts, OpenImagesOfAnySize) {
    const struct {
        int width, height;
    } sizes[] = {{0, 0}, {0, 5}, {5, 0}, {1, 1}, {2, 1}, {1, 2}, {2000000, 1}, {1, 2000000}};
    const KernelCase& format = kAllKernels[13];  // RGB with transparency, 16 bits
    for (const auto& [width, height] : sizes) {
        host.document = DocumentOf(format, width, height > 0 ? height : 1, 3);
        host.document.height = height;
        EXPECT_EQ(Repeat(), kNoErr) << width << " x " << height;
        EXPECT_TRUE(host.document.result == Smoothed(format, 40, 55, 15)) << width << " x " << height;
    }
}

// Islands of hard edges on a flat ground, all alike and no run longer than an island: so is the result.
TEST_F(OddHosts, OpenAnImageOfThirtyThousandSquared) {
#if defined(__SANITIZE_ADDRESS__) || defined(_WIN32)
    constexpr size_t kSide = 3000;
#else
    constexpr size_t kSide = 30000;  // needs 3.6 GB
#endif
    constexpr size_t kTile = 50, kIsland = 12;
    const KernelCase& gray = kAllKernels[0];
    SeededRandom random(5);
    const std::vector<uint8_t> island = Patchwork(gray, kIsland, kIsland, random);
    const auto tiled = [&](size_t side) {
        std::vector<uint8_t> pixels(side * side, 99);
        for (size_t y = 0; y < side; ++y) {
            for (size_t x = 20; y % kTile < kIsland && x < side; x += kTile)
                std::memcpy(&pixels[y * side + x], &island[y % kTile * kIsland], kIsland);
        }
        return pixels;
    };
    host.document = DocumentOf(gray, 3 * kTile, 3 * kTile, 1);
    host.document.source = tiled(3 * kTile);
    const std::vector<uint8_t> wanted = Smoothed(gray, 40, 55, 15);
    EXPECT_FALSE(wanted == host.document.source);

    host.document.width = host.document.height = static_cast<int32_t>(kSide);
    host.document.source = tiled(kSide);
    ASSERT_EQ(Repeat(), kNoErr);
    // Rows at the upper edge and inside, where the neighbours are those of the middle tile.
    size_t wrong = 0;
    for (size_t y = 0; y < kSide; ++y) {
        const size_t row = y < kTile ? y : y + kTile >= kSide ? 2 * kTile + y % kTile : kTile + y % kTile;
        for (size_t x = 0; x < kSide; x += kTile) {
            const size_t column = x == 0 ? 0 : x + kTile >= kSide ? 2 * kTile : kTile;
            wrong += std::memcmp(&host.document.result[y * kSide + x], &wanted[row * 3 * kTile + column], kTile) != 0;
        }
    }
    EXPECT_EQ(wrong, 0u);
}

}  // namespace stairmelt
