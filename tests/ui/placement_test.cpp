#include "ui/placement.h"

#include <gtest/gtest.h>

namespace stairmelt {

TEST(Placement, DialogsStayWithinReach) {
    const PixelSize screen = {1280, 1024}, dialog = {701, 501}, box = {420, 150}, general = {400, 300};
    const struct {
        const char* name;
        PixelPoint got, wanted;
    } rows[] = {
        {"never shown: centred", StoredDialogPosition({-1, -1}, dialog, screen), {290, 262}},
        {"one coordinate negative: centred", StoredDialogPosition({-1, 5}, dialog, screen), {290, 262}},
        {"at the screen's left edge", StoredDialogPosition({0, 200}, dialog, screen), {0, 200}},
        {"at its upper edge", StoredDialogPosition({200, 0}, dialog, screen), {200, 0}},
        {"from another screen: clamped", StoredDialogPosition({5000, 5000}, dialog, screen), {579, 523}},

        {"over its parent", AboutBoxPosition({100, 100, 901, 701}, box, screen), {290, 325}},
        {"beyond the upper left", AboutBoxPosition({-2000, -2000, -1000, -1500}, box, screen), {0, 0}},
        {"beyond the lower right", AboutBoxPosition({1200, 1000, 2200, 2000}, box, screen), {860, 874}},

        {"left of the centre by a caption button",
         GeneralDialogPosition({100, 50, 700, 650}, general, screen, 20, true),
         {180, 150}},
        {"by two thirds of it", GeneralDialogPosition({100, 50, 700, 650}, general, screen, 20, false), {186, 150}},
        {"larger than its parent", GeneralDialogPosition({100, 50, 200, 100}, general, screen, 20, true), {80, 50}},
        {"overflows: clamped", GeneralDialogPosition({1000, 900, 1400, 1300}, general, screen, 20, true), {880, 724}},
        {"left and top are not", GeneralDialogPosition({-300, -300, 0, 0}, general, screen, 20, true), {-320, -300}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.got.x, row.wanted.x) << row.name;
        EXPECT_EQ(row.got.y, row.wanted.y) << row.name;
    }
}

}  // namespace stairmelt
