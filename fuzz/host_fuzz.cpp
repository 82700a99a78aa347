// Fuzzes the host boundary: selectors in any order through PluginMain, with any image, script and stored values,
// incomplete hosts, and failing calls. In all cases, the plug-in has to write only where it may, give back everything
// except its two handles, and leave either the plain kernel's pixels or the original ones. A normal run at the end has
// to succeed.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "engine/kernel_sets.h"
#include "fuzz/byte_source.h"
#include "fuzz/drawn_picture.h"
#include "fuzz/report.h"
#include "host/image_class.h"
#include "host/parameters.h"
#include "host/plugin_entry.h"
#include "hostkit/probe/probed_host.h"
#include "resources/plugin_ids.h"
#include "tests/support/kernel_list.h"
#include "tests/support/same_pixels.h"
#include "tests/support/stub_dialogs.h"

// Limits the memory for the edge map, so that a huge one is refused as the allocator would, only earlier.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1:max_allocation_size_mb=1024"; }

namespace stairmelt {

namespace {

constexpr int kMaxSteps = 24;

// Every other document has a supported format. The pixels that a kernel can see are a drawn picture.
void ReadDocument(FakeDocument& document, ByteSource& bytes) {
    const KernelCase& format = kAllKernels[bytes.Byte() % std::size(kAllKernels)];
    constexpr int16_t kModes[] = {kModeGrayScale, kModeMultichannel, kModeRGBColor, kModeCMYKColor};
    document = {.width = bytes.Between(0, 64), .height = bytes.Between(0, 24)};
    document.imageMode = kModes[format.channels - 1];
    document.planes = static_cast<int16_t>(format.channels + format.extra);
    document.depth = format.depth;
    document.hasTransparency = format.extra != 0;
    if (bytes.OneIn(2)) document.imageMode = static_cast<int16_t>(bytes.OneIn(4) ? bytes.Wild() : bytes.Below(20));
    if (bytes.OneIn(8)) document.depth = bytes.OneIn(2) ? 1 : 24;
    if (bytes.OneIn(8)) document.planes = static_cast<int16_t>(bytes.Between(-1, 7));
    if (bytes.OneIn(4)) {
        const int left = bytes.Below(document.width + 1), top = bytes.Below(document.height + 1);
        document.selection = VRect{top, left, bytes.Between(top, document.height), bytes.Between(left, document.width)};
    }
    if (bytes.OneIn(64)) document.width = 32760 + bytes.Below(20);  // beyond the 16-bit coordinates
    if (document.depth != format.depth || document.planes != format.channels + format.extra) return;
    uint8_t strokes[48];  // a picture would take all remaining bytes
    for (uint8_t& byte : strokes) byte = bytes.Byte();
    ByteSource picture(strokes, sizeof(strokes));
    document.source = DrawPicture(format, document.width, document.height, picture);
}

DescriptorKeyID ReadKey(ByteSource& bytes) {
    const int choice = bytes.Below(16);
    return choice < 15 ? kParameters[static_cast<size_t>(choice) % std::size(kParameters)].key : bytes.Word();
}

void ReadScript(FakeScript& script, ByteSource& bytes) {
    script.played.clear();
    script.playsWithoutValues = bytes.OneIn(8);
    script.playInfo = static_cast<int16_t>(bytes.OneIn(8) ? bytes.Wild() : bytes.Below(3));
    for (int count = bytes.Below(8); count > 0; --count) {
        ScriptValue value{ReadKey(bytes), bytes.OneIn(4) ? bytes.Wild() : bytes.Below(101)};
        if (bytes.OneIn(8)) value.type = bytes.Word();
        script.played.push_back(value);
    }
}

void ReadStored(FakeRegistry& registry, ByteSource& bytes) {
    registry.persistent.clear();
    for (int count = bytes.Below(8); count > 0; --count) {
        const DescriptorKeyID key = ReadKey(bytes);
        registry.persistent[PLUGIN_GUID].emplace_back(key, bytes.OneIn(4) ? bytes.Wild() : bytes.Below(101));
    }
}

// Chooses what the host lacks from its next run on, and which calls fail.
void ReadFailures(Failures& failures, ByteSource& bytes) {
    failures = {};
    for (int count = bytes.Below(5); count > 0; --count) failures.failingCalls.insert(bytes.Between(1, 60));
    constexpr OSErr kCodes[] = {kUserCanceledErr, kMemFullErr, kFilterBadParameters, kReadErr, 1};
    failures.calls["advanceState"].code = kCodes[bytes.Byte() % std::size(kCodes)];
    if (bytes.OneIn(8)) failures.closeReadCode = static_cast<OSErr>(bytes.Wild());
    if (bytes.OneIn(4)) failures.calls[std::string("AcquireSuite ") + kDescriptorRegistrySuite] = {kEveryCall};
    if (bytes.OneIn(4)) failures.emptySuites.insert(kActionDescriptorSuite);
    bool* const lacks[] = {
        &failures.noHandleProcs, &failures.noProgressProc,  &failures.noAdvanceState, &failures.noDescriptorParameters,
        &failures.noReadProcs,   &failures.noWriteProcs,    &failures.noBigDocument,  &failures.noBasicSuite,
        &failures.noBufferProcs, &failures.noDisplayPixels, &failures.noPlatformData,
    };
    for (int count = bytes.Below(4); count > 0; --count) *lacks[bytes.Byte() % std::size(lacks)] = bytes.OneIn(2);
    if (bytes.OneIn(16)) failures.hostSig = bytes.Word();
    if (bytes.OneIn(8)) failures.resultOnEntry = static_cast<int16_t>(bytes.Wild());
}

bool IsSmoothed(const KernelCase& format, int32_t width, int32_t height, const ParameterBlock& block,
                std::vector<uint8_t> source, const std::vector<uint8_t>& got) {
    std::vector<uint8_t> wanted = source;
    const int32_t stride = width * format.PixelBytes();
    const ImageView from = {width, height, source.data(), stride}, to = {width, height, wanted.data(), stride};
    kPlainKernels.Get(format.channels, format.depth, format.extra)(
        {block.colorThreshold, block.softness, block.bias, nullptr, format.Key(), &from, &to, 0, 0, 0, 0});
    return FirstDifference(format, width, wanted, got).empty();
}

// One case: a session of the host.
class Session {
public:
    explicit Session(ByteSource& input) : bytes_(input) {
        gStubDialogs = {};
        gStubDialogs.whileOpen = [this] { UseDialog(); };
    }
    ~Session() { gStubDialogs = {}; }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void Run() {
        ReadDocument(host_.document, bytes_);
        ReadFailures(host_.failures, bytes_);
        ReadScript(host_.script, bytes_);
        ReadStored(host_.registry, bytes_);
        BeginRun();
        for (int i = 0; i < kMaxSteps && !bytes_.IsEmpty(); ++i) Step();
        RunNormally();
    }

private:
    void Step() {
        const int kind = bytes_.Below(32);
        switch (kind) {
            case 0: return ReadFailures(host_.failures, bytes_);
            case 1: return ReadScript(host_.script, bytes_);
            case 2: return ReadStored(host_.registry, bytes_);
            case 3: ReadDocument(host_.document, bytes_); return BeginRun();
            case 4:
                Lose(reinterpret_cast<Handle>(host_.data));
                host_.data = 0;
                return;
            case 5:
                Lose(Handle{host_.record.parameters});
                host_.record.parameters = nullptr;
                return;
            case 6: return BeginRun();
            case 7: return Send(static_cast<int16_t>(bytes_.Wild()));
            case 8: return Send(kFilterSelectorAbout);
            case 9:
            case 10:
            case 11:  // a whole run
                BeginRun();
                for (int16_t selector : {kFilterSelectorPrepare, kFilterSelectorStart, kFilterSelectorFinish})
                    if (Send(selector); host_.lastResult != kNoErr) return host_.EndRun(false);
                return host_.EndRun(true);
            default: Send(static_cast<int16_t>(1 + kind % 5));
        }
    }

