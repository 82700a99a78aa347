#include "tools/filter/host_samples.h"

#include <gtest/gtest.h>

#include <cstring>

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
    const Bytes given = SamplesForHost(picture);
    EXPECT_EQ(TakeHostSamples(given, given, picture), 0U);
    EXPECT_EQ(picture.samples, original);

    // One sample changes: its pixel counts, its neighbours in the pixel keep the file's value.
    Bytes returned = given;
    const uint16_t half = 16384;
    std::memcpy(&returned[8 * 1000 + 2], &half, 2);
    EXPECT_EQ(TakeHostSamples(given, returned, picture), 1U);
    Bytes expected = original;
    PutNumber(&expected[8 * 1000 + 2], uint16_t{32768}, false);
    EXPECT_EQ(picture.samples, expected);
}

}  // namespace
}  // namespace stairmelt
