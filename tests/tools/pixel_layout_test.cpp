#include "tools/pictures/pixel_layout.h"

#include <gtest/gtest.h>

#include "tools/tool_error.h"

namespace stairmelt {
namespace {

Picture Unpacked(PixelLayout layout, int32_t width, int32_t height, Bytes rows, std::vector<uint32_t> palette = {}) {
    CodecImage image;
    image.layout = layout;
    image.width = width;
    image.height = height;
    image.rows = std::move(rows);
    image.palette = std::move(palette);
    Picture picture;
    UnpackPixels(image, picture);
    return picture;
}

std::string KindOf(const Picture& picture) {
    return std::to_string(picture.colors) + (picture.hasAlpha ? "+a " : " ") + std::to_string(picture.depth);
}

TEST(PixelLayout, EachLayoutBecomesPlainSamples) {
    constexpr uint32_t kRed = 0xFFFF0000, kGray = 0xFF808080, kWhite = 0xFFFFFFFF, kGlass = 0x40808080;
    const struct {
        PixelLayout layout;
        int32_t width, height;
        Bytes rows;
        std::vector<uint32_t> palette;
        const char* kind;
        Bytes samples;
    } cases[] = {
        {PixelLayout::kGray1, 3, 2, {0xA0, 0x40}, {}, "1 8", {255, 0, 255, 0, 255, 0}},
        {PixelLayout::kGray2, 5, 1, {0x1B, 0x80}, {}, "1 8", {0, 85, 170, 255, 170}},
        {PixelLayout::kGray4, 3, 1, {0x0F, 0x70}, {}, "1 8", {0, 255, 119}},
        {PixelLayout::kBgr24, 2, 1, {1, 2, 3, 4, 5, 6}, {}, "3 8", {3, 2, 1, 6, 5, 4}},
        {PixelLayout::kBgrx32, 2, 1, {1, 2, 3, 9, 4, 5, 6, 9}, {}, "3 8", {3, 2, 1, 6, 5, 4}},
        {PixelLayout::kBgra32, 1, 1, {1, 2, 3, 4}, {}, "3+a 8", {3, 2, 1, 4}},
        {PixelLayout::kRgba64, 1, 1, {1, 2, 3, 4, 5, 6, 7, 8}, {}, "3+a 16", {1, 2, 3, 4, 5, 6, 7, 8}},
        {PixelLayout::kIndexed1, 2, 1, {0x40}, {kGray, kWhite}, "1 8", {128, 255}},
        {PixelLayout::kIndexed4, 3, 1, {0x01, 0xF0}, {kRed, kGray}, "3 8", {255, 0, 0, 128, 128, 128, 0, 0, 0}},
        {PixelLayout::kIndexed8, 2, 1, {1, 0}, {kWhite, kGlass}, "1+a 8", {128, 64, 255, 255}},
        {PixelLayout::kIndexed2, 1, 1, {0x40}, {kRed, kGlass}, "3+a 8", {128, 128, 128, 64}},
    };
    for (const auto& c : cases) {
        const Picture picture = Unpacked(c.layout, c.width, c.height, c.rows, c.palette);
        EXPECT_EQ(KindOf(picture), c.kind) << static_cast<int>(c.layout);
        EXPECT_EQ(picture.samples, c.samples) << static_cast<int>(c.layout);
        if (c.layout == PixelLayout::kBgr24 || c.layout == PixelLayout::kBgra32) {
            EXPECT_EQ(PackPixels(picture, c.layout), c.rows);
        }
    }
}

TEST(PixelLayout, PngChannelsAreWhatTheFileSays) {
    PngFacts facts;
    facts.bitDepth = 16;
    facts.isGray = true;
    Picture grayWithAlpha = Unpacked(PixelLayout::kRgba64, 2, 1, {1, 2, 1, 2, 1, 2, 3, 4, 5, 6, 5, 6, 5, 6, 7, 8});
    RestorePngChannels(facts, grayWithAlpha);
    EXPECT_EQ(KindOf(grayWithAlpha), "1+a 16");
    EXPECT_EQ(grayWithAlpha.samples, (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));

    // A codec that has thrown half of the bits or the alpha away mustn't go unnoticed.
    Picture shallow = Unpacked(PixelLayout::kGray8, 1, 1, {1});
    EXPECT_THROW(RestorePngChannels(facts, shallow), ToolError);
    facts.hasAlpha = true;
    Picture opaque = Unpacked(PixelLayout::kGray16, 1, 1, {1, 2});
    EXPECT_THROW(RestorePngChannels(facts, opaque), ToolError);
}

}  // namespace
}  // namespace stairmelt
