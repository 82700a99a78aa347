#include "ui/preview_view.h"

#include <gtest/gtest.h>

#include <cmath>

namespace stairmelt {

TEST(PreviewView, FitFillsThePane) {
    const struct {
        const char* name;
        int32_t width, height;
        int index;
        int32_t percent;
    } rows[] = {
        {"beyond the ladder", 10, 10, 8, 3600},      {"exactly a step", 480, 100, 4, 100},
        {"limited by the height", 300, 300, 4, 120}, {"limited by the width", 1000, 100, 2, 48},
        {"below the lowest step", 96000, 10, 0, 1},
    };
    for (const auto& row : rows) {
        const Zoom zoom = ZoomToFit(row.width, row.height);
        EXPECT_EQ(zoom.index, row.index) << row.name;
        EXPECT_EQ(zoom.Percent(), row.percent) << row.name;
        EXPECT_DOUBLE_EQ(zoom.Factor(), std::min(360.0 / row.height, 480.0 / row.width)) << row.name;
    }
}

TEST(PreviewView, ViewStaysWithinTheImage) {
    const struct {
        const char* name;
        double pan;
        int32_t imageSize;
        double start, end, movedTo;
    } rows[] = {
        {"inside", 500, 1000, 260, 740, 500},          {"beyond the start", 100, 1000, 0, 480, 240},
        {"beyond the end", 990, 1000, 520, 1000, 760}, {"smaller image: pan stays", -70, 300, 0, 300, -70},
        {"equally large", 3, 480, 0, 480, 240},
    };
    for (const auto& row : rows) {
        const ViewSpan view = ClampView(row.pan, 480, row.imageSize);
        EXPECT_EQ(view.start, row.start) << row.name;
        EXPECT_EQ(view.end, row.end) << row.name;
        EXPECT_EQ(view.pan, row.movedTo) << row.name;
    }
}

TEST(PreviewView, CropHoldsTheViewAndItsMargin) {
    EXPECT_EQ(CropSize(480, 6000), 500);
    EXPECT_EQ(CropSize(480, 490), 490);
    EXPECT_EQ(CropSize(1e300, 490), 0) << "out of integer range";
    EXPECT_EQ(CropOrigin(500, 500, 1000), 250);
    EXPECT_EQ(CropOrigin(251.25, 501, 1000), 1) << "rounded: 251.25 - 250.5 + 0.5";
    EXPECT_EQ(CropOrigin(10, 500, 1000), 0);
    EXPECT_EQ(CropOrigin(999, 500, 1000), 500);

    // At any pan and zoom the crop contains every pixel that the pane shows, so filtered and raw show the same place.
    for (const int index : {3, 4, 5, 8}) {
        const double factor = Zoom{index, 0.0}.Factor();
        for (const int32_t imageSize : {90, 500, 3000}) {
            for (double pan = -50; pan < imageSize + 50; pan += 13.7) {
                const double viewSize = kPaneWidth / factor;
                const int32_t crop = CropSize(viewSize, imageSize);
                const ViewSpan view = ClampView(pan, viewSize, imageSize);
                const int32_t origin = CropOrigin(view.pan, crop, imageSize);
                for (int32_t x = 0; x < DisplaySize(imageSize, factor, kPaneWidth); x += 7) {
                    const int32_t raw = SampledPixel(x, factor, view.start, 0, imageSize - 1);
                    ASSERT_EQ(SampledPixel(x, factor, view.start, origin, crop - 1) + origin, raw)
                        << index << " " << imageSize << " " << pan << " " << x;
                }
            }
        }
    }
}

TEST(PreviewView, SamplesBecomeBytes) {
    EXPECT_EQ(DisplayByte(uint16_t{32768}), 255);
    EXPECT_EQ(DisplayByte(uint16_t{16384}), 127);
    EXPECT_EQ(DisplayByte(uint16_t{65535}), 509 & 255) << "out of range: the low byte";
    EXPECT_EQ(DisplayByte(0.5f), 127);
    EXPECT_EQ(DisplayByte(1.5f), 382 & 255) << "wraps instead of saturating";
    EXPECT_EQ(DisplayByte(-0.01f), 254);
    EXPECT_EQ(DisplayByte(NAN), 0);
    EXPECT_EQ(DisplayByte(1e30f), 0);
}

}  // namespace stairmelt
