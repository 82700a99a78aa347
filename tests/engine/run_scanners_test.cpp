#include "engine/run_scanners.h"

#include <gtest/gtest.h>

#include "engine/dot_test.h"
#include "engine/step_shape.h"
#include "tests/support/flag_text.h"
#include "tests/support/seeded_random.h"

namespace stairmelt {

namespace {

using Scanner = int32_t (*)(int32_t x, int32_t y, const EdgeMap& map);

// A map and the same with rows and columns exchanged: R becomes D and D becomes R, and the diagonals stay.
void FillTransposedPair(EdgeMap& map, EdgeMap& transposed, int width, int height, SeededRandom& random) {
    map.Allocate(width, height);
    transposed.Allocate(height, width);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            // Some flags are likelier than others, so that runs grow and blocks stand alone.
            int cell = random.Below(3) == 0 ? random.Below(16) : (random.Below(2) == 0 ? kFlagR : kFlagD);
            if (x == width - 1) cell &= kFlagD;
            if (y == height - 1) cell &= kFlagR;
            const int exchanged = (cell & (kFlagX | kFlagA)) | (cell & kFlagR) << 1 | (cell & kFlagD) >> 1;
            *map.CellAt(x, y) = static_cast<uint8_t>(cell);
            *transposed.CellAt(y, x) = static_cast<uint8_t>(exchanged);
        }
    }
}

}  // namespace

TEST(RunScanners, MeasureRuns) {
    struct Case {
        const char* name;
        Scanner scan;
        FlagRows map;
        int32_t x, y;
        int32_t length;
    };
    const Case cases[] = {
        {"left: open 2 above beats 1 below", ScanRunLeft, {"....22..", ".....21."}, 6, 1, 2},
        {"left: longer run below wins", ScanRunLeft, {".....2..", "....221."}, 6, 1, 2},
        {"left: closed 1 above wins at once", ScanRunLeft, {".....2..", "....121."}, 6, 1, 1},
        {"left: unconfirmed 4 counts 0", ScanRunLeft, {"..2222..", "......1."}, 6, 1, 0},
        {"left: unconfirmed 4 leaves 2 below", ScanRunLeft, {"..2222..", "....221."}, 6, 1, 2},
        {"left: confirmed 4", ScanRunLeft, {"..2222..", "......12"}, 6, 1, 4},
        {"left: closed 5, confirmed", ScanRunLeft, {".22222..", "1.....12"}, 6, 1, 5},
        {"left: confirmed from above on the second walk", ScanRunLeft, {".......2", "...2221."}, 6, 1, 3},
        {"left: X above drops the first walk", ScanRunLeft, {"....226.", ".....21."}, 6, 1, 1},
        {"left: A drops the second walk", ScanRunLeft, {".....2..", "....229."}, 6, 1, 1},
        {"left: a riser above the tread stops it", ScanRunLeft, {"....32..", "......1."}, 6, 1, 1},
        {"left: next riser at once", ScanRunLeft, {".....2..", ".....31."}, 6, 1, 0},
        {"left: at column 0", ScanRunLeft, {"2...", "1..."}, 0, 1, 0},
        {"right: open 2 above", ScanRunRight, {"..22....", ".1......"}, 1, 1, 2},
        {"right: confirmed 3", ScanRunRight, {"..222...", ".3......"}, 1, 1, 3},
        {"right: unconfirmed 3", ScanRunRight, {"..222...", ".1......"}, 1, 1, 0},
        {"right: 3 below, confirmed from above", ScanRunRight, {".2......", ".1222..."}, 1, 1, 3},
        {"right: A above drops the first walk", ScanRunRight, {".a22....", ".1......"}, 1, 1, 0},
        {"right: to the last column", ScanRunRight, {"..22", ".1.."}, 1, 1, 2},
        {"tail left of 2", MeasureTailLeft, {"....22..", "....221."}, 6, 1, 2},
        {"tail left, 9 counts 7", MeasureTailLeft, {".222222222..", ".2222222221."}, 10, 1, 7},
        {"tail left, 6 counts 5", MeasureTailLeft, {"....222222..", "....2222221."}, 10, 1, 5},
        {"no tail beside a corner", MeasureTailLeft, {"....22..", "....2212"}, 6, 1, 0},
    };
    for (const Case& c : cases) {
        EdgeMap map;
        FillMap(map, c.map);
        EXPECT_EQ(c.scan(c.x, c.y, map), c.length) << c.name;
    }
}

