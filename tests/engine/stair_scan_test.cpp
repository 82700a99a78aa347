#include "engine/stair_scan.h"

#include <gtest/gtest.h>

#include "engine/block_scan.h"
#include "tests/support/checksum.h"
#include "tests/support/flag_text.h"
#include "tests/support/guarded_image.h"
#include "tests/support/seeded_random.h"

namespace stairmelt {

namespace {

using Gray8 = PixelFormat<Depth8, 1, 0>;

// A source of 100 in even columns and 200 in odd ones, and a destination that starts as its copy.
struct Canvas {
    static constexpr int kSide = 8;

    Canvas()
        : source(kSide, kSide, 1, 0, Pixels()),
          destination(kSide, kSide, 1, 0, Pixels()),
          job{10, 70, 0, nullptr, 0, &source.view, &destination.view, 0, 0, kSide, kSide} {}

    static std::vector<uint8_t> Pixels() {
        std::vector<uint8_t> pixels;
        for (int i = 0; i < kSide * kSide; ++i) pixels.push_back(i % 2 == 0 ? 100 : 200);
        return pixels;
    }

    // The pixels that differ from the source: "x,y value" each.
    std::vector<std::string> Changes() {
        EXPECT_EQ(destination.StrayWrite(), "");
        std::vector<std::string> changes;
        const std::vector<uint8_t> before = Pixels(), after = destination.Pixels();
        for (int i = 0; i < kSide * kSide; ++i) {
            const size_t at = static_cast<size_t>(i);
            if (before[at] == after[at]) continue;
            changes.push_back(std::to_string(i % kSide) + "," + std::to_string(i / kSide) + " " +
                              std::to_string(after[at]));
        }
        return changes;
    }

    GuardedImage source, destination;
    KernelJob job;
};

using Changes = std::vector<std::string>;

Changes ScanFlags(const FlagRows& flags) {
    Canvas canvas;
    FlagRows rows = flags;
    rows.resize(Canvas::kSide, std::string(Canvas::kSide, '.'));
    EdgeMap map;
    FillMap(map, rows);
    const ScanWeights<Gray8> weights = {0, 11468, 6553};
    StairScan<Gray8>{canvas.job, canvas.source.view, canvas.destination.view, map, weights}.Run();
    return canvas.Changes();
}

}  // namespace

TEST(StairScan, DecidesByFlagsAlone) {
    struct Case {
        const char* name;
        FlagRows flags;
        Changes changes;
    };
    const Case cases[] = {
        {"diagonals alone", {"........", "..c.84.."}, {}},
        {"a bare riser: contact blends on both sides", {"........", "..1....."}, {"2,1 109", "3,1 190"}},
        {"cut by diagonals of both directions", {"........", "..d....."}, {}},
        {"cut by one diagonal", {"........", "..9....."}, {"2,1 109", "3,1 190"}},
        {"a bare tread: nothing", {"........", "..2....."}, {}},
        // Weight 16383 for one pixel: the ramps from both ends of the tread just meet.
        {"a run of 1 to the left, and 1 back", {".2......", "..1....."}, {"2,1 124", "3,1 190"}},
    };
    for (const Case& c : cases) EXPECT_EQ(ScanFlags(c.flags), c.changes) << c.name;
}

// Flags that no picture would give reach every condition of every pattern: a wrong offset or a missing test anywhere in
// the scan, or of its decisions for blocks, changes some pixel of some map.
TEST(StairScan, RandomFlagsGiveThePinnedResult) {
    SeededRandom random(41);
    std::vector<uint8_t> results;
    for (int round = 0; round < 2000; ++round) {
        const int width = 8 + random.Below(16), height = 8 + random.Below(16);
        const int density = 1 + random.Below(5);  // eighths
        EdgeMap map;
        FlagPlanes planes;
        map.Allocate(width, height);
        planes.Allocate(width, height);
        std::vector<uint8_t> pixels;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                int cell = 0;
                for (int flag = 1; flag < 16; flag *= 2) cell |= random.Below(8) < density ? flag : 0;
                if (x == width - 1) cell &= kFlagD;
                if (y == height - 1) cell &= kFlagR;
                *map.CellAt(x, y) = static_cast<uint8_t>(cell);
                planes.SetCell(x, y, static_cast<uint8_t>(cell));
                pixels.push_back(static_cast<uint8_t>(random.Below(256)));
            }
        }
        GuardedImage source(width, height, 1, 0, pixels), destination(width, height, 1, 0, pixels);
        const KernelJob job = {10, random.Below(101), 0, nullptr, 0, &source.view, &destination.view, 0, 0, 0, 0};
        StairScan<Gray8>{job, source.view, destination.view, map, {0, 11468, 6553}}.Run();
        const std::vector<uint8_t> result = destination.Pixels();

        GuardedImage inBlocks(width, height, 1, 0, pixels);
        KernelJob sameJob = job;
        sameJob.destination = &inBlocks.view;
        BlockScan<Gray8>(sameJob, planes, {0, 11468, 6553}).Run();
        ASSERT_TRUE(inBlocks.Pixels() == result) << "in blocks, round " << round;
        results.insert(results.end(), result.begin(), result.end());
    }
    EXPECT_EQ(Checksum(results), 3684746868388553095u);
}

TEST(DiagonalFades, BlendAcrossTheStair) {
    // Softness 100 over 2 steps: weights 13653 and 910, and the half ramp's 24576 and 8193 for what is restored.
    Canvas up;
    up.job.softness = 100;
    *PixelAt<Gray8>(up.destination.view, 3, 3) = 0;  // the first restored pixel
    FadeDiagonal<Gray8>(up.job, 2, 4, kTreadDiagonals[0], 2);
    EXPECT_EQ(up.Changes(), (Changes{"3,3 1", "2,4 120"}));
}

TEST(DiagonalFades, EndAtTheImageBoundsWhateverTheSoftness) {
    for (const int32_t softness : {INT32_MAX, 3276700, 1 << 30, INT32_MIN}) {
        for (const auto& diagonals : {kRiserDiagonals, kTreadDiagonals}) {
            for (int i = 0; i < 4; ++i) {
                Canvas canvas;
                canvas.job.softness = softness;
                FadeDiagonal<Gray8>(canvas.job, 4, 4, diagonals[i], 4);
                EXPECT_EQ(canvas.source.StrayWrite() + canvas.destination.StrayWrite(), "");
            }
        }
    }
}

}  // namespace stairmelt
