// One driver for all 24 kernels: what is written, what isn't, and how kernels agree with each other.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "engine/plain/edge_map.h"
#include "tests/support/checksum.h"
#include "tests/support/guarded_image.h"
#include "tests/support/kernel_list.h"
#include "tests/support/scenes.h"

namespace stairmelt {

namespace {

struct Values {
    int32_t colorThreshold, softness, bias;
};

// Runs the kernel on a picture with the given paddings and checks everything that holds for any picture.
std::vector<uint8_t> Smooth(const KernelCase& format, int width, int height, const std::vector<uint8_t>& pixels,
                            const Values& values, int sourcePadding = 0, int destinationPadding = 0) {
    GuardedImage source(width, height, format.PixelBytes(), sourcePadding, pixels);
    GuardedImage destination(width, height, format.PixelBytes(), destinationPadding, pixels);
    const KernelJob job = {values.colorThreshold,
                           values.softness,
                           values.bias,
                           nullptr,
                           format.Key(),
                           &source.view,
                           &destination.view,
                           0,
                           0,
                           width,
                           height};
    EXPECT_EQ(format.kernel(job), kKernelDone);
    EXPECT_TRUE(source.Pixels() == pixels) << "source changed";
    EXPECT_EQ(source.StrayWrite() + destination.StrayWrite(), "");
    return destination.Pixels();
}

// Bands between two levels, with no lone pixels or spike tips: their edges rise by the one number to the other.
struct Slope {
    int dx, dy;
};

std::vector<uint8_t> Bands(const KernelCase& format, int width, int height, const Slope& slope) {
    std::vector<uint8_t> bytes;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int level = (x * slope.dx + y * slope.dy + 1000) / 40 % 2 != 0 ? 220 : 30;
            for (int c = 0; c < format.channels; ++c) AppendSample(bytes, format.depth, level);
            if (format.extra != 0) AppendSample(bytes, format.depth, 255);
        }
    }
    return bytes;
}

// A sample of a result on the 8-bit scale.
double LevelAt(const KernelCase& format, const std::vector<uint8_t>& bytes, size_t pixel, int channel) {
    const size_t at = pixel * static_cast<size_t>(format.PixelBytes()) +
                      static_cast<size_t>(channel) * static_cast<size_t>(format.SampleBytes());
    if (format.depth == 8) return bytes[at];
    if (format.depth == 16) {
        uint16_t sample;
        std::memcpy(&sample, &bytes[at], 2);
        return sample * 255.0 / 32768;
    }
    float sample;
    std::memcpy(&sample, &bytes[at], 4);
    return sample * 255.0;
}

}  // namespace

TEST(EdgeMap, ReadsZeroAllAroundTheImage) {
    for (const int width : {1, 2, 3, 4, 5, 8}) {
        EdgeMap map;
        ASSERT_TRUE(map.Allocate(width, 3));
        EXPECT_EQ(map.stride % 4, 0);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(map.cells) % 4, 0u);
        for (int y = -1; y <= 3; ++y) {
            for (int x = -4; x <= std::max(width, map.stride - 5); ++x) EXPECT_EQ(*map.CellAt(x, y), 0);
        }
    }
}

TEST(Kernels, EverySizeAtAnyStrideStaysInsideTheImage) {
    constexpr int kSides[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 37, 70};
    for (const KernelCase& format : kAllKernels) {
        SeededRandom random(7);
        for (const int width : kSides) {
            for (const int height : kSides) {
                SCOPED_TRACE(std::string(format.name) + " " + std::to_string(width) + "x" + std::to_string(height));
                const std::vector<uint8_t> pixels = Patchwork(format, width, height, random);
                const Values values = {random.Below(40), random.Below(101), random.Below(101)};
                const std::vector<uint8_t> result = Smooth(format, width, height, pixels, values);
                EXPECT_TRUE(result == Smooth(format, width, height, pixels, values, 3, 1)) << "odd strides";
                EXPECT_TRUE(result == Smooth(format, width, height, pixels, values)) << "second run";
            }
        }
    }
}

TEST(Kernels, AnyParametersEndInsideTheImage) {
    for (const KernelCase& format : kAllKernels) {
        SeededRandom random(11);
        for (int round = 0; round < 60; ++round) {
            const int width = 1 + random.Below(24), height = 1 + random.Below(24);
            const std::vector<uint8_t> pixels = Patchwork(format, width, height, random);
            const Values values = {random.Below(3) == 0 ? random.Wild() : random.Below(20), random.Wild(),
                                   random.Wild()};
            SCOPED_TRACE(std::string(format.name) + " " + std::to_string(values.colorThreshold) + " " +
                         std::to_string(values.softness) + " " + std::to_string(values.bias));
            Smooth(format, width, height, pixels, values, 5, 7);
        }
    }
}

TEST(Kernels, AnySamplesEndInsideTheImage) {
    // Samples beyond the host's range, and floats of any bits, NaN and infinity among them.
    for (const KernelCase& format : kAllKernels) {
        SeededRandom random(13);
        for (int round = 0; round < 10; ++round) {
            std::vector<uint8_t> pixels(static_cast<size_t>(20 * 20 * format.PixelBytes()));
            for (uint8_t& byte : pixels) byte = static_cast<uint8_t>(random.Next() >> (round % 8));
            Smooth(format, 20, 20, pixels, {10, round % 2 == 0 ? 70 : random.Wild(), random.Below(200) - 100});
        }
    }
}

