#include "ui/slider_geometry.h"

#include <gtest/gtest.h>

namespace stairmelt {

TEST(SliderGeometry, StripCoversBothThumbs) {
    // Wherever the thumb was and is painted, the strip reaches from its left to its right side.
    for (const int32_t width : {60, 400, 467}) {
        for (const SliderRange& range : {SliderRange{0, 255}, SliderRange{0, 100}, SliderRange{0, 65535}}) {
            for (int32_t from = 0; from <= range.max; from += 1 + range.max / 50) {
                for (int32_t to = 0; to <= range.max; to += 1 + range.max / 50) {
                    const SliderStrip strip =
                        StripBetween(StripThumbX(from, width, range), StripThumbX(to, width, range), width);
                    const int32_t before = PaintedThumbX(from, width, range), after = PaintedThumbX(to, width, range);
                    ASSERT_LE(strip.left, std::max(0, std::min(before, after) - kThumbHalf));
                    ASSERT_GE(strip.right, std::min(width, std::max(before, after) + kThumbHalf));
                }
            }
        }
    }
}

TEST(SliderGeometry, ThumbThatWasNeverPaintedIsSomewhere) {
    // Only the sanitizer could object.
    const SliderRange ranges[] = {{0, 255}, {0, 1}, {0, 100}, {0, 0}};
    for (const SliderRange& range : ranges) {
        StripBetween(StripThumbX(INT32_MAX, 400, range), StripThumbX(0, 400, range), 1280);
    }
    EXPECT_EQ(StripThumbX(INT32_MAX, 400, {0, 0}), 6) << "a range without a span";
}

}  // namespace stairmelt
