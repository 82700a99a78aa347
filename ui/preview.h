// The preview pane: filters the visible part of the image and shows it through the host.
//
// There is no thread and no timer: a render completes inside the event that requested it. It is fast enough because
// only the view and a margin are filtered, nothing below 50 percent, and nothing while a button holds the view. The
// margin covers ten image pixels beyond the view: a longer ramp that begins outside it does not show.
//
// If the host cannot provide a buffer or draw, the pane shows what is possible: the source without the filter, or
// only its frame and bands.
#pragma once

#include <windows.h>

#include "ui/dialog_state.h"

namespace stairmelt {

// Rebuilds the display image and marks the pane for repainting. Without `force` it does so only if a slider has moved
// since the last time; with it, it uses the values that the preview took last. `paintNow` repaints before returning.
void RenderPreview(HWND dialog, DialogState& state, bool force, bool paintNow);

// Handles the dialog's WM_PAINT: the host draws the display image, then the frame and the bands are drawn around it.
void PaintPreview(HWND dialog, const DialogState& state);

}  // namespace stairmelt
