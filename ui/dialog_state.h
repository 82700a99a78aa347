// The state of one parameter dialog, from WM_INITDIALOG to WM_DESTROY.
#pragma once

#include <windows.h>

#include <cstdint>

#include "host/parameters.h"
#include "ui/pixel_buffer.h"
#include "ui/preview_view.h"

namespace stairmelt {

// The three parameters, in the order of the sliders.
struct ViewParams {
    int32_t colorThreshold, softness, bias;
    bool operator==(const ViewParams&) const = default;
};

// The values that Reset restores; the first preview is filtered with them, too.
constexpr ViewParams kResetParams = {kParameters[0].defaultValue, kParameters[1].defaultValue,
                                     kParameters[2].defaultValue};

struct DialogState {
    PixelBuffer source;        // the filtered crop: interleaved pixels in the image's own depth, rows not padded
    PixelBuffer display;       // the display image: 8-bit planes one after the other, rows not padded
    int32_t displayWidth = 0;  // pane pixels, at most the pane's size
    int32_t displayHeight = 0;
    int32_t sourceWidth = 0;  // image pixels of the crop
    int32_t sourceHeight = 0;
    double panX = 0.0;  // requested centre of the view, in image pixels
    double panY = 0.0;
    double viewCentreX = 0.0;  // centre of the view after clamping
    double viewCentreY = 0.0;
    Zoom zoom = {0, 0.0};
    ViewParams viewParams = kResetParams;  // the slider values that the preview last used
    bool panning = false;                  // a button is held in the pane: the unfiltered source is shown
    bool canPan = false;                   // the pane shows the hand cursor
    int lastMouseX = 0;                    // client position at the last pan step
    int lastMouseY = 0;
    bool altHeld = false;             // the Cancel button reads Reset
    bool suppressEditChange = false;  // ignore EN_CHANGE while a text is set that must not reach the preview
};

// The dialog's state; null until WM_INITDIALOG has created it and after WM_DESTROY.
DialogState* StateOf(HWND dialog);

// Creates the state with the view in the middle of the image and attaches it to the dialog. Returns null if there is
// not enough memory.
DialogState* CreateDialogState(HWND dialog);

// Releases the buffers and detaches the state.
void DestroyDialogState(HWND dialog);

}  // namespace stairmelt
