#include "tools/filter/host_samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <span>

namespace stairmelt {
namespace {

TEST(HostSamples, EndsMeetAndHostValuesComeBack) {
    EXPECT_EQ(ToHostSample(0), 0);
    EXPECT_EQ(FromHostSample(32768), 65535);
    EXPECT_EQ(FromHostSample(65535), 65535);
    for (uint32_t host = 0; host <= 32768; ++host) {
        EXPECT_EQ(ToHostSample(FromHostSample(static_cast<uint16_t>(host))), host);
    }
}

TEST(HostSamples, UntouchedSamplesKeepTheFilesValue) {
    Picture picture;  // every value there is
    picture.width = 65536 / 4;
    picture.height = 1;
    picture.colors = 3;
    picture.hasAlpha = true;
    picture.depth = 16;
    for (uint32_t value = 0; value < 65536; ++value) AppendNumber(picture.samples, static_cast<uint16_t>(value), false);
    const Bytes original = picture.samples;
    const Bytes given = GiveSamples(picture);
    Bytes returned = given;
    EXPECT_EQ(TakeSamples(given, returned, picture), 0U);
    EXPECT_EQ(picture.samples, original);

    // One sample changes: its pixel counts, its neighbours in the pixel keep the file's value.
    returned = given;
    const uint16_t half = 16384;
    std::memcpy(&returned[8 * 1000 + 2], &half, 2);
    EXPECT_EQ(TakeSamples(given, returned, picture), 1U);
    Bytes expected = original;
    PutNumber(&expected[8 * 1000 + 2], uint16_t{32768}, false);
    EXPECT_EQ(picture.samples, expected);
}

TEST(HostSamples, InksAreTurnedOverBothWays) {
    for (const int depth : {8, 16}) {
        Picture picture;  // two pixels of four inks and opacity: full scale, and zero
        picture.width = 2;
        picture.height = 1;
        picture.colors = 4;
        picture.hasAlpha = true;
        picture.depth = depth;
        const size_t pixelBytes = picture.PixelBytes(), inkBytes = pixelBytes * 4 / 5;
        picture.samples.assign(pixelBytes, 0xFF);
        picture.samples.resize(2 * pixelBytes);
        const Bytes original = picture.samples;
        const Bytes given = GiveSamples(picture);
        EXPECT_TRUE(std::ranges::all_of(std::span(given).first(inkBytes), [](uint8_t byte) { return byte == 0; }));
        EXPECT_NE(given[inkBytes + depth / 8 - 1], 0) << "opacity";
        EXPECT_NE(given[pixelBytes + depth / 8 - 1], 0);
        Bytes returned = given;
        std::memcpy(&returned[0], &given[pixelBytes], static_cast<size_t>(depth / 8));  // no ink
        EXPECT_EQ(TakeSamples(given, returned, picture), 1U);
        Bytes expected = original;
        std::fill_n(expected.begin(), depth / 8, uint8_t{0});
        EXPECT_EQ(picture.samples, expected) << depth;
    }
}

}  // namespace
}  // namespace stairmelt
