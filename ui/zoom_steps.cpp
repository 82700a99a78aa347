#include "ui/zoom_steps.h"

#include <algorithm>
#include <cstdio>

#include "host/coordinates.h"
#include "resources/resource_ids.h"
#include "ui/preview.h"

namespace stairmelt {

void SetZoom(HWND dialog, DialogState& state, const Zoom& zoom) {
    state.zoom = zoom;
    char text[32];
    std::snprintf(text, sizeof text, "%d %%", static_cast<int>(zoom.Percent()));
    SetDlgItemTextA(dialog, IDC_ZOOM_LABEL, text);
    RenderPreview(dialog, state, true, false);
}

void ZoomIn(HWND dialog, DialogState& state) {
    if (state.zoom.index < kZoomHighest) SetZoom(dialog, state, {state.zoom.index + 1, 0.0});
}

void ZoomOut(HWND dialog, DialogState& state) {
    if (state.zoom.index > 0) {
        SetZoom(dialog, state, {state.zoom.index - 1, 0.0});
    } else if (state.zoom.fraction != 0.0) {
        SetZoom(dialog, state, {state.zoom.index, 0.0});
    }
}

void FitToPane(HWND dialog, DialogState& state) {
    const VPoint size = ImageSize();
    SetZoom(dialog, state, ZoomToFit(size.h, size.v));
}

void ZoomToFullSizeAt(HWND dialog, DialogState& state, const POINT& position) {
    if (state.zoom.index < kZoomFullSize) {
        const double factor = state.zoom.Factor();
        const VPoint size = ImageSize();
        const double x = (position.x - kPaneCentreX) / factor + state.viewCentreX;
        const double y = (position.y - kPaneCentreY) / factor + state.viewCentreY;
        state.panX = std::min(std::max(x, 0.0), static_cast<double>(size.h));
        state.panY = std::min(std::max(y, 0.0), static_cast<double>(size.v));
    }
    SetZoom(dialog, state, {kZoomFullSize, 0.0});
}

}  // namespace stairmelt
