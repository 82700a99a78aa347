// Runs of a small filter in the fake host: the order of selectors, and how pixels reach the filter and come back.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <numeric>

#include "hostkit/fake_host.h"

namespace stairmelt {
namespace {

using Bytes = std::vector<uint8_t>;
using Lines = std::vector<std::string>;

// What the filter under the host does in Start and Continue. A selector with nothing to do returns 0.
std::function<int16_t(FilterRecord&)> gStart, gContinue;

void SmallFilter(int16_t selector, void* record, intptr_t*, int16_t* result) {
    auto* filterRecord = static_cast<FilterRecord*>(record);
    if (selector == kFilterSelectorStart && gStart) *result = gStart(*filterRecord);
    if (selector == kFilterSelectorContinue && gContinue) *result = gContinue(*filterRecord);
}

// These also give the pointers by value: the record is packed, so nothing may bind to its fields.
uint8_t* RowIn(const FilterRecord& record, int y) {
    return static_cast<uint8_t*>(record.inData) + ptrdiff_t{y} * record.inRowBytes;
}

uint8_t* RowOut(const FilterRecord& record, int y) {
    return static_cast<uint8_t*>(record.outData) + ptrdiff_t{y} * record.outRowBytes;
}

void Ask(FilterRecord& record, Rect rect, int16_t loPlane, int16_t hiPlane) {
    record.inRect = record.outRect = rect;
    record.inLoPlane = record.outLoPlane = loPlane;
    record.inHiPlane = record.outHiPlane = hiPlane;
}

void AskForAll(FilterRecord& record) {
    Ask(record, {0, 0, record.imageSize.v, record.imageSize.h}, 0, static_cast<int16_t>(record.planes - 1));
}

void InvertRows(const FilterRecord& record, int rows, int rowLength) {
    for (int y = 0; y < rows; ++y)
        for (int i = 0; i < rowLength; ++i) RowOut(record, y)[i] = static_cast<uint8_t>(255 - RowIn(record, y)[i]);
}

// Inverts a whole RGB image within Start.
int16_t InvertAll(FilterRecord& record) {
    AskForAll(record);
    if (const OSErr error = record.advanceState()) return error;
    InvertRows(record, record.imageSize.v, record.imageSize.h * record.planes);
    record.progressProc(1, 1);
    Ask(record, {}, 0, 0);
    return kNoErr;
}

// 5 x 4 pixels of RGB, every byte different.
FakeDocument SmallDocument() {
    FakeDocument document;
    document.width = 5;
    document.height = 4;
    document.source.resize(60);
    std::iota(document.source.begin(), document.source.end(), uint8_t{1});
    return document;
}

Bytes Inverted(Bytes bytes) {
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(255 - byte);
    return bytes;
}

class FakeHostRun : public testing::Test {
protected:
    FakeHostRun() {
        gStart = gContinue = nullptr;
        host.document = SmallDocument();
    }
    FakeHost host;
};

TEST_F(FakeHostRun, SendsTheSelectorsOfEachKindOfRun) {
    gStart = InvertAll;
    EXPECT_EQ(host.RunFilter(SmallFilter, RunKind::kFromMenu), kNoErr);
    EXPECT_EQ(host.log, (Lines{"PluginMain 1", "PluginMain 2", "PluginMain 3", "advanceState", "progressProc 1 1",
                               "PluginMain 5"}));
    EXPECT_EQ(host.document.result, Inverted(host.document.source));

    host.log.clear();
    host.document.source = host.document.result;
    EXPECT_EQ(host.RunFilter(SmallFilter, RunKind::kRepeat), kNoErr);
    EXPECT_EQ(host.log, (Lines{"PluginMain 2", "PluginMain 3", "advanceState", "progressProc 1 1", "PluginMain 5"}));
    EXPECT_EQ(host.document.result, SmallDocument().source);

    host.log.clear();
    EXPECT_EQ(host.RunFilter(SmallFilter, RunKind::kAbout), kNoErr);
    EXPECT_EQ(host.log, (Lines{"PluginMain 0"}));
    EXPECT_EQ(host.Faults() + host.StillHeld(), "");
}

TEST_F(FakeHostRun, FailedStartEndsTheRunAndFailedContinueStillFinishes) {
    gStart = InvertAll;
    host.failures.advanceState = 1;
    EXPECT_EQ(host.RunFilter(SmallFilter, RunKind::kFromMenu), kUserCanceledErr);
    EXPECT_EQ(host.log.back(), "advanceState");

    gStart = [](FilterRecord& record) {
        AskForAll(record);
        return kNoErr;
    };
    gContinue = [](FilterRecord& record) {
        InvertRows(record, 4, 15);
        return kReadErr;
    };
    EXPECT_EQ(host.RunFilter(SmallFilter, RunKind::kRepeat), kReadErr);
    EXPECT_EQ(host.log.back(), "PluginMain 5");
    EXPECT_EQ(host.document.result, host.document.source);
}

TEST_F(FakeHostRun, ServesPiecesWithSomeOfThePlanesThroughContinue) {
    host.document.depth = 16;
    host.document.source.resize(120);
    std::iota(host.document.source.begin(), host.document.source.end(), uint8_t{1});
    int16_t y = 0;
    gStart = [](FilterRecord& record) {
        Ask(record, {0, 1, 1, 4}, 1, 2);
        return kNoErr;
    };
    gContinue = [&](FilterRecord& record) {
        InvertRows(record, 1, 3 * 2 * 2);
        ++y;
        Ask(record, y < 4 ? Rect{y, 1, static_cast<int16_t>(y + 1), 4} : Rect{}, 1, 2);
        return kNoErr;
    };
    EXPECT_EQ(host.RunFilter(SmallFilter, RunKind::kRepeat), kNoErr);
    EXPECT_EQ(host.Faults(), "");
    for (size_t i = 0; i < 120; ++i) {
        const size_t column = i / 6 % 5, plane = i / 2 % 3;
        const bool isAsked = column >= 1 && column < 4 && plane >= 1;
        const uint8_t old = host.document.source[i];
        EXPECT_EQ(host.document.result[i], isAsked ? 255 - old : old) << "row " << i / 30 << " byte " << i % 30;
    }
}

TEST_F(FakeHostRun, EachAdvanceMovesTheBuffersAndCommitsTheOldOutput) {
    gStart = [&](FilterRecord& record) {
        AskForAll(record);
        EXPECT_EQ(record.advanceState(), kNoErr);
        const void *firstIn = record.inData, *firstOut = record.outData;
        const int32_t firstRowBytes = record.outRowBytes;
        EXPECT_GT(record.inRowBytes, 15);
        EXPECT_NE(record.inRowBytes, record.outRowBytes);
        for (int y = 0; y < 4; ++y)
            EXPECT_EQ(std::memcmp(RowOut(record, y), RowIn(record, y), 15), 0) << "not prefilled, row " << y;
        RowOut(record, 2)[4] = 200;

        EXPECT_EQ(record.advanceState(), kNoErr);
        EXPECT_NE(RowIn(record, 0), firstIn);
        EXPECT_NE(RowOut(record, 0), firstOut);
        EXPECT_NE(record.outRowBytes, firstRowBytes);
        EXPECT_EQ(host.document.result[2 * 15 + 4], 200);

        // Asking for the input alone leaves no output.
        record.outRect = {};
        EXPECT_EQ(record.advanceState(), kNoErr);
        EXPECT_NE(RowIn(record, 0), nullptr);
        EXPECT_EQ(RowOut(record, 0), nullptr);
        record.inRect = {};
        return kNoErr;
    };
    EXPECT_EQ(host.RunFilter(SmallFilter, RunKind::kRepeat), kNoErr);
    EXPECT_EQ(host.pixels.advances, 3);
    EXPECT_EQ(host.Faults(), "");
}

TEST_F(FakeHostRun, RefusesRequestsBeyondTheImage) {
    const struct {
        const char* name;
        Rect rect;
        int16_t loPlane, hiPlane;
    } cases[] = {
        {"above", {-1, 0, 4, 5}, 0, 2},
        {"right of it", {0, 0, 4, 6}, 0, 2},
        {"plane 3", {0, 0, 4, 5}, 0, 3},
        {"plane -1", {0, 0, 4, 5}, -1, 2},
        {"planes the wrong way", {0, 0, 4, 5}, 2, 1},
    };
    for (const auto& c : cases) {
        host.BeginRun();
        Ask(host.record, c.rect, c.loPlane, c.hiPlane);
        EXPECT_EQ(host.record.advanceState(), kFilterBadParameters) << c.name;
        EXPECT_EQ(RowIn(host.record, 0), nullptr) << c.name;
    }
}

TEST_F(FakeHostRun, AdvanceMustNotBeTriedAgainInOneSelector) {
    gStart = gContinue = [](FilterRecord& record) { return record.advanceState(); };
    host.failures.advanceState = 1;
    host.Call(SmallFilter, kFilterSelectorStart);
    host.Call(SmallFilter, kFilterSelectorContinue);
    EXPECT_EQ(host.Faults(), "");

    gStart = [this](FilterRecord& record) {
        host.onAdvance = [] { return kMemFullErr; };
        EXPECT_EQ(record.advanceState(), kMemFullErr);
        host.onAdvance = nullptr;
        return record.advanceState();
    };
    EXPECT_EQ(host.Call(SmallFilter, kFilterSelectorStart), kNoErr);
    EXPECT_EQ(host.Faults(), "advanceState again, after it failed in this selector\n");
}

TEST_F(FakeHostRun, KeepsTheResultInsideTheSelection) {
    host.document.selection = VRect{1, 2, 3, 4};
    for (const bool isMasked : {true, false}) {
        gStart = [=](FilterRecord& record) {
            EXPECT_EQ(record.filterRect.left, 2);
            record.autoMask = isMasked;
            return InvertAll(record);
        };
        EXPECT_EQ(host.RunFilter(SmallFilter, RunKind::kRepeat), kNoErr);
        Bytes wanted = Inverted(host.document.source);
        for (size_t i = 0; isMasked && i < 60; ++i) {
            const size_t row = i / 15, column = i / 3 % 5;
            if (row < 1 || row >= 3 || column < 2 || column >= 4) wanted[i] = host.document.source[i];
        }
        EXPECT_EQ(host.document.result, wanted) << "masked " << isMasked;
    }
}

TEST_F(FakeHostRun, FloatingSelectionBringsItsMaskWithEachDelivery) {
    host.document.selection = VRect{1, 2, 3, 4};
    host.document.isFloating = true;
    gStart = [](FilterRecord& record) {
        EXPECT_EQ(record.isFloating, 1);
        AskForAll(record);
        EXPECT_EQ(record.advanceState(), kNoErr);
        const auto* mask = static_cast<const uint8_t*>(record.maskData);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 5; ++x)
                EXPECT_EQ(mask[y * record.maskRowBytes + x], y >= 1 && y < 3 && x >= 2 && x < 4 ? 255 : 0)
                    << x << ", " << y;
        Ask(record, {}, 0, 0);
        return kNoErr;
    };
    EXPECT_EQ(host.RunFilter(SmallFilter, RunKind::kRepeat), kNoErr);
    EXPECT_EQ(host.Faults(), "");
}

TEST_F(FakeHostRun, BigDocumentTakesTheFormThatThePlugInTurnedOn) {
    host.document = {};
    host.document.width = 40000;
    host.document.height = 2;
    host.document.planes = 1;
    host.document.imageMode = kModeGrayScale;
    host.BeginRun();
    FilterRecord& record = host.record;
    EXPECT_EQ(record.imageSize.h, 32767);
    EXPECT_EQ(record.filterRect.right, 0);
    EXPECT_EQ(host.big.imageSize32.h, 40000);
    EXPECT_EQ(host.big.filterRect32.right, 40000);

    host.big.outRect32 = {0, 39990, 2, 40000};
    EXPECT_FALSE(host.pixels.IsAnythingAsked()) << "the 32-bit form is off";
    host.big.PluginUsing32BitCoordinates = 1;
    record.inRect = {0, 0, 2, 100};
    EXPECT_EQ(record.advanceState(), kNoErr);
    EXPECT_EQ(RowIn(record, 0), nullptr) << "the 16-bit form is off";
    RowOut(record, 1)[9] = 77;
    host.EndRun(true);
    EXPECT_EQ(host.document.result.back(), 77);
    EXPECT_EQ(host.Faults(), "");
}

TEST_F(FakeHostRun, TellsStrayWrites) {
    const struct {
        const char* fault;
        std::function<void(FilterRecord&)> write;
    } cases[] = {
        {"stray write in the padding of the output buffer, row 1\n", [](FilterRecord& r) { RowOut(r, 1)[15] = 0; }},
        {"stray write in the padding of the input buffer, row 0\n", [](FilterRecord& r) { RowIn(r, 1)[-1] = 0; }},
        {"write into the input buffer\n", [](FilterRecord& r) { ++RowIn(r, 3)[14]; }},
        {"stray write beside the record\n",
         [](FilterRecord& r) {
             (reinterpret_cast<GuardedRecord*>(reinterpret_cast<uint8_t*>(&r) - 64))->after[3] = 0;
         }},
        {"selector 3 changed the record at byte 580\n", [](FilterRecord& r) { r.reserved[20] = 1; }},
        {"selector 3 changed the record at byte 32\n", [](FilterRecord& r) { r.planes = 4; }},
        {"selector 3 changed filterRect32\n", [](FilterRecord& r) { --r.bigDocumentData->filterRect32.bottom; }},
        {"selector 3 changed the handle routines\n", [](FilterRecord& r) { r.handleProcs->newProc = nullptr; }},
        {"selector 3 changed the basic suite\n", [](FilterRecord& r) { r.sSPBasic->Undefined = nullptr; }},
#if !defined(__SANITIZE_ADDRESS__)  // which ends the program at these
        {"stray write beside the output buffer\n", [](FilterRecord& r) { RowOut(r, 0)[-1] = 0; }},
        {"stray write beside the output buffer\n", [](FilterRecord& r) { RowOut(r, 3)[15] = 0; }},
#endif
    };
    for (const auto& c : cases) {
        gStart = [&](FilterRecord& record) {
            AskForAll(record);
            EXPECT_EQ(record.advanceState(), kNoErr);
            c.write(record);
            Ask(record, {}, 0, 0);
            return kNoErr;
        };
        host.faults.clear();
        host.RunFilter(SmallFilter, RunKind::kRepeat);
        EXPECT_EQ(host.Faults().substr(0, std::strlen(c.fault)), c.fault);
    }
}

}  // namespace
}  // namespace stairmelt
