// Where dialogs are placed on the screen. Arithmetic only, in pixels and screen coordinates.
#pragma once

#include <algorithm>

namespace stairmelt {

struct PixelSize {
    int width, height;
};

struct PixelPoint {
    int x, y;
};

struct PixelRect {
    int left, top, right, bottom;
};

// The parameter dialog: where it was last, or the middle of the screen if either coordinate is negative. Clamped on the
// right and below only.
constexpr PixelPoint StoredDialogPosition(const PixelPoint& stored, const PixelSize& dialog, const PixelSize& screen) {
    if (stored.x < 0 || stored.y < 0) {
        return {screen.width / 2 - dialog.width / 2, screen.height / 2 - dialog.height / 2};
    }
    return {std::min(stored.x, screen.width - dialog.width), std::min(stored.y, screen.height - dialog.height)};
}

// The about box: centred over its parent, clamped to the screen.
constexpr PixelPoint AboutBoxPosition(const PixelRect& parent, const PixelSize& box, const PixelSize& screen) {
    const int x = (parent.right + parent.left) / 2 - box.width / 2;
    const int y = (parent.bottom + parent.top) / 2 - box.height / 2;
    return {std::min(std::max(x, 0), screen.width - box.width), std::min(std::max(y, 0), screen.height - box.height)};
}

// A general dialog over its parent's client area, which is given in screen coordinates: a third of the free height
// down, and left of the centre by the width of a caption button, or two thirds of that without a system menu. The left
// and top edges are clamped only when the right or bottom edge overflows.
constexpr PixelPoint GeneralDialogPosition(const PixelRect& client, const PixelSize& dialog, const PixelSize& screen,
                                           int captionButtonWidth, bool hasSystemMenu) {
    const int offset = hasSystemMenu ? captionButtonWidth : captionButtonWidth - captionButtonWidth / 3;
    int x = client.left + std::max(client.right - client.left - dialog.width, 0) / 2 - offset;
    int y = client.top + std::max(client.bottom - client.top - dialog.height, 0) / 3;
    if (x + dialog.width > screen.width) x = std::max(screen.width - dialog.width, 0);
    if (y + dialog.height > screen.height) y = std::max(screen.height - dialog.height, 0);
    return {x, y};
}

}  // namespace stairmelt
