#include "ui/placement.h"

#include <gtest/gtest.h>

namespace stairmelt {

namespace {

constexpr PixelSize kScreen = {1280, 1024};

}  // namespace

TEST(Placement, DialogGoesWhereItWas) {
    struct Case {
        const char* name;
        PixelPoint stored, wanted;
    };
    const Case cases[] = {
        {"never shown: in the middle", {-1, -1}, {290, 262}},  // 640 - 701 / 2, 512 - 501 / 2
        {"one number negative: in the middle", {-1, 5}, {290, 262}},  {"on the screen", {100, 200}, {100, 200}},
        {"from another screen: pulled in", {5000, 5000}, {579, 523}}, {"right at the edge", {579, 523}, {579, 523}},
    };
    for (const Case& c : cases) {
        const PixelPoint place = StoredDialogPosition(c.stored, {701, 501}, kScreen);
        EXPECT_EQ(place.x, c.wanted.x) << c.name;
        EXPECT_EQ(place.y, c.wanted.y) << c.name;
    }
}

TEST(Placement, AboutBoxStaysOnTheScreen) {
    struct Case {
        const char* name;
        PixelRect parent;
        PixelPoint wanted;
    };
    const Case cases[] = {
        {"over its parent", {100, 100, 901, 701}, {290, 325}},
        {"parent far to the upper left", {-2000, -2000, -1000, -1500}, {0, 0}},
        {"parent far to the lower right", {1200, 1000, 2200, 2000}, {860, 874}},
        // Both divisions truncate toward zero: (-100 + 301) / 2 - 210.
        {"across the left edge", {-100, 300, 301, 600}, {0, 375}},
    };
    for (const Case& c : cases) {
        const PixelPoint place = AboutBoxPosition(c.parent, {420, 150}, kScreen);
        EXPECT_EQ(place.x, c.wanted.x) << c.name;
        EXPECT_EQ(place.y, c.wanted.y) << c.name;
    }
}

TEST(Placement, GeneralDialogIsAThirdDown) {
    struct Case {
        const char* name;
        PixelRect client;
        bool hasSystemMenu;
        PixelPoint wanted;
    };
    const Case cases[] = {
        {"left of the middle by a caption button", {100, 50, 700, 650}, true, {180, 150}},
        {"by two thirds of it without a menu", {100, 50, 700, 650}, false, {186, 150}},
        {"larger than its parent", {100, 50, 200, 100}, true, {80, 50}},
        {"overflows: pulled in", {1000, 900, 1400, 1300}, true, {880, 724}},
        {"left and top aren't looked at", {-300, -300, 0, 0}, true, {-320, -300}},
    };
    for (const Case& c : cases) {
        const PixelPoint place = GeneralDialogPosition(c.client, {400, 300}, kScreen, 20, c.hasSystemMenu);
        EXPECT_EQ(place.x, c.wanted.x) << c.name;
        EXPECT_EQ(place.y, c.wanted.y) << c.name;
    }
}

}  // namespace stairmelt
