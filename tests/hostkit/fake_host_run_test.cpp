// Runs of a small filter in the fake host: how pixels reach it and come back, and which of its faults are told.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <numeric>

#include "hostkit/probe/probed_host.h"

namespace stairmelt {
namespace {

// What the filter under the host does in Start.
std::function<int16_t(FilterRecord&)> gStart;

void SmallFilter(int16_t selector, void* record, intptr_t*, int16_t* result) {
    if (selector == kFilterSelectorStart) *result = gStart(*static_cast<FilterRecord*>(record));
}

// These also give the pointers by value: the record is packed, so nothing may bind to its fields.
uint8_t* RowIn(const FilterRecord& record, int y) {
    return static_cast<uint8_t*>(record.inData) + ptrdiff_t{y} * record.inRowBytes;
}

uint8_t* RowOut(const FilterRecord& record, int y) {
    return static_cast<uint8_t*>(record.outData) + ptrdiff_t{y} * record.outRowBytes;
}

constexpr int kRowLength = 15;  // 5 x 4 pixels of RGB, every byte different

class FakeHostRun : public testing::Test {
protected:
    FakeHostRun() {
        host.document.width = 5;
        host.document.height = 4;
        host.document.source.resize(4 * kRowLength);
        std::iota(host.document.source.begin(), host.document.source.end(), uint8_t{1});
    }

    // Runs a filter that asks for the whole image, does this with it, and asks for nothing more.
    void Filter(const std::function<void(FilterRecord&)>& work) {
        gStart = [&](FilterRecord& record) {
            record.inRect = record.outRect = {0, 0, 4, 5};
            record.inHiPlane = record.outHiPlane = 2;
            EXPECT_EQ(record.advanceState(), kNoErr);
            work(record);
            record.inRect = record.outRect = {};
            return kNoErr;
        };
        EXPECT_EQ(host.RunFilter(SmallFilter, RunKind::kRepeat), kNoErr);
    }

    ProbedHost host;
};

TEST_F(FakeHostRun, EachAdvanceMovesThePaddedBuffersAndCommitsTheOldOutput) {
    Filter([&](FilterRecord& record) {
        const void *firstIn = record.inData, *firstOut = record.outData;
        const int32_t firstRowBytes = record.outRowBytes;
        EXPECT_GT(record.inRowBytes, kRowLength);
        EXPECT_NE(record.inRowBytes, record.outRowBytes);
        for (int y = 0; y < 4; ++y)
            EXPECT_EQ(std::memcmp(RowOut(record, y), RowIn(record, y), kRowLength), 0) << "not prefilled, row " << y;
        RowOut(record, 2)[4] = 200;

        EXPECT_EQ(record.advanceState(), kNoErr);
        EXPECT_NE(RowIn(record, 0), firstIn);
        EXPECT_NE(RowOut(record, 0), firstOut);
        EXPECT_NE(record.outRowBytes, firstRowBytes);
        EXPECT_EQ(host.document.result[2 * kRowLength + 4], 200);
    });
    EXPECT_EQ(host.Faults(), "");
}

TEST_F(FakeHostRun, RefusesRequestsBeyondTheImageAndTellsOfASecondTry) {
    gStart = [](FilterRecord& record) {
        record.inRect = {0, 0, 4, 6};
        EXPECT_EQ(record.advanceState(), kFilterBadParameters) << "right of it";
        record.inRect = {0, 0, 4, 5};
        record.inHiPlane = 3;
        return record.advanceState();
    };
    EXPECT_EQ(host.Call(SmallFilter, kFilterSelectorStart), kFilterBadParameters) << "a plane too many";
    EXPECT_EQ(host.Faults(), "advanceState again, after it failed in this selector\n");
}

TEST_F(FakeHostRun, KeepsTheResultInsideTheSelection) {
    host.document.selection = VRect{1, 2, 3, 4};
    for (const bool isMasked : {true, false}) {
        Filter([=](FilterRecord& record) {
            record.autoMask = isMasked;
            for (int y = 0; y < 4; ++y) std::memset(RowOut(record, y), 0, kRowLength);
        });
        for (int i = 0; i < 4 * kRowLength; ++i) {
            const int row = i / kRowLength, column = i % kRowLength / 3;
            const bool isKept = isMasked && (row < 1 || row >= 3 || column < 2 || column >= 4);
            EXPECT_EQ(host.document.result[static_cast<size_t>(i)], isKept ? i + 1 : 0) << isMasked << " byte " << i;
        }
    }
}

TEST_F(FakeHostRun, TellsStrayWrites) {
    const struct {
        const char* fault;
        std::function<void(FilterRecord&)> write;
    } cases[] = {
        {"stray write in the padding of the output buffer, row 1\n", [](FilterRecord& r) { RowOut(r, 1)[15] = 0; }},
        {"write into the input buffer\n", [](FilterRecord& r) { ++RowIn(r, 3)[14]; }},
        {"stray write beside the record\n",
         [](FilterRecord& r) {
             (reinterpret_cast<GuardedRecord*>(reinterpret_cast<uint8_t*>(&r) - 64))->after[3] = 0;
         }},
        {"selector 3 changed the record at byte 580\n", [](FilterRecord& r) { r.reserved[20] = 1; }},
        {"selector 3 changed filterRect32\n", [](FilterRecord& r) { --r.bigDocumentData->filterRect32.bottom; }},
        {"selector 3 changed the handle routines\n", [](FilterRecord& r) { r.handleProcs->newProc = nullptr; }},
#if !defined(__SANITIZE_ADDRESS__)  // which ends the program at these
        {"stray write beside the output buffer\n", [](FilterRecord& r) { RowOut(r, 0)[-1] = 0; }},
        {"stray write beside the output buffer\n", [](FilterRecord& r) { RowOut(r, 3)[15] = 0; }},
#endif
    };
    for (const auto& c : cases) {
        host.faults.clear();
        Filter(c.write);
        EXPECT_EQ(host.Faults().substr(0, std::strlen(c.fault)), c.fault);
    }
}

}  // namespace
}  // namespace stairmelt
