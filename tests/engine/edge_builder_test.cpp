#include "engine/edge_builder.h"

#include <gtest/gtest.h>

#include <cmath>

#include "engine/plane_builder.h"
#include "tests/support/flag_text.h"
#include "tests/support/guarded_image.h"
#include "tests/support/scenes.h"

namespace stairmelt {

namespace {

using Gray8 = PixelFormat<Depth8, 1, 0>;

// Flags of a gray picture: '.' is 0, '#' is 100, '+' is 10, '-' is 5.
FlagRows FlagsOf(const std::vector<std::string>& rows, int32_t threshold) {
    const int width = static_cast<int>(rows[0].size()), height = static_cast<int>(rows.size());
    std::vector<uint8_t> pixels;
    for (const std::string& row : rows) {
        for (const char c : row) pixels.push_back(c == '#' ? 100 : c == '+' ? 10 : c == '-' ? 5 : 0);
    }
    GuardedImage image(width, height, 1, 0, pixels);
    EdgeMap map;
    map.Allocate(width, height);
    BuildEdgeMap<Gray8>(image.view, threshold, map);
    return RowsOf(map, width, height);
}

template <class Format>
bool DiffersSamples(const typename Format::Pixel& a, const typename Format::Pixel& b, EdgeThreshold<Format> threshold) {
    const bool differs = Differs<Format>(a, b, threshold);
    EXPECT_EQ(differs, Differs<Format>(b, a, threshold));
    return differs;
}

// Builds the flags of seeded pictures both ways. Widths beyond a chunk, with flat stretches.
template <class Depth, int Channels, int Extra>
void CompareBuilders() {
    using Format = PixelFormat<Depth, Channels, Extra>;
    const KernelCase format = {"", Channels, Format::kBits, Extra, nullptr};
    SeededRandom random(Channels * 100 + Format::kBits + Extra);
    for (const int width : {1, 4, 33, 64, 65, 66, 70, 131, 260}) {
        for (int round = 0; round < 12; ++round) {
            const int height = 1 + random.Below(9);
            std::vector<uint8_t> pixels = Patchwork(format, width, height, random);
            if (round % 3 == 0) {
                for (uint8_t& byte : pixels) byte = static_cast<uint8_t>(random.Next());
            }
            GuardedImage image(width, height, Format::kPixelBytes, round, pixels);
            constexpr int32_t kThresholds[] = {0, 1, 5, 25, 90, 300, -1, INT32_MIN / 4, INT32_MAX / 4};
            EdgeThreshold<Format> threshold = static_cast<EdgeThreshold<Format>>(kThresholds[random.Below(9)]);
            if constexpr (Format::kBits == 16) threshold = WrapMul(threshold, 100);
            if constexpr (Format::kBits == 32) threshold /= 255.0f;
            EdgeMap map;
            FlagPlanes planes;
            map.Allocate(width, height);
            planes.Allocate(width, height);
            BuildEdgeMap<Format>(image.view, threshold, map);
            PlaneBuilder<Format>(image.view, threshold, planes).BuildTo(height);
            ASSERT_EQ(RowsOf(planes, width, height), RowsOf(map, width, height))
                << Channels << "/" << Format::kBits << "/" << Extra << " width " << width << " threshold " << threshold;
        }
    }
}

template <class Depth>
void CompareBuildersAtDepth() {
    CompareBuilders<Depth, 1, 0>();
    CompareBuilders<Depth, 1, 1>();
    CompareBuilders<Depth, 2, 0>();
    CompareBuilders<Depth, 2, 1>();
    CompareBuilders<Depth, 3, 0>();
    CompareBuilders<Depth, 3, 1>();
    CompareBuilders<Depth, 4, 0>();
    CompareBuilders<Depth, 4, 1>();
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

TEST(EdgeBuilder, SetsFlagsByPlace) {
    struct Case {
        const char* name;
        std::vector<std::string> picture;
        FlagRows flags;
    };
    const Case cases[] = {
        {"flat", {"....", "....", "...."}, {"....", "....", "...."}},
        {"one pixel in the plain columns", {"...", ".#.", "..."}, {"4a.", "97.", "..."}},
        {"last row and column", {"..#", "..#", "##."}, {".d.", "e32", ".1."}},
        {"one row", {".#."}, {"11."}},
        {"one column", {".", "#", "."}, {"2", "2", "."}},
        {"equal to the threshold", {".+.", "..."}, {"...", "..."}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(FlagsOf(c.picture, 10), c.flags) << c.name;
    }
}

// Both neighbours of the corner lie within the threshold of it, and the pixel across doesn't.
TEST(EdgeBuilder, LoneDiagonalsOfAGroupAreOnlySeenInItsLastCell) {
    const auto diagonalAt = [](int column) {
        std::vector<std::string> picture(2, std::string(9, '-'));
        picture[0][static_cast<size_t>(column)] = '.';
        picture[1][static_cast<size_t>(column) + 1] = '+';
        return FlagsOf(picture, 7)[0];
    };
    EXPECT_EQ(diagonalAt(0), ".........");
    EXPECT_EQ(diagonalAt(1), ".........");
    EXPECT_EQ(diagonalAt(2), ".........");
    EXPECT_EQ(diagonalAt(3), "...4.....");
    EXPECT_EQ(diagonalAt(7), ".......4.");

    // An edge in the next cell of the group is enough for the diagonal to be tested.
    EXPECT_EQ(FlagsOf({".---#----", "-+-------"}, 7)[0], "...97....");
    EXPECT_EQ(FlagsOf({".--#-----", "-+-------"}, 7)[0], "..97.....");
    EXPECT_EQ(FlagsOf({".-#------", "-+-------"}, 7)[0], "497......");
}

TEST(EdgeBuilder, ComparesByFormat) {
    using Rgb8 = PixelFormat<Depth8, 3, 0>;
    EXPECT_FALSE(DiffersSamples<Rgb8>({10, 20, 30}, {13, 16, 33}, 10));
    EXPECT_TRUE(DiffersSamples<Rgb8>({10, 20, 30}, {13, 16, 34}, 10));

    using GrayAlpha8 = PixelFormat<Depth8, 1, 1>;
    EXPECT_FALSE(DiffersSamples<GrayAlpha8>({0, 0}, {255, 0}, 0)) << "hidden colours";
    EXPECT_FALSE(DiffersSamples<GrayAlpha8>({9, 0}, {9, 255}, 255));
    EXPECT_TRUE(DiffersSamples<GrayAlpha8>({9, 0}, {9, 255}, 254)) << "opacity counts in full";
    // (21 / 2) * 510 / 255 is 20: the halving truncates first.
    EXPECT_FALSE(DiffersSamples<GrayAlpha8>({0, 255}, {21, 255}, 20));
    // Each channel is truncated by itself: 3 * (1 * 254 / 255) is 0.
    using RgbAlpha8 = PixelFormat<Depth8, 3, 1>;
    EXPECT_FALSE(DiffersSamples<RgbAlpha8>({0, 0, 0, 127}, {2, 2, 2, 127}, 0));

    using GrayAlpha16 = PixelFormat<Depth16, 1, 1>;
    EXPECT_FALSE(DiffersSamples<GrayAlpha16>({0, 32768}, {1001, 32768}, 1000));
    EXPECT_TRUE(DiffersSamples<GrayAlpha16>({0, 32768}, {1002, 32768}, 1000));

    using Gray32 = PixelFormat<Depth32, 1, 0>;
    EXPECT_FALSE(DiffersSamples<Gray32>({0.25f}, {0.5f}, 0.25f));
    EXPECT_TRUE(DiffersSamples<Gray32>({0.25f}, {0.5f}, 0.2499f));
    EXPECT_FALSE(DiffersSamples<Gray32>({NAN}, {0.5f}, 0.0f));
    EXPECT_FALSE(DiffersSamples<Gray32>({INFINITY}, {INFINITY}, 0.0f));
}

TEST(PlaneBuilder, SetsTheFlagsOfTheEdgeMap) {
    CompareBuildersAtDepth<Depth8>();
    CompareBuildersAtDepth<Depth16>();
    CompareBuildersAtDepth<Depth32>();
}

// The chunk divides by 255 without leaving 16 bits.
TEST(EdgeBuilder, ChunkWeighsColoursAsThePlainFormDoes) {
    using Chunk = EdgeChunk<PixelFormat<Depth8, 1, 1>>;
    for (int distance = 0; distance <= 255; ++distance) {
        for (int opacities = 0; opacities <= 510; ++opacities) {
            const int u = opacities / 2;
            ASSERT_EQ(Chunk::VisibleDistance(static_cast<int16_t>(distance), static_cast<int16_t>(u),
                                             static_cast<int16_t>(opacities - u)),
                      distance / 2 * opacities / 255);
        }
    }
}

}  // namespace stairmelt
