#include "ui/preview.h"

#include <cstdlib>
#include <cstring>

#include "engine/image.h"
#include "host/coordinates.h"
#include "host/image_class.h"
#include "host/kernel_dispatch.h"
#include "host/plugin_entry.h"
#include "ui/dialog_controls.h"
#include "ui/preview_view.h"

namespace stairmelt {

namespace {

// The pane inside its frame.
constexpr RECT kPaneInside = {kPaneLeft + 1, kPaneTop + 1, kPaneRight - 1, kPaneBottom - 1};

// The pixels that the sampler reads: the filtered crop or the whole source.
struct SampledPixels {
    const uint8_t* base;  // null if there are none
    int64_t rowBytes;
    int32_t lastX, lastY;
    int32_t originX, originY;  // image pixel at the base
};

// The visible part of the image, in image pixels.
struct View {
    double factor;  // pane pixels per image pixel
    ViewSpan x, y;
};

int64_t PixelBytes() { return static_cast<int64_t>(gFilterRecord->depth / 8) * gFilterRecord->planes; }

// Both return whether the size has changed.
bool ResizeSource(DialogState& state, int32_t width, int32_t height) {
    if (width == state.sourceWidth && height == state.sourceHeight) return false;
    state.sourceWidth = width;
    state.sourceHeight = height;
    const int32_t bitsPerPixel = WrapMul(gFilterRecord->planes, gFilterRecord->depth);
    state.source.Reallocate(WrapMul(WrapMul(bitsPerPixel, height), width) / 8, PixelBytes() * height * width);
    return true;
}

bool ResizeDisplay(DialogState& state, int32_t width, int32_t height) {
    if (width == state.displayWidth && height == state.displayHeight) return false;
    state.displayWidth = width;
    state.displayHeight = height;
    const int32_t bytes = gFilterRecord->planes * height * width;  // at most the pane's, for each plane
    state.display.Reallocate(bytes, bytes);
    return true;
}

SampledPixels WholeImage(const VPoint& size) {
    return {
        static_cast<const uint8_t*>(gFilterRecord->inData), gFilterRecord->inRowBytes, size.h - 1, size.v - 1, 0, 0};
}

// Copies the crop into the source buffer and filters it there, the way the final run filters the whole image.
SampledPixels FilterCrop(const DialogState& state, int32_t left, int32_t top) {
    const int32_t inRowBytes = gFilterRecord->inRowBytes;
    const int64_t rowBytes = PixelBytes() * state.sourceWidth;
    uint8_t* const from =
        static_cast<uint8_t*>(gFilterRecord->inData) + PixelBytes() * left + int64_t{top} * inRowBytes;
    for (int32_t y = 0; y < state.sourceHeight; ++y) {
        std::memcpy(state.source.pixels + y * rowBytes, from + int64_t{y} * inRowBytes, static_cast<size_t>(rowBytes));
    }
    const ImageView source = {state.sourceWidth, state.sourceHeight, from, inRowBytes};
    const ImageView destination = {state.sourceWidth, state.sourceHeight, state.source.pixels,
                                   static_cast<int32_t>(rowBytes)};
    DispatchKernel({
        .colorThreshold = state.viewParams.colorThreshold,
        .softness = state.viewParams.softness,
        .bias = state.viewParams.bias,
        .reserved = nullptr,
        .key = ClassifyImage(),
        .source = &source,
        .destination = &destination,
        .left = 0,
        .top = 0,
        .right = state.sourceWidth,
        .bottom = state.sourceHeight,
    });
    return {state.source.pixels, rowBytes, state.sourceWidth - 1, state.sourceHeight - 1, left, top};
}

template <class Sample>
uint8_t DisplayByteAt(const uint8_t* sample) {
    Sample value;
    std::memcpy(&value, sample, sizeof value);
    return DisplayByte(value);
}

// Converts one pixel; its bytes go to the same place in each plane.
void ConvertPixel(const uint8_t* pixel, uint8_t* displayed, int64_t planeBytes) {
    const int32_t planes = gFilterRecord->planes;
    const int32_t sampleBytes = gFilterRecord->depth / 8;
    // A depth that no kernel supports shows as noise, the same in all planes.
    const uint8_t noise = sampleBytes == 1 || sampleBytes == 2 || sampleBytes == 4
                              ? uint8_t{0}
                              : ToSample<uint8_t>(static_cast<int32_t>(std::rand()));
    for (int32_t plane = 0; plane < planes; ++plane) {
        const uint8_t* const sample = pixel + plane * sampleBytes;
        uint8_t& byte = displayed[plane * planeBytes];
        switch (sampleBytes) {
            case 1: byte = DisplayByteAt<uint8_t>(sample); break;
            case 2: byte = DisplayByteAt<uint16_t>(sample); break;
            case 4: byte = DisplayByteAt<float>(sample); break;
            default: byte = noise;
        }
    }
}

void SampleView(const DialogState& state, const View& view, const SampledPixels& pixels) {
    int32_t columns[kPaneWidth];  // the image column under each display column
    for (int32_t x = 0; x < state.displayWidth; ++x) {
        columns[x] = SampledPixel(x, view.factor, view.x.start, pixels.originX, pixels.lastX);
    }
    const int64_t planeBytes = int64_t{state.displayWidth} * state.displayHeight;
    for (int32_t y = 0; y < state.displayHeight; ++y) {
        const int32_t row = SampledPixel(y, view.factor, view.y.start, pixels.originY, pixels.lastY);
        const uint8_t* const from = pixels.base + row * pixels.rowBytes;
        uint8_t* const to = state.display.pixels + int64_t{y} * state.displayWidth;
        for (int32_t x = 0; x < state.displayWidth; ++x)
            ConvertPixel(from + columns[x] * PixelBytes(), to + x, planeBytes);
    }
}

void InvalidatePane(HWND dialog, bool paintNow) {
    InvalidateRect(dialog, &kPaneInside, FALSE);
    if (!paintNow) return;
    SendMessageA(dialog, WM_PAINT, 0, 0);
    ValidateRect(dialog, &kPaneInside);
}

}  // namespace

void RenderPreview(HWND dialog, DialogState& state, bool force, bool paintNow) {
    const VPoint size = ImageSize();
    View view = {state.zoom.Factor(), {}, {}};
    const double viewWidth = kPaneWidth / view.factor;
    const double viewHeight = kPaneHeight / view.factor;

    if (ResizeSource(state, CropSize(viewWidth, size.h), CropSize(viewHeight, size.v))) force = true;
    if (ResizeDisplay(state, DisplaySize(size.h, view.factor, kPaneWidth),
                      DisplaySize(size.v, view.factor, kPaneHeight))) {
        force = true;
    }
    const int32_t left = CropOrigin(state.panX, state.sourceWidth, size.h);
    const int32_t top = CropOrigin(state.panY, state.sourceHeight, size.v);

    if (!force) {
        const ViewParams params = ReadSliders(dialog);
        if (params == state.viewParams) return;
        state.viewParams = params;
    }

    view.x = ClampView(state.panX, viewWidth, size.h);
    view.y = ClampView(state.panY, viewHeight, size.v);
    state.panX = view.x.pan;
    state.panY = view.y.pan;
    state.canPan = size.v > viewHeight;  // by the height alone
    state.viewCentreX = (view.x.start + view.x.end) * 0.5;
    state.viewCentreY = (view.y.start + view.y.end) * 0.5;

    SampledPixels pixels = WholeImage(size);
    const bool isFiltered = !state.panning && state.zoom.index >= kZoomFiltered;
    if (isFiltered && pixels.base != nullptr && state.source.pixels != nullptr) pixels = FilterCrop(state, left, top);
    if (pixels.base != nullptr && state.display.pixels != nullptr) SampleView(state, view, pixels);
    InvalidatePane(dialog, paintNow);
}

}  // namespace stairmelt
