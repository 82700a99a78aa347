// The painting of the preview pane.
#include "host/coordinates.h"
#include "host/filter_api.h"
#include "host/image_class.h"
#include "host/plugin_entry.h"
#include "ui/preview.h"
#include "ui/preview_view.h"

namespace stairmelt {

namespace {

// The display image has 8 bits, so deep modes are shown as their 8-bit counterparts.
int32_t DisplayedMode(int16_t imageMode) {
    switch (imageMode) {
        case kModeGray16:
        case kModeGray32: return kModeGrayScale;
        case kModeRGB48:
        case kModeRGB96: return kModeRGBColor;
        case kModeLab48: return kModeLabColor;
        case kModeCMYK64: return kModeCMYKColor;
        case kModeDeepMultichannel: return kModeMultichannel;
        case kModeDuotone16: return kModeDuotone;
    }
    return imageMode;
}

// Fills in the mask of a floating selection or of the layer's transparency. Returns false if there is none.
bool FindMask(const DialogState& state, int32_t displayedMode, PSPixelMask& mask) {
    mask = {};
    mask.colBytes = 1;
    mask.maskDescription = kSimplePSMask;
    if (gFilterRecord->isFloating) {
        // The document's own mask, at the document's scale. If the display image is larger than the document, the host
        // would read past the mask's end.
        const VPoint size = ImageSize();
        if (gFilterRecord->maskData == nullptr || state.displayWidth > size.h || state.displayHeight > size.v)
            return false;
        mask.maskData = gFilterRecord->maskData;
        mask.rowBytes = gFilterRecord->maskRowBytes;
        return true;
    }
    if (gFilterRecord->inLayerPlanes == 0 || gFilterRecord->inTransparencyMask == 0) return false;
    const int32_t channels = ColorChannelCount(gFilterRecord->imageMode, gFilterRecord->planes);
    if (displayedMode == kModeMultichannel || channels >= gFilterRecord->planes) return false;
    mask.maskData = state.display.pixels + int64_t{channels} * state.displayWidth * state.displayHeight;
    mask.rowBytes = state.displayWidth;
    return true;
}

void DrawDisplayImage(const DialogState& state, HDC dc, int left, int top) {
    const DisplayPixelsProc displayPixels = gFilterRecord->displayPixels;
    if (displayPixels == nullptr || state.display.pixels == nullptr) return;
    const int32_t mode = DisplayedMode(gFilterRecord->imageMode);
    PSPixelMask mask;
    const bool hasMask = FindMask(state, mode, mask);
    PSPixelMap map = {};
    map.version = 1;
    map.bounds = {0, 0, state.displayHeight, state.displayWidth};
    map.imageMode = mode;
    map.rowBytes = state.displayWidth;
    map.colBytes = 1;
    map.planeBytes = state.displayWidth * state.displayHeight;
    map.baseAddr = state.display.pixels;
    map.masks = hasMask ? &mask : nullptr;
    displayPixels(&map, &map.bounds, top, left, dc);
}

void DrawFrameAndBands(const DialogState& state, HDC dc, int left, int top) {
    const HBRUSH black = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    const int right = left + state.displayWidth < kPaneRight ? left + state.displayWidth : kPaneRight;
    const int bottom = top + state.displayHeight < kPaneBottom ? top + state.displayHeight : kPaneBottom;
    const RECT pane = {kPaneLeft, kPaneTop, kPaneRight, kPaneBottom};
    FrameRect(dc, &pane, black);
    if (state.displayWidth < kPaneWidth) {
        const RECT bands[] = {{kPaneLeft, kPaneTop, left, kPaneBottom}, {right, kPaneTop, kPaneRight, kPaneBottom}};
        for (const RECT& band : bands) FillRect(dc, &band, black);
    }
    if (state.displayHeight < kPaneHeight) {
        const RECT bands[] = {{kPaneLeft, kPaneTop, kPaneRight, top}, {kPaneLeft, bottom, kPaneRight, kPaneBottom}};
        for (const RECT& band : bands) FillRect(dc, &band, black);
    }
}

}  // namespace

void PaintPreview(HWND dialog, const DialogState& state) {
    const int left = DisplayOrigin(state.displayWidth, kPaneLeft, kPaneWidth, kPaneCentreX);
    const int top = DisplayOrigin(state.displayHeight, kPaneTop, kPaneHeight, kPaneCentreY);
    PAINTSTRUCT paint = {};
    if (const HDC dc = BeginPaint(dialog, &paint)) {
        DrawDisplayImage(state, dc, left, top);
        DrawFrameAndBands(state, dc, left, top);
    }
    EndPaint(dialog, &paint);
}

}  // namespace stairmelt
