#include "ui/preview_view.h"

#include <gtest/gtest.h>

#include <cmath>

namespace stairmelt {

TEST(PreviewView, FitFillsThePane) {
    struct Case {
        const char* name;
        int32_t width, height;
        int index;
        int32_t percent;
    };
    const Case cases[] = {
        {"small: beyond the ladder", 10, 10, 8, 3600},
        {"a step exactly", 480, 100, 4, 100},
        {"between steps", 300, 300, 4, 120},
        {"limited by the width", 1000, 100, 2, 48},
        {"huge: below the lowest step", 96000, 10, 0, 1},
        {"one pixel", 1, 1, 8, 36000},
    };
    for (const Case& c : cases) {
        const Zoom zoom = ZoomToFit(c.width, c.height);
        EXPECT_EQ(zoom.index, c.index) << c.name;
        EXPECT_EQ(zoom.Percent(), c.percent) << c.name;
        EXPECT_DOUBLE_EQ(zoom.Factor(), std::min(360.0 / c.height, 480.0 / c.width)) << c.name;
    }
}

TEST(PreviewView, ViewStaysWithinTheImage) {
    struct Case {
        const char* name;
        double pan, viewSize;
        int32_t imageSize;
        double start, end, movedTo;
    };
    const Case cases[] = {
        {"inside", 500, 480, 1000, 260, 740, 500},          {"beyond the start", 100, 480, 1000, 0, 480, 240},
        {"beyond the end", 990, 480, 1000, 520, 1000, 760}, {"smaller image: pan stays", -70, 480, 300, 0, 300, -70},
        {"just as large", 3, 480, 480, 0, 480, 240},
    };
    for (const Case& c : cases) {
        const ViewSpan view = ClampView(c.pan, c.viewSize, c.imageSize);
        EXPECT_EQ(view.start, c.start) << c.name;
        EXPECT_EQ(view.end, c.end) << c.name;
        EXPECT_EQ(view.pan, c.movedTo) << c.name;
    }
}

TEST(PreviewView, CropHoldsTheViewAndItsMargin) {
    EXPECT_EQ(CropSize(480, 6000), 500);
    EXPECT_EQ(CropSize(960, 6000), 980) << "50 percent: the largest that is filtered";
    EXPECT_EQ(CropSize(480, 490), 490);
    EXPECT_EQ(CropSize(1e300, 490), 0) << "no integer holds it";
    EXPECT_EQ(CropOrigin(500, 500, 1000), 250);
    EXPECT_EQ(CropOrigin(250.5, 501, 1000), 0) << "rounded: 250.5 - 250.5 + 0.5";
    EXPECT_EQ(CropOrigin(10, 500, 1000), 0);
    EXPECT_EQ(CropOrigin(999, 500, 1000), 500);
    EXPECT_EQ(CropOrigin(5, 7, 7), 0);

    // At any pan and zoom, every pixel that the pane shows lies in the crop, so that filtered and raw show one place.
    for (const int index : {3, 4, 5, 8}) {
        const double factor = Zoom{index, 0.0}.Factor();
        for (const int32_t imageSize : {90, 500, 3000}) {
            for (double pan = -50; pan < imageSize + 50; pan += 13.7) {
                const double viewSize = kPaneWidth / factor;
                const int32_t crop = CropSize(viewSize, imageSize);
                const ViewSpan view = ClampView(pan, viewSize, imageSize);
                const int32_t origin = CropOrigin(view.pan, crop, imageSize);
                const int32_t shown = DisplaySize(imageSize, factor, kPaneWidth);
                for (int32_t x = 0; x < shown; x += 7) {
                    const int32_t raw = SampledPixel(x, factor, view.start, 0, imageSize - 1);
                    ASSERT_EQ(SampledPixel(x, factor, view.start, origin, crop - 1) + origin, raw)
                        << index << " " << imageSize << " " << pan << " " << x;
                }
            }
        }
    }
}

TEST(PreviewView, SmallImagesAreCentred) {
    EXPECT_EQ(DisplaySize(300, 1.0, kPaneWidth), 300);
    EXPECT_EQ(DisplaySize(10000, 1.0, kPaneWidth), 480);
    EXPECT_EQ(DisplaySize(3, 0.0625, kPaneWidth), 0);
    EXPECT_EQ(DisplaySize(0, INFINITY, kPaneWidth), 0);
    EXPECT_EQ(DisplayOrigin(300, kPaneLeft, kPaneWidth, kPaneCentreX), 100);
    EXPECT_EQ(DisplayOrigin(201, kPaneTop, kPaneHeight, kPaneCentreY), 90);
    EXPECT_EQ(DisplayOrigin(360, kPaneTop, kPaneHeight, kPaneCentreY), 10);
    EXPECT_TRUE(IsInPane(10, 370) && IsInPane(490, 10) && !IsInPane(491, 200) && !IsInPane(200, 9));
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