    // A host that forgets a handle can't dispose of it.
    void Lose(Handle handle) { lost_ += handle != nullptr ? 1 : 0; }

    void BeginRun() {
        TakeScript();
        host_.BeginRun();
        played_ = host_.script.parameters.descriptor;
    }

    // The host has to dispose of recorded values, and of a script that the plug-in never read.
    void TakeScript() {
        for (const Handle handle : {played_, host_.script.parameters.descriptor})
            for (MovableBlock& block : host_.handles.blocks.made)
                if (&block.inner == handle && block.isLive) host_.handles.blocks.Dispose(block);
        host_.script.parameters.descriptor = nullptr;
    }

    void UseDialog() {
        Require(gParameterBlock != nullptr && gShowDialog != nullptr, "the dialog opened without its values");
        if (bytes_.OneIn(2))
            for (const Parameter& parameter : kParameters) gParameterBlock->*parameter.field = bytes_.Wild();
        gStubDialogs.isAccepted = !bytes_.OneIn(4);
    }

    // Sends the selector and checks everything that has to hold in any case.
    void Send(int16_t selector) {
        const std::string name = "selector " + std::to_string(selector);
        const int16_t result = host_.Call(PluginMain, selector);
        constexpr int16_t kKernelMemoryResult = 0x454D;  // low half of the kernel's code
        const int16_t known[] = {kNoErr,
                                 kMemFullErr,
                                 kFilterBadParameters,
                                 kFilterBadMode,
                                 kUserCanceledErr,
                                 host_.failures.calls["advanceState"].code,
                                 host_.resultOnEntry,
                                 kKernelMemoryResult};
        Require(std::ranges::find(known, result) != std::end(known), name + ": result " + std::to_string(result));
        if (selector == kFilterSelectorStart && result == kNoErr) {
            Require(!host_.pixels.IsAnythingAsked(), "a successful Start requests more");
            CheckPixels();
        }
        if (selector == kFilterSelectorFinish && host_.script.parameters.descriptor != played_) TakeScript();
        CheckHeld(name);
        const std::string faults = host_.Faults();
        Require(faults.empty(), name + ": " + faults);
    }

