// What one parameter dialog knows, from WM_INITDIALOG to WM_DESTROY.
#pragma once

#include <windows.h>

#include <cstdint>

#include "host/parameters.h"
#include "ui/pixel_buffer.h"
#include "ui/preview_view.h"

namespace stairmelt {

// The three values that the picture depends on, in the order of the sliders.
struct ViewParams {
    int32_t colorThreshold, softness, bias;
    bool operator==(const ViewParams&) const = default;
};

// The values that the sliders are reset to, and that the first picture is filtered with.
constexpr ViewParams kResetParams = {kParameters[0].defaultValue, kParameters[1].defaultValue,
                                     kParameters[2].defaultValue};

struct DialogState {
    PixelBuffer source;        // the filtered crop: interleaved pixels of the image's own depth, rows without padding
    PixelBuffer display;       // the display image: 8-bit planes one behind the other, rows without padding
    int32_t displayWidth = 0;  // pane pixels, at most those of the pane
    int32_t displayHeight = 0;
    int32_t sourceWidth = 0;  // image pixels of the crop
    int32_t sourceHeight = 0;
    double panX = 0.0;  // requested centre of the view, in image pixels
    double panY = 0.0;
    double viewCentreX = 0.0;  // centre of the view after clamping
    double viewCentreY = 0.0;
    Zoom zoom = {0, 0.0};
    ViewParams viewParams = kResetParams;  // what the preview last took from the sliders
    bool panning = false;                  // a button is held in the pane: the source is shown as it is
    bool canPan = false;                   // the pane shows the hand cursor
    int lastMouseX = 0;                    // client position at the last pan step
    int lastMouseY = 0;
    bool altHeld = false;             // the Cancel button reads Reset
    bool suppressEditChange = false;  // a text is being set that must not reach the preview
};

// The dialog's state; null before OnInitDialog has made it and after WM_DESTROY.
DialogState* StateOf(HWND dialog);

// Makes the state with the view in the middle of the image, and ties it to the dialog. Returns null without memory; the
// dialog then works without its preview.
DialogState* CreateDialogState(HWND dialog);

// Gives back the buffers and unties the state.
void DestroyDialogState(HWND dialog);

}  // namespace stairmelt