TEST(Kernels, ThresholdAboveEveryDifferenceChangesNothing) {
    for (const KernelCase& format : kAllKernels) {
        SeededRandom random(17);
        const std::vector<uint8_t> pixels = Patchwork(format, 40, 30, random);
        EXPECT_TRUE(Smooth(format, 40, 30, pixels, {2000, 100, 0}) == pixels) << format.name;
        EXPECT_FALSE(Smooth(format, 40, 30, pixels, {10, 70, 0}) == pixels) << format.name;
    }
}

TEST(Kernels, SiblingsAgree) {
    constexpr int kWidth = 60, kHeight = 24;
    const KernelCase& reference = kAllKernels[0];
    for (const Slope& slope : {Slope{3, 7}, Slope{7, -2}, Slope{1, 5}, Slope{4, 4}}) {
        const Values values = {10, 40 + 12 * slope.dx, slope.dx * 10};
        const std::vector<uint8_t> wanted =
            Smooth(reference, kWidth, kHeight, Bands(reference, kWidth, kHeight, slope), values);
        for (const KernelCase& format : kAllKernels) {
            const std::vector<uint8_t> result =
                Smooth(format, kWidth, kHeight, Bands(format, kWidth, kHeight, slope), values);
            // Truncations add up where blends meet; the wider depths lie a few counts off.
            const double tolerance = format.depth == 8 ? 0 : 6;
            for (size_t pixel = 0; pixel < wanted.size(); ++pixel) {
                for (int c = 0; c < format.channels; ++c) {
                    ASSERT_NEAR(LevelAt(format, result, pixel, c), wanted[pixel], tolerance)
                        << format.name << " slope " << slope.dx << "/" << slope.dy << " pixel (" << pixel % kWidth
                        << ", " << pixel / kWidth << ")";
                }
                if (format.extra != 0) {
                    ASSERT_EQ(LevelAt(format, result, pixel, format.channels), 255) << format.name;
                }
            }
        }
    }
}

TEST(Kernels, ViewsOfUnequalSizeAreRefusedUntouched) {
    for (const KernelCase& format : kAllKernels) {
        const std::vector<uint8_t> pixels(static_cast<size_t>(8 * 8 * format.PixelBytes()), 3);
        GuardedImage source(8, 8, format.PixelBytes(), 0, pixels), destination(8, 8, format.PixelBytes(), 0, pixels);
        const KernelJob job = {1, 70, 0, nullptr, format.Key(), &source.view, &destination.view, 0, 0, 8, 8};
        source.view.height = 7;
        EXPECT_EQ(format.kernel(job), kKernelParameterError);
        source.view = {7, 8, source.view.base, source.view.rowStride};
        EXPECT_EQ(format.kernel(job), kKernelParameterError);
        EXPECT_TRUE(destination.Pixels() == pixels);
    }
}

TEST(Kernels, SizesWithoutPixelsReadNothing) {
    // The base is null: any access would end the test.
    for (const KernelCase& format : kAllKernels) {
        for (const auto& [width, height] : {std::pair{0, 0}, {5, 0}, {0, 5}, {-3, 4}, {4, -1}, {0, INT32_MAX}}) {
            const ImageView view = {width, height, nullptr, 0};
            const KernelJob job = {1, 70, 0, nullptr, format.Key(), &view, &view, 0, 0, 0, 0};
            EXPECT_EQ(format.kernel(job), kKernelDone) << width << "x" << height;
        }
        const ImageView huge = {INT32_MAX, INT32_MAX, nullptr, 0};
        const KernelJob job = {1, 70, 0, nullptr, format.Key(), &huge, &huge, 0, 0, 0, 0};
        EXPECT_EQ(format.kernel(job), kKernelMemoryError);
    }
}

// Catches what the other pictures miss, and compilers that round differently.
TEST(Kernels, NoisyPictureGivesThePinnedResult) {
    constexpr uint64_t kWanted[] = {
        10141331653791617246u, 7882130501357582383u,  17743537136758160752u, 17635617438908320370u,
        8051107951244541869u,  12972372117042005088u, 2824049566798115807u,  3521859907643960311u,
        1974317861624698933u,  8470619748022807754u,  11878821985922962599u, 3557650026586124006u,
        2810802150365093159u,  14170126482444215424u, 2305563118880897686u,  12504634848888386720u,
        15923053425466069196u, 12890404025812744780u, 9464198321142606672u,  13838215688271581097u,
        1140935238829732877u,  1982424700962188536u,  15894687054621822676u, 13631846086759411730u,
    };
    constexpr int kWidth = 101, kHeight = 67;
    // The dialog's values first, then a script's, whose products wrap.
    constexpr Values kValues[] = {
        {8, 83, 25}, {10, INT32_MIN, -123436}, {268435456, -131, 880733}, {4, 84, 1784215729}};
    for (size_t i = 0; i < std::size(kAllKernels); ++i) {
        SeededRandom random(23);
        const std::vector<uint8_t> pixels = Patchwork(kAllKernels[i], kWidth, kHeight, random);
        std::vector<uint8_t> results;
        for (const Values& values : kValues) {
            const std::vector<uint8_t> result = Smooth(kAllKernels[i], kWidth, kHeight, pixels, values);
            results.insert(results.end(), result.begin(), result.end());
        }
        EXPECT_EQ(Checksum(results), kWanted[i]) << kAllKernels[i].name;
    }
}

}  // namespace stairmelt
