// The preview pane: filters the visible part of the image and shows it through the host.
//
// There is no thread and no timer: a render runs to its end inside the event that called for it. It stays quick because
// only the view and a margin are filtered, nothing below 50 percent, and nothing while a button holds the view. The
// margin covers runs of up to about ten pixels beyond the view: a longer ramp that begins outside it isn't seen.
//
// A host that can't give a buffer, or draws no previews, gets what is possible: the source without the filter, or the
// frame and its bands alone.
#pragma once

#include <windows.h>

namespace stairmelt {

// Rebuilds the display image and marks the pane for repainting. Unless forced, only if a slider has moved since the
// last time; forced, with the values that the preview took last. paintNow repaints before it returns.
void RenderPreview(HWND dialog, bool force, bool paintNow);

// Answers the dialog's WM_PAINT: has the host draw the display image, then draws the frame and the bands around it.
void PaintPreview(HWND dialog);

}  // namespace stairmelt
