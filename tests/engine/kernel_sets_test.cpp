// Every form of every kernel gives the same result as the plain one.
#include "engine/kernel_sets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "engine/instruction_set.h"
#include "tests/support/guarded_image.h"
#include "tests/support/kernel_list.h"
#include "tests/support/scenes.h"

namespace stairmelt {

int32_t FirstWrongQuotient();  // lane_division.cpp
bool MixesBytesExactly();      // the same

namespace {

struct Picture {
    int width, height;
    std::vector<uint8_t> pixels;
    KernelJob job;
};

// Lines of one slope, with some pixels out of place: long runs and diagonals, which a patchwork doesn't have.
std::vector<uint8_t> Lines(const KernelCase& format, int width, int height, SeededRandom& random) {
    const int scale = height > 100 ? 12 : 1;  // steep lines
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

Picture RandomPicture(const KernelCase& format, int round, SeededRandom& random) {
    Picture picture;
    picture.width = 1 + random.Below(round % 7 == 0 ? 300 : 90);
    // Around whole blocks and vectors of them.
    if (round % 5 == 0) picture.width = (random.Below(2) == 0 ? 56 : 224) * (1 + random.Below(2)) + random.Below(4) - 1;
    picture.height = 1 + random.Below(round % 7 == 1 ? 90 : 24);
    if (round % 12 == 3) picture.height = 101 + random.Below(300), picture.width = 32 + random.Below(30);
    picture.pixels = round % 3 == 0 ? Lines(format, picture.width, picture.height, random)
                                    : Patchwork(format, picture.width, picture.height, random);
    if (round % 8 == 1) {
        for (uint8_t& byte : picture.pixels) byte = static_cast<uint8_t>(random.Next() >> random.Below(8));
    }
    const bool isWild = round % 11 == 0;  // a script's values
    const auto value = [&](int usual) { return isWild ? random.Wild() : usual; };
    const int bias = random.Below(3) == 0 ? random.Below(201) - 100 : 0;
    picture.job = {value(random.Below(60)),
                   value(random.Below(round % 4 == 0 ? 601 : 101)),
                   value(bias),
                   nullptr,
                   format.Key(),
                   nullptr,
                   nullptr,
                   0,
                   0,
                   0,
                   0};
    return picture;
}

std::vector<uint8_t> Smooth(const KernelCase& format, const KernelSet& set, const Picture& picture) {
    GuardedImage source(picture.width, picture.height, format.PixelBytes(), 1, picture.pixels);
    GuardedImage destination(picture.width, picture.height, format.PixelBytes(), 3, picture.pixels);
    KernelJob job = picture.job;
    job.source = &source.view;
    job.destination = &destination.view;
    EXPECT_EQ(set.Get(format.channels, format.depth, format.extra)(job), kKernelDone);
    EXPECT_EQ(source.StrayWrite() + destination.StrayWrite(), "");
    return destination.Pixels();
}

// Where a float isn't a number, any such value will do.
bool IsSame(const KernelCase& format, const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
    if (format.depth != 32) return a == b;
    for (size_t i = 0; i < a.size(); i += 4) {
        float s, t;
        std::memcpy(&s, &a[i], 4);
        std::memcpy(&t, &b[i], 4);
        if (std::memcmp(&s, &t, 4) != 0 && (s == s || t == t)) return false;
    }
    return true;
}

// An edge that moves by one column twice, `run` rows apart, so that a ramp of that length goes down into rows that are
// far from being visited; and dots beside its first rows, that are visited meanwhile.
Picture TallStair(const KernelCase& format, int run) {
    constexpr int kTop = 100;
    Picture picture = {32, kTop + run + 80, {}, {0, 100, 0, nullptr, format.Key(), nullptr, nullptr, 0, 0, 0, 0}};
    for (int y = 0; y < picture.height; ++y) {
        const int edge = y <= kTop ? 17 : y <= kTop + run ? 16 : 15;
        for (int x = 0; x < picture.width; ++x) {
            const bool isDot = x == 25 && y > kTop && y < 2 * kTop && y % 3 == 0;
            for (int c = 0; c < format.channels; ++c)
                AppendSample(picture.pixels, format.depth, x >= edge && !isDot ? 255 : 0);
            if (format.extra != 0) AppendSample(picture.pixels, format.depth, 255);
        }
    }
    return picture;
}

void CompareWithPlain(const KernelSet& set, int rounds) {
    if (!set.runsHere()) GTEST_SKIP() << "this machine can't run " << set.name;
    for (const KernelCase& format : kAllKernels) {
        SeededRandom random(31);
        for (int round = 0; round < rounds; ++round) {
            const Picture picture = RandomPicture(format, round, random);
            ASSERT_TRUE(IsSame(format, Smooth(format, set, picture), Smooth(format, kPlainKernels, picture)))
                << set.name << " " << format.name << " round " << round << ": " << picture.width << "x"
                << picture.height << ", threshold " << picture.job.colorThreshold << ", softness "
                << picture.job.softness << ", bias " << picture.job.bias;
        }
    }
}

}  // namespace

TEST(KernelSets, BaselineEqualsPlain) { CompareWithPlain(kBaselineKernels, 150); }

TEST(KernelSets, Avx2EqualsPlain) { CompareWithPlain(kAvx2Kernels, 150); }

TEST(KernelSets, LongRampsGoDownIntoKnownRows) {
    for (const KernelSet* set : {&kBaselineKernels, &kAvx2Kernels}) {
        for (const KernelCase& format : kAllKernels) {
            if (!set->runsHere() || format.channels != 1) continue;
            const Picture picture = TallStair(format, 24727);
            EXPECT_TRUE(IsSame(format, Smooth(format, *set, picture), Smooth(format, kPlainKernels, picture)))
                << set->name << " " << format.name;
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
            const Kernel kernel = set->Get(format.channels, format.depth, format.extra);
            EXPECT_EQ(std::count(kernels.begin(), kernels.end(), kernel), 0) << set->name << " " << format.name;
            kernels.push_back(kernel);
        }
    }
}

}  // namespace stairmelt
