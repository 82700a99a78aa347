// Every form of every kernel gives the same result as the plain one.
#include <algorithm>

#include "engine/instruction_set.h"
#include "tests/engine/run_kernel.h"

namespace stairmelt {

int32_t FirstWrongQuotient();  // lane_division.cpp
bool MixesBytesExactly();      // the same

namespace {

struct Case {
    Picture picture;
    Values values;
};

// Lines of one slope, with some pixels out of place: long runs and diagonals, which a patchwork doesn't have.
std::vector<uint8_t> Lines(const KernelCase& format, int width, int height, SeededRandom& random) {
    const int scale = height > 100 && random.Below(2) == 0 ? 12 : 1;  // steep lines
    const int dx = (random.Below(9) - 4) * scale, dy = random.Below(9) - 4, period = (2 + random.Below(30)) * scale;
    const int ink = random.Below(period), levels[] = {random.Below(256), random.Below(256)};
    std::vector<uint8_t> bytes;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool isInk = ((x * dx + y * dy + 10000) % period <= ink) != (random.Below(60) == 0);
            for (int c = 0; c < format.channels + format.extra; ++c) AppendSample(bytes, format.depth, levels[isInk]);
        }
    }
    return bytes;
}

Case RandomCase(const KernelCase& format, int round, SeededRandom& random) {
    int width = 1 + random.Below(round % 7 == 0 ? 300 : 90), height = 1 + random.Below(round % 7 == 1 ? 90 : 24);
    // Around whole blocks and vectors of them.
    if (round % 5 == 0) width = (random.Below(2) == 0 ? 56 : 224) * (1 + random.Below(2)) + random.Below(4) - 1;
    // Soft ramps that go down into rows that are far from being visited.
    const bool isTall = round % 12 == 3;
    if (isTall) height = 101 + random.Below(300), width = 32 + random.Below(30);
    Case result = {{width, height,
                    round % 3 == 0 ? Lines(format, width, height, random) : Patchwork(format, width, height, random)},
                   {random.Below(60), random.Below(isTall || round % 4 == 0 ? 601 : 101),
                    random.Below(3) == 0 ? random.Below(601) - 300 : 0}};
    if (round % 6 == 2) {
        // Two steps make an edge in every format, and one doesn't.
        const int half = 1 + random.Below(12);
        result.picture.pixels = Patchwork(format, width, height, random, 2 * half);
        result.values.colorThreshold = 7 * half;
    }
    if (round % 8 == 1) {
        for (uint8_t& byte : result.picture.pixels) byte = static_cast<uint8_t>(random.Next() >> random.Below(8));
    }
    if (round % 13 == 5) result.values.colorThreshold = 255;
    if (round % 9 == 6) result.values.bias = 101 + random.Below(12);  // only one part of a fade stays in range
    if (round % 11 == 0) result.values = {random.Wild(), random.Wild(), random.Wild()};  // a script's
    // The same softness where ramps end away from the image's border.
    if (round % 14 == 8) result.values.softness = random.Wild();
    return result;
}

// Compares the sets that run here with the plain one. Reports at most one set; describe() tells which picture it is.
template <class Describe>
bool EqualPlain(const KernelCase& format, const Picture& picture, const Values& values, WrongResults& wrong,
                Describe describe) {
    const ImageLayout exact = {.lead = 1, .tail = 0, .padding = 1}, guarded = {.padding = 3};
    const auto smooth = [&](const KernelSet& set) {
        return Smooth(format, KernelOf(set, format), picture, values, exact, guarded);
    };
    const std::vector<uint8_t> plain = smooth(kPlainKernels);
    for (const KernelSet* set : {&kBaselineKernels, &kAvx2Kernels}) {
        if (!set->runsHere()) continue;
        const std::string difference = FirstDifference(format, picture.width, plain, smooth(*set));
        if (!difference.empty()) return wrong.Check(difference, [&] { return set->name + (" " + describe()); });
    }
    return true;
}

}  // namespace

TEST(KernelSets, EqualThePlainOne) {
    for (const KernelCase& format : kAllKernels) {
        SeededRandom random(31);
        WrongResults wrong;
        bool isChecked = true;
        for (int round = 0; round < 150 && isChecked; ++round) {
            const Case example = RandomCase(format, round, random);
            isChecked = EqualPlain(format, example.picture, example.values, wrong, [&] {
                const auto& [threshold, softness, bias] = example.values;
                return std::string(format.name) + " round " + std::to_string(round) + ", " +
                       std::to_string(example.picture.width) + "x" + std::to_string(example.picture.height) +
                       ", threshold " + std::to_string(threshold) + ", softness " + std::to_string(softness) +
                       ", bias " + std::to_string(bias);
            });
        }
    }
}

TEST(KernelSets, LanesDivideExactly) {
    if (!HasAvx2()) GTEST_SKIP();
    EXPECT_EQ(FirstWrongQuotient(), 0);
    EXPECT_TRUE(MixesBytesExactly());
}

TEST(KernelSets, SizeAndMachineChooseTheKernels) {
    EXPECT_STREQ(FastestKernels(31, 1000).name, "plain");
    EXPECT_STREQ(FastestKernels(1000, 0).name, "plain");
    EXPECT_STREQ(FastestKernels(INT32_MAX, 1).name, "plain");
    EXPECT_STREQ(FastestKernels(32, 1).name, HasAvx2() ? "avx2" : "baseline");
    // Otherwise the tests of a set would pass it over.
    EXPECT_TRUE(kPlainKernels.runsHere() && kBaselineKernels.runsHere());
    EXPECT_EQ(kAvx2Kernels.runsHere(), HasAvx2());
    // Each key reaches its own kernel.
    for (const KernelSet* set : {&kPlainKernels, &kBaselineKernels, &kAvx2Kernels}) {
        std::vector<Kernel> kernels;
        for (const KernelCase& format : kAllKernels) {
            const Kernel kernel = KernelOf(*set, format);
            EXPECT_EQ(std::count(kernels.begin(), kernels.end(), kernel), 0) << set->name << " " << format.name;
            kernels.push_back(kernel);
        }
    }
}

}  // namespace stairmelt