// Also walks every kind of border: any read outside the map would end the test.
TEST(RunScanners, VerticalFormsAreTheHorizontalOnesTransposed) {
    struct Pair {
        const char* name;
        Scanner horizontal, vertical;
    };
    constexpr Pair kPairs[] = {
        {"left, up", ScanRunLeft, ScanRunUp},
        {"right, down", ScanRunRight, ScanRunDown},
        {"tail left, up", MeasureTailLeft, MeasureTailUp},
        {"tail right, down", MeasureTailRight, MeasureTailDown},
    };
    constexpr std::pair<BlockSide, BlockSide> kSides[] = {
        {BlockSide::kLeftOfRiser, BlockSide::kAboveTread},
        {BlockSide::kRightOfRiser, BlockSide::kBelowTread},
    };
    SeededRandom random(3);
    for (int round = 0; round < 300; ++round) {
        const int width = 1 + random.Below(14), height = 1 + random.Below(14);
        EdgeMap map, transposed;
        FillTransposedPair(map, transposed, width, height, random);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                for (const Pair& pair : kPairs) {
                    ASSERT_EQ(pair.horizontal(x, y, map), pair.vertical(y, x, transposed)) << pair.name;
                }
                for (const auto& [horizontal, vertical] : kSides) {
                    for (const int off : {-1, 0, 1}) {
                        ASSERT_EQ(CornerTest(horizontal, x, y + off, width, height, map),
                                  CornerTest(vertical, y + off, x, height, width, transposed));
                    }
                }
            }
        }
    }
}

TEST(CornerTest, FindsADotOfTwoByTwo) {
    // The dot covers columns 3 and 4 of rows 2 and 3.
    const FlagRows rows = {"........", "...22...", "..1.1...", "..1.1...", "........", "........"};
    FlagRows dot = rows;
    dot[3] = "..1232..";
    dot[3] = "..123...";
    struct Case {
        const char* name;
        BlockSide side;
        int32_t x, y;
        bool found;
    };
    const Case cases[] = {
        {"right of its left side, lower row", BlockSide::kRightOfRiser, 2, 3, true},
        {"right of its left side, upper row", BlockSide::kRightOfRiser, 2, 2, true},
        {"left of its right side, lower row", BlockSide::kLeftOfRiser, 4, 3, true},
        {"left of its right side, one column off", BlockSide::kLeftOfRiser, 5, 3, false},
        {"below its top, left column", BlockSide::kBelowTread, 3, 1, true},
        {"above its bottom, right column", BlockSide::kAboveTread, 4, 3, true},
        {"above its bottom, one row off", BlockSide::kAboveTread, 4, 4, false},
    };
    EdgeMap map;
    FillMap(map, dot);
    EXPECT_TRUE(IsIsolatedBlock(3, 2, map));
    EXPECT_FALSE(IsIsolatedBlock(2, 2, map));
    for (const Case& c : cases) EXPECT_EQ(CornerTest(c.side, c.x, c.y, 8, 6, map), c.found) << c.name;
}

TEST(StepShape, SoftnessFollowsTheNextStep) {
    struct Case {
        const char* name;
        int32_t softness, n, farRun, wanted;
    };
    const Case cases[] = {
        {"at the border", 70, 3, 0, 70},
        {"runs of one length", 70, 1, 1, 50},
        {"the same, full softness", 100, 1, 1, 71},
        {"edge turning: twice as long as the next", 70, 4, 2, 75},
        {"next step longer", 70, 2, 3, 25},
        {"next step more than twice as long: truncates toward zero", 70, 2, 5, -25},
        {"a script's softness wraps", INT32_MAX, 1, 1, 0},
    };
    EdgeMap map;
    map.Allocate(8, 8);
    for (const Case& c : cases) {
        EXPECT_EQ(RunSoftness(c.softness, c.n, c.farRun, RunDirection::kLeft, 4, 4, 8, 8, map), c.wanted) << c.name;
    }
}

}  // namespace stairmelt
