// Fuzzes the host boundary: selectors in any order through PluginMain, with any image, script and stored values,
// records that lack parts, and services that fail at any call. After each selector everything but the two handles that
// the plug-in keeps has to be given back, its code has to be one that plugin_entry.h and render.h tell, nothing may be
// written out of place, and the pixels of a good Start have to be those of the plain kernel. Whatever went on before, a
// normal run at the end has to go well.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "engine/kernel_sets.h"
#include "fuzz/byte_source.h"
#include "fuzz/drawn_picture.h"
#include "fuzz/host_inputs.h"
#include "fuzz/report.h"
#include "fuzz/same_samples.h"
#include "host/image_class.h"
#include "host/parameters.h"
#include "host/plugin_entry.h"
#include "hostkit/fake_host.h"
#include "resources/plugin_ids.h"
#include "tests/support/kernel_list.h"
#include "tests/support/stub_dialogs.h"

// Lets an edge map that doesn't fit into memory be refused, as the allocator does, and sooner than it does.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1:max_allocation_size_mb=1024"; }

namespace stairmelt {

namespace {

constexpr int kMostSteps = 24;
// What the kernel's codes come out as: their low halves.
constexpr int16_t kKernelParameterResult = 0x524D, kKernelMemoryResult = 0x454D;

const KernelCase& FormatOf(KernelKey key) {
    for (const KernelCase& format : kAllKernels)
        if (format.Key() == key) return format;
    Fail("a key without a kernel");
}

// A session of the host: one case from its first selector to its end.
class Session {
public:
    explicit Session(ByteSource& input) : bytes_(input) {
        gStubDialogs = {};
        gStubDialogs.whileOpen = [this] { UseDialog(); };
        host_.onAdvance = [this] { return Deliver(); };
    }
    ~Session() { gStubDialogs = {}; }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void Run() {
        ReadDocument(host_.document, bytes_);
        ReadFailures(host_.failures, bytes_);
        ReadScript(host_.script, bytes_);
        ReadStored(host_.registry, bytes_);
        ReadPixels(host_.document, bytes_);
        BeginRun();
        for (int i = 0; i < kMostSteps && !bytes_.IsEmpty(); ++i) Step();
        RunNormally();
    }

private:
    void Step() {
        const int kind = bytes_.Below(32);
        switch (kind) {
            case 0: return ReadFailures(host_.failures, bytes_);
            case 1: return ReadScript(host_.script, bytes_);
            case 2: return ReadStored(host_.registry, bytes_);
            case 3:
                ReadDocument(host_.document, bytes_);
                ReadPixels(host_.document, bytes_);
                return BeginRun();
            case 4: return LoseWord();
            case 5: return LoseBlock();
            case 6: return BeginRun();
            case 7: return ReadRecord();
            case 8: return Send(static_cast<int16_t>(bytes_.Wild()));
            case 9: return Send(kFilterSelectorAbout);
            case 10:
            case 11: return RunAll();
            default: Send(static_cast<int16_t>(1 + kind % 5));
        }
    }

    // As FakeHost::RunFilter does it, except that each selector is checked.
    void RunAll() {
        BeginRun();
        const bool isRepeat = bytes_.OneIn(2);
        for (int16_t selector = isRepeat ? kFilterSelectorPrepare : kFilterSelectorParameters;
             selector <= kFilterSelectorStart; ++selector) {
            Send(selector);
            if (host_.lastResult != kNoErr) return host_.EndRun(false);
        }
        Send(kFilterSelectorFinish);
        host_.EndRun(true);
    }

    void BeginRun() {
        ForgetScript();
        host_.BeginRun();
        played_ = host_.script.parameters.descriptor;
    }

