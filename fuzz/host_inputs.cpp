#include "fuzz/host_inputs.h"

#include <iterator>
#include <set>
#include <string>

#include "fuzz/drawn_picture.h"
#include "host/parameters.h"
#include "resources/plugin_ids.h"
#include "tests/support/kernel_list.h"

namespace stairmelt {

namespace {

void ReadFormat(FakeDocument& document, ByteSource& bytes) {
    if (bytes.OneIn(2)) {
        constexpr int16_t kModes[] = {kModeGrayScale, kModeMultichannel, kModeRGBColor, kModeCMYKColor};
        constexpr int32_t kDepths[] = {8, 16, 32};
        const int channels = bytes.Between(1, 4);
        document.imageMode = kModes[channels - 1];
        document.hasTransparency = channels != 2 && bytes.OneIn(2);
        document.planes = static_cast<int16_t>(channels + (document.hasTransparency ? 1 : 0));
        document.depth = kDepths[bytes.Below(3)];
        return;
    }
    constexpr int32_t kDepths[] = {0, 1, 8, 16, 32, 64, -8, 24};
    document.imageMode = static_cast<int16_t>(bytes.OneIn(4) ? bytes.Wild() : bytes.Below(20));
    document.planes = static_cast<int16_t>(bytes.Between(-1, 7));
    document.depth = kDepths[bytes.Byte() % std::size(kDepths)];
    document.hasTransparency = bytes.OneIn(2);
}

void ReadSides(FakeDocument& document, ByteSource& bytes) {
    const int kind = bytes.Below(32);
    document.width = bytes.Between(1, 64);
    document.height = bytes.Between(1, 24);
    if (kind == 0) document.width = 0;
    if (kind == 1) document.height = 0;
    if (kind != 2 || !bytes.OneIn(2)) return;
    int32_t& side = bytes.OneIn(2) ? document.width : document.height;  // beyond the 16-bit coordinates
    document.width = document.height = 1;
    side = 32760 + bytes.Below(20);
}

DescriptorKeyID ReadKey(ByteSource& bytes) {
    const int choice = bytes.Below(16);
    if (choice < 15) return kParameters[static_cast<size_t>(choice) % std::size(kParameters)].key;
    return bytes.OneIn(2) ? 0 : bytes.Word();
}

}  // namespace

void ReadDocument(FakeDocument& document, ByteSource& bytes) {
    ReadFormat(document, bytes);
    ReadSides(document, bytes);
    document.selection.reset();
    if (bytes.OneIn(4)) {
        const int left = bytes.Below(document.width + 1), top = bytes.Below(document.height + 1);
        document.selection = VRect{top, left, bytes.Between(top, document.height), bytes.Between(left, document.width)};
    }
    document.isFloating = bytes.OneIn(8);
}

void ReadPixels(FakeDocument& document, ByteSource& bytes) {
    // Apart, since a picture takes all the bytes that it gets.
    uint8_t strokes[48];
    for (uint8_t& byte : strokes) byte = bytes.Byte();
    document.source.clear();
    for (const KernelCase& format : kAllKernels) {
        if (format.depth != document.depth || format.channels + format.extra != document.planes) continue;
        ByteSource picture(strokes, sizeof(strokes));
        document.source = DrawPicture(format, document.width, document.height, picture);
        return;
    }
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
    registry.passing.clear();
    if (bytes.OneIn(4)) return;
    StoredValues& values = (bytes.OneIn(8) ? registry.passing : registry.persistent)[PLUGIN_GUID];
    for (int count = bytes.Below(8); count > 0; --count) {
        const DescriptorKeyID key = ReadKey(bytes);
        values.emplace_back(key, bytes.OneIn(4) ? bytes.Wild() : bytes.Below(101));
    }
}

void ReadFailures(Failures& failures, ByteSource& bytes) {
    failures = {};
    for (int count = bytes.Below(5); count > 0; --count) failures.failingCalls.insert(bytes.Between(1, 60));
    Countdown* const countdowns[] = {
        &failures.newProc,          &failures.lockProc,       &failures.advanceState, &failures.openRead,
        &failures.getInteger,       &failures.openWrite,      &failures.putInteger,   &failures.registryGet,
        &failures.registryRegister, &failures.makeDescriptor,
    };
    if (bytes.OneIn(2)) *countdowns[bytes.Byte() % std::size(countdowns)] = bytes.Between(kEveryCall, 4);
    constexpr OSErr kCodes[] = {kUserCanceledErr, kMemFullErr, kFilterBadParameters, kReadErr, 1};
    failures.advanceStateCode = kCodes[bytes.Byte() % std::size(kCodes)];
    constexpr OSErr kReadCodes[] = {kCoercedParamErr, kParamErr, kErrMissingParameter};
    failures.getIntegerCode = kReadCodes[bytes.Byte() % std::size(kReadCodes)];
    if (bytes.OneIn(8)) failures.closeReadCode = static_cast<OSErr>(bytes.Wild());
    failures.missingKeysAreErrors = bytes.OneIn(4);
    if (bytes.OneIn(8)) failures.getIntegerKey = ReadKey(bytes);
    if (bytes.OneIn(8)) failures.putIntegerKey = ReadKey(bytes);
    if (bytes.OneIn(2)) {
        std::set<std::string>& suites = bytes.OneIn(2) ? failures.emptySuites : failures.refusedSuites;
        const uint8_t which = bytes.Byte();
        if (which % 2 != 0) suites.insert(kDescriptorRegistrySuite);
        if (which / 2 % 2 != 0) suites.insert(kActionDescriptorSuite);
    }
    bool* const lacks[] = {
        &failures.noHandleProcs, &failures.noProgressProc,  &failures.noAdvanceState, &failures.noDescriptorParameters,
        &failures.noReadProcs,   &failures.noWriteProcs,    &failures.noBigDocument,  &failures.noBasicSuite,
        &failures.noBufferProcs, &failures.noDisplayPixels, &failures.noPlatformData,
    };
    if (bytes.OneIn(2)) {
        const int which = bytes.Below(65536);
        for (size_t i = 0; i < std::size(lacks); ++i) *lacks[i] = (which >> i & 1) != 0 && bytes.OneIn(2);
    }
    if (bytes.OneIn(16)) failures.hostSig = bytes.Word();
    failures.resultStaysForFinish = bytes.OneIn(8);
    if (bytes.OneIn(8)) failures.resultOnEntry = static_cast<int16_t>(bytes.Wild());
}

}  // namespace stairmelt
