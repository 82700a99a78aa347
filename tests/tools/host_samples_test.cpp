#include "tools/filter/host_samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace stairmelt {
namespace {

TEST(HostSamples, EndsMeetAndHostValuesComeBack) {
    EXPECT_EQ(ToHostSample(0), 0);
    EXPECT_EQ(ToHostSample(65534), 32767) << "rounded to nearest";
    EXPECT_EQ(FromHostSample(32768), 65535);
    EXPECT_EQ(FromHostSample(65535), 65535);
    for (uint32_t host = 0; host <= 32768; ++host) {
        EXPECT_EQ(ToHostSample(FromHostSample(static_cast<uint16_t>(host))), host);
    }
}

TEST(HostSamples, UntouchedSamplesKeepTheFilesValue) {
    Picture picture{.width = 65536 / 4, .height = 1, .colors = 3, .hasAlpha = true, .depth = 16};  // every value
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
    const struct {
        int depth;
        Bytes samples, given, changed;  // one pixel of four inks and opacity; the first ink of the host's becomes none
    } cases[] = {
        {8, {255, 0, 1, 100, 255}, {0, 255, 254, 155, 255}, {0, 0, 1, 100, 255}},
        {16,
         {255, 255, 0, 0, 0, 0, 0, 0, 255, 255},
         {0, 0, 0, 128, 0, 128, 0, 128, 0, 128},
         {0, 0, 0, 0, 0, 0, 0, 0, 255, 255}},
    };
    for (const auto& c : cases) {
        Picture picture{.width = 1, .height = 1, .colors = 4, .hasAlpha = true, .depth = c.depth, .samples = c.samples};
        const Bytes given = GiveSamples(picture);
        EXPECT_EQ(given, c.given) << c.depth;
        Bytes returned = given;
        const size_t sampleBytes = static_cast<size_t>(c.depth / 8);
        std::copy_n(&given[sampleBytes], sampleBytes, returned.begin());
        EXPECT_EQ(TakeSamples(given, returned, picture), 1U);
        EXPECT_EQ(picture.samples, c.changed) << c.depth;
    }
    Picture picture{.width = 1, .height = 1, .colors = 4, .depth = 16, .samples = Bytes(8, 255)};
    const Bytes given = GiveSamples(picture);
    Bytes returned(8, 255);  // above the host's white
    TakeSamples(given, returned, picture);
    EXPECT_EQ(picture.samples, Bytes(8, 0));
}

}  // namespace
}  // namespace stairmelt