    // Numbers in the record that don't fit the document. Depths and plane counts that a kernel serves would promise it
    // pixels that aren't there; all others have to be refused.
    void ReadRecord() {
        const auto side = [this] { return bytes_.OneIn(2) ? bytes_.Wild() : bytes_.Between(-1, 64); };
        host_.big.imageSize32 = {side(), side()};
        host_.record.imageSize = {static_cast<int16_t>(side()), static_cast<int16_t>(side())};
        host_.big.filterRect32 = {side(), side(), side(), side()};
        if (bytes_.OneIn(4)) {
            const int32_t depth = bytes_.Wild();
            if (depth != 8 && depth != 16 && depth != 32) host_.record.depth = depth;
        }
        if (bytes_.OneIn(4)) {
            const auto planes = static_cast<int16_t>(bytes_.Wild());
            if (planes < 1 || planes > 5) host_.record.planes = planes;
        }
    }

    // A host that forgets what it kept can't dispose of it either.
    void LoseWord() {
        if (host_.data != 0) lost_.push_back(reinterpret_cast<Handle>(host_.data));
        host_.data = 0;
    }

    void LoseBlock() {
        if (host_.record.parameters != nullptr) lost_.push_back(Handle{host_.record.parameters});
        host_.record.parameters = nullptr;
    }

    void UseDialog() {
        Require(gParameterBlock != nullptr && gShowDialog != nullptr, "the dialog opened without its values");
        Require(gFilterRecord->inData != nullptr || IsInputEmpty(), "the dialog opened without the picture");
        if (bytes_.OneIn(2))
            for (const Parameter& parameter : kParameters) gParameterBlock->*parameter.field = bytes_.Wild();
        gStubDialogs.isAccepted = !bytes_.OneIn(4);
    }

    bool IsInputEmpty() const {
        const Delivery& input = host_.pixels.input;
        return input.rect.left >= input.rect.right || input.rect.top >= input.rect.bottom || isDeliveryBroken_;
    }

    OSErr Deliver() {
        const OSErr result = host_.pixels.Deliver();
        isDeliveryBroken_ = result == kNoErr && bytes_.OneIn(32);
        if (isDeliveryBroken_) {
            const int which = bytes_.Below(3);
            if (which != 0) host_.record.inData = nullptr;
            if (which != 1) host_.record.outData = nullptr;
        }
        return result;
    }

    // Sends the selector and checks all that holds whatever happens.
    void Send(int16_t selector) {
        const int16_t atEntry = EntryResult(selector);
        const std::string name = "selector " + std::to_string(selector);
        isDeliveryBroken_ = false;
        const size_t logged = host_.log.size();
        const int16_t result = host_.Call(PluginMain, selector);
        Require(IsDocumented(selector, result, atEntry), name + ": result " + std::to_string(result));
        if (host_.record.hostSig != kPhotoshopSignature && selector != kFilterSelectorAbout)
            Require(host_.log.size() == logged + 1, name + ": calls into a host that isn't the right one");
        if (selector == kFilterSelectorStart && result == kNoErr) {
            Require(!host_.pixels.IsAnythingAsked(), "a good Start asks for more");
            CheckPixels();
        }
        if (selector == kFilterSelectorFinish) TakeRecord();
        CheckHeld(name);
        const std::string faults = host_.Faults();
        Require(faults.empty(), name + ": " + faults);
    }

    int16_t EntryResult(int16_t selector) const {
        if (host_.failures.resultStaysForFinish && selector == kFilterSelectorFinish) return host_.lastResult;
        return host_.failures.resultOnEntry;
    }

    bool IsDocumented(int16_t selector, int16_t result, int16_t atEntry) const {
        if (selector == kFilterSelectorAbout) return result == atEntry;
        if (host_.record.hostSig != kPhotoshopSignature) return result == kFilterBadParameters;
        switch (selector) {
            case kFilterSelectorParameters:
            case kFilterSelectorPrepare: return result == atEntry || result == kMemFullErr;
            case kFilterSelectorStart: return IsResultOfStart(result);
            case kFilterSelectorContinue: return result == atEntry;
            case kFilterSelectorFinish:
                return result == (host_.record.parameters == nullptr ? kFilterBadParameters : atEntry) ||
                       result == kMemFullErr;
            default: return result == kFilterBadParameters;
        }
    }

