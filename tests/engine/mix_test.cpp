#include "engine/mix.h"

#include <gtest/gtest.h>

#include <cmath>

#include "engine/isolated_pixel.h"
#include "tests/support/guarded_image.h"

namespace stairmelt {

namespace {

using GrayAlpha8 = PixelFormat<Depth8, 1, 1>;
using GrayAlpha32 = PixelFormat<Depth32, 1, 1>;

template <class Format>
typename Format::Pixel Mixed(typename Format::Pixel pixel, const typename Format::Pixel& toward,
                             typename Format::Weight weight) {
    MixPixel<Format>(pixel, toward, weight);
    return pixel;
}

template <class Format>
typename Format::Pixel Averaged(const std::array<typename Format::Pixel, 9>& picture,
                                typename Format::Weight neighbourWeight) {
    std::vector<uint8_t> pixels(9 * Format::kPixelBytes);
    std::memcpy(pixels.data(), picture.data(), pixels.size());
    GuardedImage source(3, 3, Format::kPixelBytes, 0, pixels), destination(3, 3, Format::kPixelBytes, 0, pixels);
    AverageIsolatedPixel<Format>(source.view, destination.view, 1, 1, neighbourWeight);
    return Load<Format>(PixelAt<Format>(destination.view, 1, 1));
}

}  // namespace

TEST(Mix, TruncatesAtEveryWeight) {
    EXPECT_EQ(MixSample<Depth8>(0, 255, 24576), 95);
    EXPECT_EQ(MixSample<Depth8>(0, 255, 8193), 31);
    EXPECT_EQ(MixSample<Depth8>(0, 255, 65535), 255);
    EXPECT_EQ(MixSample<Depth8>(255, 0, 1), 254) << "no rounding term";
    EXPECT_EQ(MixSample<Depth16>(32768, 32768, 12345), 32768);
    EXPECT_EQ(MixSample<Depth32>(2.0f, -1.0f, 0.5f), 0.5f) << "no clamp";
    for (int sample = 0; sample < 256; ++sample) {
        for (const int32_t weight : {0, 1, 6553, 10922, 32767, 49151, 65535}) {
            ASSERT_EQ(MixSample<Depth8>(static_cast<uint8_t>(sample), static_cast<uint8_t>(sample), weight), sample);
        }
    }
}

TEST(Mix, OpacityDecidesHowMuchColourMoves) {
    struct Case {
        const char* name;
        GrayAlpha8::Pixel pixel, toward;
        int32_t weight;
        GrayAlpha8::Pixel wanted;
    };
    const Case cases[] = {
        {"equal opacity truncates", {100, 50}, {200, 50}, 32768, {150, 50}},
        {"toward a transparent pixel: colour stays", {100, 200}, {7, 0}, 32767, {100, 100}},
        {"a transparent pixel takes the colour outright", {100, 0}, {200, 255}, 32767, {200, 127}},
        {"shares by opacity, rounded to nearest", {0, 100}, {255, 200}, 32767, {170, 149}},
        {"0 by 0: colours stay", {100, 0}, {200, 255}, 0, {100, 0}},
        {"weight 0", {100, 50}, {200, 255}, 0, {100, 50}},
    };
    for (const Case& c : cases) EXPECT_EQ(Mixed<GrayAlpha8>(c.pixel, c.toward, c.weight), c.wanted) << c.name;

    EXPECT_EQ(Mixed<GrayAlpha32>({0.25f, 0.0f}, {1.0f, 1.0f}, 0.0f), (GrayAlpha32::Pixel{0.25f, 0.0f})) << "0 by 0";
    EXPECT_EQ(Mixed<GrayAlpha32>({0.25f, 0.0f}, {1.0f, 1.0f}, 0.5f), (GrayAlpha32::Pixel{1.0f, 0.5f}));
    EXPECT_EQ(Mixed<GrayAlpha32>({0.25f, 1.0f}, {1.0f, 0.0f}, 0.5f), (GrayAlpha32::Pixel{0.25f, 0.5f}));

    // The least opacity, weighed, is none: there is no colour then.
    const GrayAlpha32::Pixel none = Mixed<GrayAlpha32>({0.25f, 0.0f}, {1.0f, 1.4e-45f}, 0.375f);
    EXPECT_TRUE(std::isnan(none[0]) && none[1] == 0.0f);

    // The sum of step by step rounding passes 2^31 at full scale and must come back whole.
    using GrayAlpha16 = PixelFormat<Depth16, 1, 1>;
    EXPECT_EQ(Mixed<GrayAlpha16>({32768, 100}, {32768, 32768}, 30000)[0], 32768);
}

TEST(IsolatedPixel, IsAveragedWithItsNeighbours) {
    using Gray8 = PixelFormat<Depth8, 1, 0>;
    EXPECT_EQ(Averaged<Gray8>({{{1}, {0}, {1}, {0}, {200}, {0}, {1}, {0}, {1}}}, 11468)[0], 117);
    EXPECT_EQ(Averaged<Gray8>({{{1}, {0}, {1}, {0}, {200}, {0}, {1}, {0}, {1}}}, 0)[0], 200);
    EXPECT_EQ(Averaged<Gray8>({{{1}, {0}, {1}, {0}, {200}, {0}, {1}, {0}, {1}}}, -11468)[0], 200);

    const GrayAlpha8::Pixel clear = {90, 0}, solid = {200, 255};
    const GrayAlpha8::Pixel centre = {40, 255};
    EXPECT_EQ(Averaged<GrayAlpha8>({clear, clear, clear, clear, centre, clear, clear, clear, clear}, 11468),
              (GrayAlpha8::Pixel{40, 150}))
        << "transparent neighbours give no colour";
    EXPECT_EQ(Averaged<GrayAlpha8>({clear, solid, clear, solid, clear, solid, clear, solid, clear}, 11468),
              (GrayAlpha8::Pixel{200, 105}));
    EXPECT_EQ(Averaged<GrayAlpha8>({clear, clear, clear, clear, clear, clear, clear, clear, clear}, 11468), clear);
}

}  // namespace stairmelt
