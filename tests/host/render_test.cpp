// One rendering run: what is requested from the host, what is stored, and the resulting image.
#include "tests/support/plugin_run.h"

namespace stairmelt {

namespace {

class Render : public PluginRun {
protected:
    // Up to and with Start, silently.
    int16_t Start() {
        host.script.played = {{kThsh, 10}};
        host.script.playInfo = kPlugInDialogDontDisplay;
        host.BeginRun();
        Call(kFilterSelectorParameters);
        host.log.clear();
        host.record.inLoPlane = host.record.outLoPlane = 1;  // of an earlier run
        return Call(kFilterSelectorStart);
    }
};

}  // namespace

TEST_F(Render, EveryFormatGoesThroughItsKernel) {
    for (const KernelCase& format : kAllKernels) {
        if (format.channels == 2 && format.extra != 0) continue;  // no mode of the host counts two and one
        host.document = DocumentOf(format, 37, 23, 5);
        EXPECT_EQ(RunScript({{kThsh, 12}, {kSftn, 80}, {kBias, 20}}), kNoErr);
        EXPECT_TRUE(host.document.result == Smoothed(format, 12, 80, 20)) << format.name;
        EXPECT_FALSE(host.document.result == host.document.source) << format.name;
        EXPECT_EQ(host.pixels.advances, 1) << format.name;
    }
}

TEST_F(Render, AsksForTheWholeImageAtOnceWhateverIsSelected) {
    host.document.selection = VRect{3, 4, 9, 12};
    EXPECT_EQ(Start(), kNoErr);
    EXPECT_EQ(Logged({"advanceState", "progressProc", "abortProc"}), (Lines{"advanceState", "progressProc 1 1"}));
    const VRect in = host.big.inRect32, out = host.big.outRect32;
    EXPECT_EQ(in.bottom | in.right | in.top | in.left | out.bottom | out.right | out.top | out.left, 0);
    EXPECT_EQ(int16_t{host.record.inLoPlane}, 0);
    EXPECT_EQ(int16_t{host.record.inHiPlane}, 2);
    EXPECT_EQ(int16_t{host.record.outHiPlane}, 2);
    EXPECT_EQ(host.pixels.input.rect.right, 20);
    EXPECT_EQ(host.pixels.output.rect.bottom, 14);

    // Continue empties the output rectangle, and never the input.
    host.big.inRect32 = {1, 2, 3, 4};
    host.big.outRect32 = {1, 2, 3, 4};
    Call(kFilterSelectorContinue);
    EXPECT_EQ(host.big.inRect32.bottom, 3);
    EXPECT_EQ(host.big.outRect32.bottom, 0);

    // The host restores what lies outside the selection.
    EXPECT_TRUE(host.record.autoMask);
    host.record.autoMask = 0;
    host.EndRun(true);
    EXPECT_TRUE(host.document.result == Smoothed(10, 70, 0));
}

TEST_F(Render, OneFormOfCoordinatesIsUsedThroughout) {
    // The unused form holds other numbers, which would change the result.
    EXPECT_EQ(RunScript({{kThsh, 10}}), kNoErr);
    host.BeginRun();
    host.record.imageSize = {3, 3};
    host.record.inRect = {7, 7, 7, 7};
    host.record.outRect = {8, 8, 8, 8};
    EXPECT_EQ(Call(kFilterSelectorStart), kNoErr);
    EXPECT_EQ(Rect{host.record.inRect}.top, 7);
    EXPECT_EQ(Rect{host.record.outRect}.bottom, 8);
    host.EndRun(true);
    EXPECT_TRUE(host.document.result == Smoothed(10, 70, 0));

    host.failures.noBigDocument = true;
    EXPECT_EQ(RunScript({{kThsh, 10}}), kNoErr);
    EXPECT_TRUE(host.document.result == Smoothed(10, 70, 0));
    const Rect out = host.record.outRect;
    EXPECT_EQ(out.right, 0);
}

TEST_F(Render, WithoutItsHandlesOrPixelsStartEndsEarly) {
    host.failures.calls["advanceState"] = {1, kUserCanceledErr};
    EXPECT_EQ(Start(), kUserCanceledErr);
    EXPECT_EQ(Logged({"progressProc"}), Lines{});
    EXPECT_EQ(host.big.outRect32.right, 20) << "rectangles stay as requested";
    host.failures = {};
    host.EndRun(false);

    // A host that brings back the block but not the word, and one that brings back neither.
    host.script.played.clear();
    const intptr_t word = host.data;
    host.data = 0;
    host.BeginRun();
    EXPECT_EQ(Call(kFilterSelectorStart), kMemFullErr);
    host.data = word;
    const Handle block = host.record.parameters;
    host.record.parameters = nullptr;
    host.log.clear();
    EXPECT_EQ(Call(kFilterSelectorStart), kFilterBadParameters);
    EXPECT_EQ(Call(kFilterSelectorFinish), kFilterBadParameters);
    EXPECT_EQ(Logged({"lockProc", "advanceState", "AcquireSuite", "openWrite"}), Lines{});
    host.record.parameters = block;
}

TEST_F(Render, FailedKernelsEndLikeTheOthers) {
    constexpr int16_t kParameterError = 21069, kMemoryError = 17741;  // the low halves of the kernel's codes
    struct Row {
        const char* name;
        int32_t length;                         // of both sides, pixels
        void (*deliver)(FilterRecord& record);  // what the host does wrong after the delivery
        int16_t result;
    };
    const Row rows[] = {
        {"no input", 20, [](FilterRecord& record) { record.inData = nullptr; }, kParameterError},
        {"no output", 20, [](FilterRecord& record) { record.outData = nullptr; }, kParameterError},
        {"no room for the edge map", INT32_MAX, [](FilterRecord&) {}, kMemoryError},
    };
    for (const Row& row : rows) {
        host.onAdvance = [&] {
            EXPECT_EQ(host.big.inRect32.right, row.length) << row.name;
            EXPECT_EQ(host.big.outRect32.bottom, row.length) << row.name;
            // A small delivery, whatever was asked for: the kernel has to give up before it looks at pixels.
            host.big.inRect32 = host.big.outRect32 = {0, 0, 14, 20};
            const OSErr result = host.pixels.Deliver();
            row.deliver(host.record);
            return result;
        };
        host.script.played = {{kThsh, 10}};
        host.script.playInfo = kPlugInDialogDontDisplay;
        host.BeginRun();
        Call(kFilterSelectorParameters);
        host.big.imageSize32 = {row.length, row.length};
        host.log.clear();
        EXPECT_EQ(Call(kFilterSelectorStart), row.result) << row.name;
        EXPECT_EQ(Logged({"progressProc"}), Lines{"progressProc 1 1"}) << row.name;
        EXPECT_FALSE(host.pixels.IsAnythingAsked()) << row.name;
        host.EndRun(false);
    }
}

}  // namespace stairmelt