    // After Start, the block holds the kernel's values.
    void CheckPixels() {
        const Delivery& output = host_.pixels.output;
        const int32_t width = output.rect.right - output.rect.left, height = output.rect.bottom - output.rect.top;
        if (width <= 0 || height <= 0) return;
        const auto format = std::ranges::find(kAllKernels, ClassifyImage(), &KernelCase::Key);
        Require(format != std::end(kAllKernels), "a key without a kernel");
        const size_t rowBytes = static_cast<size_t>(width) * static_cast<size_t>(format->PixelBytes());
        std::vector<uint8_t> source, got;  // narrower than a document beyond the 16-bit coordinates
        for (int32_t y = 0; y < height; ++y) {
            const uint8_t* const from = &host_.document.source[static_cast<size_t>(y) * host_.document.RowBytes()];
            const uint8_t* const to = output.memory.Data() + static_cast<ptrdiff_t>(y) * output.rowBytes;
            source.insert(source.end(), from, from + rowBytes);
            got.insert(got.end(), to, to + rowBytes);
        }
        ParameterBlock block;
        std::memcpy(&block, *host_.record.parameters, sizeof(block));
        Require(IsSmoothed(*format, width, height, block, source, got), std::string("wrong pixels in ") + format->name);
    }

    void CheckHeld(const std::string& name) const {
        Require(host_.handles.blocks.CountLocked() == 0, name + ": a handle stayed locked");
        constexpr int kKept = 2, kScript = 1;
        Require(host_.handles.blocks.CountLive() <= lost_ + kKept + kScript, name + ": handles leaked");
        Require(host_.buffers.blocks.CountLive() == 0, name + ": buffers leaked");
        Require(host_.registry.CountLiveDescriptors() == 0, name + ": action descriptors leaked");
        Require(host_.script.CountOpenTokens() == 0, name + ": script tokens left open");
        for (const auto& [suite, count] : host_.suites.held) Require(count == 0, name + ": suite " + suite + " held");
    }

    // Runs without a dialog, with a script, on a picture of a supported format.
    void RunNormally() {
        host_.failures = {};
        BeginRun();
        const KernelCase& format = kAllKernels[4];
        host_.document = {.width = 40, .height = 9};
        uint8_t strokes[64];
        for (size_t i = 0; i < sizeof(strokes); ++i) strokes[i] = static_cast<uint8_t>(i * 37);
        ByteSource picture(strokes, sizeof(strokes));
        host_.document.source = DrawPicture(format, 40, 9, picture);
        const ParameterBlock used{20, 90, 30, -1, -1};
        host_.script.played = {{KEY_THRESHOLD, 20}, {KEY_SOFTNESS, 90}, {KEY_BIAS, 30}};
        host_.script.playInfo = kPlugInDialogDontDisplay;
        Require(host_.RunFilter(PluginMain, RunKind::kFromMenu) == kNoErr, "a normal run failed");
        Require(IsSmoothed(format, 40, 9, used, host_.document.source, host_.document.result),
                "a normal run's pixels are wrong");
        Require(host_.script.recorded == host_.script.played, "a normal run recorded other values");
        CheckHeld("a normal run");
        Require(host_.Faults().empty(), "a normal run: " + host_.Faults());
    }

    ByteSource& bytes_;
    ProbedHost host_;
    int lost_ = 0;             // handles that the host has forgotten
    Handle played_ = nullptr;  // the played values' handle, disposed of or not
};

}  // namespace

}  // namespace stairmelt

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    stairmelt::ByteSource bytes(data, size);
    stairmelt::Session(bytes).Run();
    return 0;
}
