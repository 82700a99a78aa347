#include "hostkit/fake_host.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "hostkit/slots.h"

namespace stairmelt {
namespace {

FakeHost* gCurrentHost = nullptr;

// More than a filter needs that processes an image in pieces. One that never stops making requests is stopped here.
constexpr int kMaxContinues = 100000;

constexpr Fixed kScreenResolution = 72 << 16;   // pixels per inch
constexpr int32_t kSpaceForFilter = 256 << 20;  // bytes

// The fields that a filter may write and this host honours, and those that the host itself writes while a selector
// runs: byte offsets, the end exclusive.
struct FieldRange {
    size_t first, end;
};

constexpr FieldRange kWritable[] = {
    {offsetof(FilterRecord, parameters), offsetof(FilterRecord, imageSize)},
    {offsetof(FilterRecord, maxSpace), offsetof(FilterRecord, isFloating)},
    {offsetof(FilterRecord, autoMask), offsetof(FilterRecord, backColor)},
    {offsetof(FilterRecord, inColumnBytes), offsetof(FilterRecord, imageServicesProcs)},
};

bool IsWritable(size_t offset) {
    for (const FieldRange& range : kWritable)
        if (offset >= range.first && offset < range.end) return true;
    return false;
}

void CheckRecord(const GuardedRecord& guarded, const FilterRecord& before, int16_t selector) {
    if (!HoldsPattern(guarded.before, sizeof(guarded.before)) || !HoldsPattern(guarded.after, sizeof(guarded.after)))
        ReportFault("stray write beside the record");
    uint8_t old[sizeof(FilterRecord)], now[sizeof(FilterRecord)];
    std::memcpy(old, &before, sizeof(old));
    std::memcpy(now, &guarded.record, sizeof(now));
    for (size_t i = 0; i < sizeof(old); ++i) {
        if (old[i] == now[i] || IsWritable(i)) continue;
        ReportFault("selector " + std::to_string(selector) + " changed the record at byte " + std::to_string(i));
        return;
    }
}

// Memory outside the record that the plug-in can reach but must not change.
struct Region {
    const char* name;  // for messages
    const void* begin;
    size_t size;  // bytes
    std::vector<uint8_t> before = {};
};

template <class Field>
Region RegionOf(const char* name, const Field& field) {
    return {name, &field, sizeof(field)};
}

// Copies all such regions, for CheckRegions.
std::vector<Region> SaveRegions(const FakeHost& host) {
    std::vector<Region> regions = {
        RegionOf("imageSize32", host.big.imageSize32),
        RegionOf("filterRect32", host.big.filterRect32),
        RegionOf("floatCoord32", host.big.floatCoord32),
        RegionOf("wholeSize32", host.big.wholeSize32),
        RegionOf("the platform data", host.platform),
        RegionOf("the handle routines", host.handles.procs),
        RegionOf("the buffer routines", host.buffers.procs),
        RegionOf("the read routines", host.script.readProcs),
        RegionOf("the write routines", host.script.writeProcs),
        RegionOf("the basic suite", host.suites.basic),
        RegionOf("the registry suite", host.registry.registryProcs),
        RegionOf("the descriptor suite", host.registry.descriptorProcs),
        RegionOf("the UI hooks suite", host.ui.hooks),
    };
    for (Region& region : regions) {
        const auto* bytes = static_cast<const uint8_t*>(region.begin);
        region.before.assign(bytes, bytes + region.size);
    }
    return regions;
}

void CheckRegions(const std::vector<Region>& regions, int16_t selector) {
    for (const Region& region : regions)
        if (std::memcmp(region.begin, region.before.data(), region.size) != 0)
            ReportFault("selector " + std::to_string(selector) + " changed " + region.name);
}

void AppendHeld(std::string& text, const BlockStore& store) {
    for (const MovableBlock& block : store.made) {
        if (block.isLive) text += block.name + (block.isLocked ? " locked\n" : "\n");
    }
}

}  // namespace

FakeHost& CurrentHost() {
    if (!gCurrentHost) {
        std::fputs("a callback of the host was called while no host is alive\n", stderr);
        std::abort();
    }
    return *gCurrentHost;
}

FakeHost::FakeHost() {
    if (gCurrentHost) {
        std::fputs("two hosts can't be alive at a time\n", stderr);
        std::abort();
    }
    gCurrentHost = this;
    std::memset(&guarded, 0, sizeof(guarded));
    FakeHost::BeginRun();
}

FakeHost::~FakeHost() { gCurrentHost = nullptr; }

void FakeHost::BeginRun() {
    // Drops the buffers of an unfinished run unchecked: they may not fit the document as it is now.
    pixels = FakePixels{.deliveries = pixels.deliveries};
    document.source.resize(static_cast<size_t>(document.height) * document.RowBytes());
    document.result = document.source;
    lastResult = 0;

    const Handle parameters = record.parameters;
    std::memset(&guarded, kFillPattern, sizeof(guarded));
    std::memset(&record, 0, sizeof(record));
    record.parameters = parameters;

    DescribeDocument(document, record, big);
    for (uint16_t& component : record.background) component = 65535;
    for (uint8_t& component : record.backColor) component = 255;
    record.imageHRes = kScreenResolution;
    record.imageVRes = kScreenResolution;
    record.maxSpace = kSpaceForFilter;
    record.maxSpace64 = kSpaceForFilter;
    record.hostSig = kPhotoshopSignature;
    record.errorString = &errorString;
    record.plugInRef = this;

    record.progressProc = ShowProgress;
    record.abortProc = Uncalled<TestAbortProc>();
    record.hostProc = Uncalled<HostProc>();
    record.processEvent = Uncalled<ProcessEventProc>();
    record.advanceState = AdvanceState;
    record.displayPixels = DisplayPixels;
    record.handleProcs = &handles.procs;
    record.bufferProcs = &buffers.procs;
    record.platformData = &platform;
    record.sSPBasic = &suites.basic;
    record.bigDocumentData = &big;

    script.BeginRun();
    record.descriptorParameters = &script.parameters;
}

int16_t FakeHost::Call(PluginMainProc pluginMain, int16_t selector) {
    NoteCall("PluginMain " + std::to_string(selector));
    int16_t result = resultOnEntry;
    FilterRecord before;
    std::memcpy(&before, &record, sizeof(before));
    const std::vector<Region> regions = SaveRegions(*this);
    pixels.hasAdvanceFailed = false;
    runningResult = &result;
    if (selector == kFilterSelectorAbout) {
        about = {};
        about.platformData = record.platformData;
        about.sSPBasic = record.sSPBasic;
        about.plugInRef = this;
        pluginMain(selector, &about, &data, &result);
    } else {
        pluginMain(selector, &record, &data, &result);
    }
    if (onReturn) onReturn(selector);
    runningResult = nullptr;
    CheckRecord(guarded, before, selector);
    CheckRegions(regions, selector);
    lastResult = result;
    return result;
}

void FakeHost::EndRun(bool isGood) {
    if (isGood)
        pixels.Commit();
    else
        document.result = document.source;
    pixels.Drop();
}

int16_t FakeHost::RunFilter(PluginMainProc pluginMain, RunKind kind) {
    if (kind == RunKind::kAbout) return Call(pluginMain, kFilterSelectorAbout);

    BeginRun();
    for (int16_t selector : {kFilterSelectorParameters, kFilterSelectorPrepare, kFilterSelectorStart}) {
        if (selector == kFilterSelectorParameters && kind == RunKind::kRepeat) continue;
        if (const int16_t result = Call(pluginMain, selector)) {
            EndRun(false);
            return result;
        }
    }

    // Once Start has succeeded, the host always sends Finish.
    int16_t result = kNoErr;
    for (int continues = 0; result == kNoErr && pixels.IsAnythingAsked(); ++continues) {
        if (continues == kMaxContinues) {
            ReportFault("the filter never stops asking for more");
            result = kParamErr;
            break;
        }
        result = pixels.Deliver();
        if (result == kNoErr) result = Call(pluginMain, kFilterSelectorContinue);
    }
    EndRun(result == kNoErr);
    const int16_t finished = Call(pluginMain, kFilterSelectorFinish);
    script.TakeRecorded();
    return result ? result : finished;
}

std::string FakeHost::Faults() {
    pixels.Check();
    handles.blocks.CheckGuards();
    buffers.blocks.CheckGuards();
    std::string text;
    for (const std::string& fault : faults) text += fault + "\n";
    return text;
}

std::string FakeHost::StillHeld() const {
    std::string text;
    AppendHeld(text, handles.blocks);
    AppendHeld(text, buffers.blocks);
    if (const int count = registry.CountLiveDescriptors()) text += std::to_string(count) + " action descriptors\n";
    if (const int count = script.CountOpenTokens()) text += std::to_string(count) + " open descriptor tokens\n";
    for (const auto& [name, count] : suites.held)
        if (count) text += "suite " + name + " acquired " + std::to_string(count) + "\n";
    return text;
}

}  // namespace stairmelt