    bool IsResultOfStart(int16_t result) const {
        if (ClassifyImage() == kUnsupportedImage) return result == kFilterBadMode;
        if (host_.record.parameters == nullptr) return result == kFilterBadParameters;
        for (const int16_t known : {kNoErr, kMemFullErr, kFilterBadParameters, kUserCanceledErr, kKernelMemoryResult})
            if (result == known) return true;
        return result == host_.failures.advanceStateCode || (result == kKernelParameterResult && isDeliveryBroken_);
    }

    // The block's values after Start are those that the kernel was given.
    void CheckPixels() {
        const Delivery& output = host_.pixels.output;
        const int32_t width = output.rect.right - output.rect.left, height = output.rect.bottom - output.rect.top;
        if (width <= 0 || height <= 0) return;
        const KernelCase& format = FormatOf(ClassifyImage());
        const size_t rowBytes = static_cast<size_t>(width) * static_cast<size_t>(format.PixelBytes());
        std::vector<uint8_t> source, got;
        for (int32_t y = 0; y < height; ++y) {
            const uint8_t* const from =
                host_.document.source.data() + static_cast<size_t>(y) * host_.document.RowBytes();
            const uint8_t* const to = output.memory.Data() + static_cast<ptrdiff_t>(y) * output.rowBytes;
            source.insert(source.end(), from, from + rowBytes);
            got.insert(got.end(), to, to + rowBytes);
        }
        ParameterBlock block;
        std::memcpy(&block, *host_.record.parameters, sizeof(block));
        Require(IsSmoothed(format, width, height, block, source, got), std::string("wrong pixels in ") + format.name);
    }

    static bool IsSmoothed(const KernelCase& format, int32_t width, int32_t height, const ParameterBlock& block,
                           std::vector<uint8_t> source, const std::vector<uint8_t>& got) {
        std::vector<uint8_t> wanted = source;
        const int32_t stride = width * format.PixelBytes();
        const ImageView from = {width, height, source.data(), stride}, to = {width, height, wanted.data(), stride};
        const KernelJob job = {
            block.colorThreshold, block.softness, block.bias, nullptr, format.Key(), &from, &to, 0, 0, 0, 0};
        kPlainKernels.Get(format.channels, format.depth, format.extra)(job);
        return FirstDifference(format.depth, wanted, got) == kNoDifference;
    }

    // The played values, unless Start disposed of them, and then what Finish left for the host to keep.
    void ForgetScript() {
        DisposeOf(played_);
        played_ = nullptr;
        if (!IsLive(host_.script.parameters.descriptor)) host_.script.parameters.descriptor = nullptr;
    }

    void TakeRecord() {
        const Handle recorded = host_.script.parameters.descriptor;
        if (recorded == played_) return;
        DisposeOf(recorded);
        host_.script.parameters.descriptor = nullptr;
        DisposeOf(played_);  // Start couldn't read it, or never came
        played_ = nullptr;
    }

    bool IsLive(Handle handle) const {
        for (const MovableBlock& block : host_.handles.blocks.made)
            if (&block.inner == handle) return block.isLive;
        return false;
    }

    void DisposeOf(Handle handle) {
        for (MovableBlock& block : host_.handles.blocks.made)
            if (&block.inner == handle && block.isLive) host_.handles.blocks.Dispose(block);
    }

