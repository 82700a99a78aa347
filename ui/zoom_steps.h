// The zoom of the preview: stepping along the ladder, fitting, and returning to 100 percent. Each redraws the preview.
#pragma once

#include <windows.h>

#include "ui/dialog_state.h"

namespace stairmelt {

// Sets the zoom and its label.
void SetZoom(HWND dialog, DialogState& state, const Zoom& zoom);

// The next step, if there is one. From a fraction below the lowest step ZoomOut goes back to that step.
void ZoomIn(HWND dialog, DialogState& state);
void ZoomOut(HWND dialog, DialogState& state);

// The whole image, as large as the pane allows.
void FitToPane(HWND dialog, DialogState& state);

// 100 percent with the image pixel under the client position in the pane's middle. From 100 percent on the view's
// centre stays.
void ZoomToFullSizeAt(HWND dialog, DialogState& state, const POINT& position);

}  // namespace stairmelt
