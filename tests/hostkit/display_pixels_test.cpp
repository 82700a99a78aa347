// Drawing of preview maps by the fake host.
#include <gtest/gtest.h>

#include "hostkit/probe/probed_host.h"

namespace stairmelt {
namespace {

TEST(DisplayPixels, ShowsTheColoursOfEachMode) {
    ProbedHost host;
    constexpr uint8_t kOpacity[] = {0, 255};
    const PSPixelMask mask{nullptr, kOpacity, 2, 1, kSimplePSMask};
    const struct {
        const char* name;
        int32_t mode;
        uint8_t bytes[8];        // two pixels; plane p starts at 2 * p
        uint32_t first, second;  // 0xRRGGBB
        const PSPixelMask* mask = nullptr;
    } cases[] = {
        {"RGB", kModeRGBColor, {1, 2, 3, 4, 5, 6}, 0x010305, 0x020406},
        {"CMYK: no ink, and cyan on black", kModeCMYKColor, {255, 0, 255, 255, 255, 255, 255, 51}, 0xFFFFFF, 0x003333},
        {"Lab: white and black", kModeLabColor, {255, 0, 128, 128, 128, 128}, 0xFFFFFF, 0x000000},
        {"multichannel by its first plane", kModeMultichannel, {7, 8, 99, 99}, 0x070707, 0x080808},
        {"transparent: the checkerboard shows", kModeGrayScale, {100, 101}, 0xFFFFFF, 0x656565, &mask},
    };
    for (const auto& c : cases) {
        PSPixelMap map{};
        map.version = 1;
        map.bounds = {0, 0, 1, 2};
        map.imageMode = c.mode;
        map.rowBytes = map.planeBytes = 2;
        map.colBytes = 1;
        map.baseAddr = c.bytes;
        map.masks = c.mask;
        ASSERT_EQ(DisplayPixels(&map, &map.bounds, 0, 0, nullptr), kNoErr) << c.name;
        EXPECT_EQ(host.ui.display->screen, (std::vector<uint32_t>{c.first, c.second})) << c.name;
    }
}

}  // namespace
}  // namespace stairmelt