    void CheckHeld(const std::string& name) const {
        std::vector<Handle> known = lost_;
        known.push_back(Handle{host_.record.parameters});
        known.push_back(reinterpret_cast<Handle>(host_.data));
        known.push_back(host_.script.parameters.descriptor);
        for (const MovableBlock& block : host_.handles.blocks.made) {
            if (!block.isLive) continue;
            Require(!block.isLocked, name + ": " + block.name + " stayed locked");
            const auto isBlock = [&block](Handle handle) { return handle == &block.inner; };
            Require(std::any_of(known.begin(), known.end(), isBlock), name + ": " + block.name + " leaked");
        }
        Require(host_.buffers.blocks.CountLive() == 0, name + ": buffers leaked");
        Require(host_.registry.CountLiveDescriptors() == 0, name + ": action descriptors leaked");
        Require(host_.script.CountOpenTokens() == 0, name + ": script tokens left open");
        for (const auto& [suite, count] : host_.suites.held) Require(count == 0, name + ": suite " + suite + " held");
        Require(host_.suites.blocks == 0, name + ": blocks of the basic suite leaked");
    }

    // A silent run with a script and one with the dialog, on a picture of a served format.
    void RunNormally() {
        ForgetScript();
        host_.EndRun(false);
        host_.failures = {};
        host_.fallibleCalls = 0;
        host_.registry.persistent.clear();
        host_.registry.passing.clear();
        host_.onAdvance = nullptr;
        gStubDialogs = {};
        const KernelCase& format = kAllKernels[4];
        host_.document = {};
        host_.document.width = 40;
        host_.document.height = 9;
        uint8_t strokes[64];
        for (size_t i = 0; i < sizeof(strokes); ++i) strokes[i] = static_cast<uint8_t>(i * 37);
        ByteSource picture(strokes, sizeof(strokes));
        host_.document.source = DrawPicture(format, 40, 9, picture);
        ParameterBlock used{20, 90, 30, -1, -1};
        host_.script.played = {{KEY_THRESHOLD, 20}, {KEY_SOFTNESS, 90}, {KEY_BIAS, 30}};
        host_.script.playsWithoutValues = false;
        host_.script.playInfo = kPlugInDialogDontDisplay;
        for (const bool isSilent : {true, false}) {
            Require(host_.RunFilter(PluginMain, RunKind::kFromMenu) == kNoErr, "a normal run failed");
            Require(gStubDialogs.shown == (isSilent ? 0 : 1), "a normal run's dialog");
            Require(IsSmoothed(format, 40, 9, used, host_.document.source, host_.document.result),
                    "a normal run's pixels are wrong");
            Require(host_.script.recorded == std::vector<ScriptValue>{{KEY_THRESHOLD, used.colorThreshold},
                                                                      {KEY_SOFTNESS, used.softness},
                                                                      {KEY_BIAS, used.bias}},
                    "a normal run recorded other values");
            const StoredValues stored = {{KEY_THRESHOLD, used.colorThreshold},
                                         {KEY_SOFTNESS, used.softness},
                                         {KEY_BIAS, used.bias},
                                         {KEY_WINDOW_X, used.windowPosX},
                                         {KEY_WINDOW_Y, used.windowPosY}};
            Require(host_.registry.persistent[PLUGIN_GUID] == stored, "a normal run stored other values");
            // The stored values come back where a script sets none and wants the dialog, which changes one.
            host_.script.played.clear();
            host_.script.playsWithoutValues = true;
            host_.script.playInfo = kPlugInDialogDisplay;
            used.softness = 55;
            gStubDialogs.whileOpen = [] { gParameterBlock->softness = 55; };
        }
        CheckHeld("a normal run");
        Require(host_.Faults().empty(), "a normal run: " + host_.Faults());
    }

    ByteSource& bytes_;
    FakeHost host_;
    std::vector<Handle> lost_;       // that the host forgot
    Handle played_ = nullptr;        // the played values' handle, disposed of or not
    bool isDeliveryBroken_ = false;  // the last one left out a buffer
};

}  // namespace

}  // namespace stairmelt

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    stairmelt::ByteSource bytes(data, size);
    stairmelt::Session(bytes).Run();
    return 0;
}
