// The preview's zoom: stepping along the ladder, fitting the image, returning to 100 percent. Each renders the preview.
#pragma once

#include <windows.h>

#include "ui/dialog_state.h"

namespace stairmelt {

// Sets the zoom and its label.
void SetZoom(HWND dialog, DialogState& state, const Zoom& zoom);

// Go to the next step, if there is one. From a fitted zoom on the lowest step, ZoomOut goes to that step itself.
void ZoomIn(HWND dialog, DialogState& state);
void ZoomOut(HWND dialog, DialogState& state);

// Shows the whole image, as large as the pane allows.
void FitToPane(HWND dialog, DialogState& state);

// Goes to 100 percent, with the image pixel under the client position in the middle of the pane. From 100 percent up
// the centre of the view stays.
void ZoomToFullSizeAt(HWND dialog, DialogState& state, const POINT& position);

}  // namespace stairmelt
