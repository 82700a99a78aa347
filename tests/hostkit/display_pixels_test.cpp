// Drawing of preview maps by the fake host.
#include <gtest/gtest.h>

#include "hostkit/fake_host.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace stairmelt {
namespace {

// A planar map of 2 x 1 pixels over the bytes; plane p starts at 2 * p.
PSPixelMap TwoPixels(int32_t mode, const uint8_t* bytes, const PSPixelMask* mask = nullptr) {
    PSPixelMap map{};
    map.version = 1;
    map.bounds = {0, 0, 1, 2};
    map.imageMode = mode;
    map.rowBytes = 2;
    map.colBytes = 1;
    map.planeBytes = 2;
    map.baseAddr = bytes;
    map.masks = mask;
    return map;
}

TEST(DisplayPixels, ShowsTheColoursOfEachMode) {
    FakeHost host;
    const struct {
        const char* name;
        int32_t mode;
        uint8_t bytes[8];
        uint32_t first, second;  // 0xRRGGBB
    } cases[] = {
        {"gray", kModeGrayScale, {10, 200}, 0x0A0A0A, 0xC8C8C8},
        {"RGB", kModeRGBColor, {1, 2, 3, 4, 5, 6}, 0x010305, 0x020406},
        {"CMYK: no ink, and full cyan", kModeCMYKColor, {255, 0, 255, 255, 255, 255, 255, 255}, 0xFFFFFF, 0x00FFFF},
        {"Lab: white and black", kModeLabColor, {255, 0, 128, 128, 128, 128}, 0xFFFFFF, 0x000000},
        {"multichannel by its first plane", kModeMultichannel, {7, 8, 99, 99}, 0x070707, 0x080808},
    };
    for (const auto& c : cases) {
        const PSPixelMap map = TwoPixels(c.mode, c.bytes);
        ASSERT_EQ(DisplayPixels(&map, &map.bounds, 0, 0, nullptr), kNoErr) << c.name;
        EXPECT_EQ(host.ui.display->screen, (std::vector<uint32_t>{c.first, c.second})) << c.name;
    }
    const uint8_t bytes[8] = {};
    const PSPixelMap deep = TwoPixels(kModeRGB48, bytes);
    EXPECT_EQ(DisplayPixels(&deep, &deep.bounds, 0, 0, nullptr), kParamErr) << "a version 1 map has 8 bits";
}

TEST(DisplayPixels, KeepsWhatItWasHandedAndMixesTheMaskWithACheckerboard) {
    FakeHost host;
    const uint8_t bytes[] = {100, 101};
    const uint8_t opacity[] = {0, 255};
    const PSPixelMask mask{nullptr, opacity, 2, 1, kSimplePSMask};
    const PSPixelMap map = TwoPixels(kModeGrayScale, bytes, &mask);
    int context = 0;
    ASSERT_EQ(host.record.displayPixels(&map, &map.bounds, 30, 40, &context), kNoErr);
    const DisplayedMap& display = *host.ui.display;
    EXPECT_EQ(display.row, 30);
    EXPECT_EQ(display.column, 40);
    EXPECT_EQ(display.context, &context);
    EXPECT_EQ(display.samples, (std::vector<uint8_t>{100, 101}));
    ASSERT_EQ(display.masks.size(), 1u);
    EXPECT_EQ(display.masks[0].maskData, opacity);
    EXPECT_EQ(display.screen, (std::vector<uint32_t>{0xFFFFFF, 0x656565}));
}

TEST(UIHooks, SetsKnownCursors) {
    FakeHost host;
    EXPECT_EQ(host.ui.hooks.SetCursor(kCursorHand), kSPNoError);
    EXPECT_EQ(host.ui.hooks.SetCursor(nullptr), kSPNoError);
    EXPECT_EQ(host.ui.hooks.SetCursor("Photoshop Cursor Fish"), kSPUnknownCursor);
    EXPECT_EQ(host.ui.cursors, (std::vector<std::string>{kCursorHand, ""}));
}

#ifdef _WIN32
TEST(DisplayPixels, DrawsAtItsPlaceInTheDeviceContext) {
    FakeHost host;
    const HDC screen = GetDC(nullptr);
    const HDC context = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, 8, 8);
    const HGDIOBJ old = SelectObject(context, bitmap);
    PatBlt(context, 0, 0, 8, 8, BLACKNESS);

    const uint8_t bytes[] = {10, 20, 30, 40, 50, 60};
    const PSPixelMap map = TwoPixels(kModeRGBColor, bytes);
    EXPECT_EQ(DisplayPixels(&map, &map.bounds, 3, 5, context), kNoErr);
    EXPECT_EQ(GetPixel(context, 5, 3), RGB(10, 30, 50));
    EXPECT_EQ(GetPixel(context, 6, 3), RGB(20, 40, 60));
    EXPECT_EQ(GetPixel(context, 7, 3), RGB(0, 0, 0));
    EXPECT_EQ(GetPixel(context, 5, 4), RGB(0, 0, 0));

    SelectObject(context, old);
    DeleteObject(bitmap);
    DeleteDC(context);
    ReleaseDC(nullptr, screen);
}
#endif

}  // namespace
}  // namespace stairmelt
