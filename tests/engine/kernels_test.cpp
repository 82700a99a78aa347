// The 24 named kernels: what is written, what isn't, and which pictures are refused.
#include <algorithm>
#include <utility>

#include "engine/plain/edge_map.h"
#include "tests/engine/run_kernel.h"

namespace stairmelt {

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
    const ImageLayout exact = {.lead = 0, .tail = 0}, bottomUp = {.padding = 3, .isBottomUp = true};
    for (const KernelCase& format : kAllKernels) {
        SeededRandom random(7);
        for (const int width : kSides) {
            for (const int height : kSides) {
                SCOPED_TRACE(std::string(format.name) + " " + std::to_string(width) + "x" + std::to_string(height));
                const Picture picture = {width, height, Patchwork(format, width, height, random)};
                const Values values = {random.Below(40), random.Below(101), random.Below(101)};
                EXPECT_TRUE(Smooth(format, format.kernel, picture, values, exact, exact) ==
                            Smooth(format, format.kernel, picture, values, bottomUp, {.padding = 1}));
            }
        }
    }
}

TEST(Kernels, AnyValuesAndSamplesEndInsideTheImage) {
    // Samples beyond the host's range, and floats of any bits, NaN and infinity among them.
    for (const KernelCase& format : kAllKernels) {
        SeededRandom random(11);
        for (int round = 0; round < 60; ++round) {
            const int width = 1 + random.Below(44), height = 1 + random.Below(24);
            Picture picture = {width, height, Patchwork(format, width, height, random)};
            if (round % 4 == 0) {
                for (uint8_t& byte : picture.pixels) byte = static_cast<uint8_t>(random.Next() >> (round % 8));
            }
            const Values values = {random.Below(3) == 0 ? random.Wild() : random.Below(20), random.Wild(),
                                   random.Wild()};
            SCOPED_TRACE(std::string(format.name) + " " + std::to_string(values.colorThreshold) + " " +
                         std::to_string(values.softness) + " " + std::to_string(values.bias));
            Smooth(format, format.kernel, picture, values);
        }
    }
}

TEST(Kernels, ViewsOfUnequalSizeAreRefusedUntouched) {
    for (const KernelCase& format : kAllKernels) {
        const std::vector<uint8_t> pixels(static_cast<size_t>(8 * 8 * format.PixelBytes()), 3);
        GuardedImage source(format, 8, 8, pixels), destination(format, 8, 8, pixels);
        const KernelJob job = {1, 70, 0, nullptr, format.Key(), &source.view, &destination.view, 0, 0, 8, 8};
        source.view.height = 7;
        EXPECT_EQ(format.kernel(job), kKernelParameterError);
        source.view = {7, 8, source.view.base, source.view.rowStride};
        EXPECT_EQ(format.kernel(job), kKernelParameterError);
        EXPECT_TRUE(destination.IsUntouched());
    }
}

TEST(Kernels, SizesWithoutPixelsReadNothing) {
    // The base is null: any access would end the test.
    for (const KernelCase& format : kAllKernels) {
        const auto result = [&](int32_t width, int32_t height) {
            const ImageView view = {width, height, nullptr, 0};
            return format.kernel({1, 70, 0, nullptr, format.Key(), &view, &view, 0, 0, 0, 0});
        };
        for (const auto& [width, height] : {std::pair{0, 0}, {5, 0}, {0, 5}, {-3, 4}, {4, -1}, {0, INT32_MAX}})
            EXPECT_EQ(result(width, height), kKernelDone) << width << "x" << height;
        EXPECT_EQ(result(INT32_MAX, INT32_MAX), kKernelMemoryError);
    }
}

}  // namespace stairmelt
