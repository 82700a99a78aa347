// Which part of the image the preview pane shows, and where. Arithmetic only. Image pixels are the document's, pane
// pixels the screen's; the zoom factor is the number of pane pixels per image pixel.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "engine/rules/arith.h"

namespace stairmelt {

// The pane in the dialog's client area. Its frame is its outermost pixel.
constexpr int kPaneLeft = 10;
constexpr int kPaneTop = 10;
constexpr int kPaneWidth = 480;
constexpr int kPaneHeight = 360;
constexpr int kPaneRight = kPaneLeft + kPaneWidth;
constexpr int kPaneBottom = kPaneTop + kPaneHeight;
constexpr int kPaneCentreX = kPaneLeft + kPaneWidth / 2;
constexpr int kPaneCentreY = kPaneTop + kPaneHeight / 2;

// Both ends are included.
constexpr bool IsInPane(int x, int y) { return x >= kPaneLeft && x <= kPaneRight && y >= kPaneTop && y <= kPaneBottom; }

// The zoom ladder, nine steps, each twice the one before: 6.25 percent at step 0, 1600 percent at step 8.
constexpr int kZoomFullSize = 4;  // 100 percent
constexpr int kZoomHighest = 8;
constexpr int kZoomFiltered = 3;  // 50 percent: from here up the preview is filtered

// A step of the ladder and the fraction that fit-to-pane adds to its factor, which can be negative.
struct Zoom {
    int index;
    double fraction;

    // Doubled and halved, so that the steps are exact.
    double Factor() const {
        double factor = 1.0;
        for (int step = kZoomFullSize; step < index; ++step) factor *= 2.0;
        for (int step = kZoomFullSize; step > index; --step) factor *= 0.5;
        return factor + fraction;
    }

    // Rounded to nearest, for the label.
    int32_t Percent() const { return TruncateToInt(Zoom{index, 0.0}.Factor() * 100 + fraction * 100 + 0.5); }
};

// The zoom at which an image just fits the pane.
inline Zoom ZoomToFit(int32_t width, int32_t height) {
    const double target = std::min(static_cast<double>(kPaneHeight) / height, static_cast<double>(kPaneWidth) / width);
    Zoom zoom = {kZoomHighest, 0.0};
    while (zoom.Factor() > target && zoom.index > 0) --zoom.index;
    zoom.fraction = target - zoom.Factor();
    return zoom;
}

// The view along one axis.
struct ViewSpan {
    double start, end;  // image pixels; `start` is at the pane's left or top
    double pan;         // the requested centre, moved along when the view is clamped
};

// Clamps a view of `viewSize` image pixels around `pan` to the image. A larger view shows the whole image and leaves
// the requested centre unchanged.
inline ViewSpan ClampView(double pan, double viewSize, int32_t imageSize) {
    if (viewSize > imageSize) return {0.0, static_cast<double>(imageSize), pan};
    ViewSpan view = {pan - viewSize * 0.5, 0.0, pan};
    view.end = view.start + viewSize;
    if (view.start < 0) {
        view = {0.0, view.end - view.start, 0.0};
        view.pan = (view.start + view.end) * 0.5;
    }
    if (view.end > imageSize) {
        view = {view.start - (view.end - imageSize), static_cast<double>(imageSize), 0.0};
        view.pan = (view.start + view.end) * 0.5;
    }
    return view;
}

// The crop that is filtered: the view plus ten image pixels on each side, clamped to the image.
constexpr int32_t kCropMargin = 20;

inline int32_t CropSize(double viewSize, int32_t imageSize) {
    const int32_t size = WrapAdd(TruncateToInt(viewSize + 0.5), kCropMargin);
    return size < 0 ? 0 : std::min(size, imageSize);
}

// Rounded from the requested centre.
inline int32_t CropOrigin(double pan, int32_t cropSize, int32_t imageSize) {
    const int32_t origin = std::max(TruncateToInt(pan - cropSize * 0.5 + 0.5), 0);
    return static_cast<int64_t>(origin) + cropSize > imageSize ? imageSize - cropSize : origin;
}

// The size of the display image, in pane pixels.
inline int32_t DisplaySize(int32_t imageSize, double factor, int32_t paneSize) {
    return std::clamp(TruncateToInt(imageSize * factor + 0.5), 0, paneSize);
}

// Where the display image starts in the pane: an image smaller than the pane is centred.
constexpr int DisplayOrigin(int32_t displaySize, int paneStart, int paneSize, int paneCentre) {
    return displaySize >= paneSize ? paneStart : paneCentre - displaySize / 2;
}

// The image pixel under a display pixel (nearest neighbour), relative to `origin` and clamped to 0..last.
inline int32_t SampledPixel(int32_t display, double factor, double viewStart, int32_t origin, int32_t last) {
    const int32_t pixel = TruncateToInt(display / factor + viewStart - origin);
    return pixel < 0 ? 0 : std::min(pixel, last);
}

// Converts a sample to a byte of the display image. The low byte is kept: a float above white wraps instead of
// saturating, and one out of integer range becomes 0.
inline uint8_t DisplayByte(uint8_t sample) { return sample; }
inline uint8_t DisplayByte(uint16_t sample) { return ToSample<uint8_t>(sample * 255 / 32768); }
inline uint8_t DisplayByte(float sample) { return ToSample<uint8_t>(TruncateToInt(sample * 255.0f)); }

}  // namespace stairmelt
