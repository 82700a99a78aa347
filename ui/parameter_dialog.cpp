#include "ui/parameter_dialog.h"

#include <windows.h>

#include "host/dll_main.h"
#include "host/parameters.h"
#include "host/plugin_entry.h"
#include "resources/resource_ids.h"
#include "ui/custom_slider.h"
#include "ui/dialog_controls.h"
#include "ui/dialog_keys.h"
#include "ui/dialog_state.h"
#include "ui/placement.h"
#include "ui/preview.h"
#include "ui/ui_hooks.h"
#include "ui/ui_strings.h"
#include "ui/zoom_steps.h"

namespace stairmelt {

namespace {

// The pointer in client coordinates; 0, 0 if the system does not report it.
POINT PointerIn(HWND window) {
    POINT position;
    if (!GetCursorPos(&position)) return {0, 0};
    ScreenToClient(window, &position);
    return position;
}

bool PointInPreview(HWND dialog) {
    const POINT position = PointerIn(dialog);
    return IsInPane(position.x, position.y);
}

// ---- Creation and destruction ----

void PlaceDialog(HWND dialog) {
    RECT window;
    GetWindowRect(dialog, &window);
    const PixelSize size = {window.right - window.left, window.bottom - window.top};
    const PixelSize screen = {GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    const PixelPoint place =
        StoredDialogPosition({gParameterBlock->windowPosX, gParameterBlock->windowPosY}, size, screen);
    MoveWindow(dialog, place.x, place.y, size.width, size.height, TRUE);
}

INT_PTR InitParameterDialog(HWND dialog) {
    if (StateOf(dialog) != nullptr) return 1;  // a stray message, not the system's
    PlaceDialog(dialog);
    const ViewParams values = {gParameterBlock->colorThreshold, gParameterBlock->softness, gParameterBlock->bias};
    // There is no state yet, so the edit boxes' change notifications are dropped.
    for (const ParameterControls& controls : kParameterControls) {
        SetupSlider(dialog, controls.sliderId, controls.editId, controls.min, controls.max, values.*controls.param);
    }
    SetDlgItemTextA(dialog, IDOK, UiString(kStringOk));
    SetDlgItemTextA(dialog, IDC_CANCEL_RESET, UiString(kStringCancel));
    DialogState* const state = CreateDialogState(dialog);
    if (state == nullptr) {
        EndDialog(dialog, 0);  // without memory the run counts as cancelled
        return 1;
    }
    SetZoom(dialog, *state, {kZoomFullSize, 0.0});
    EnumChildWindows(dialog, SubclassChild, 0);
    return 1;
}

// ---- Painting ----

INT_PTR OnPaint(HWND dialog, DialogState& state) {
    state.viewParams = ReadSliders(dialog);
    PaintPreview(dialog, state);
    return 0;
}

// ---- Keys ----

INT_PTR OnKeyDown(HWND dialog, DialogState& state, WPARAM key) {
    switch (key) {
        case VK_UP:
        case VK_DOWN:
            if (const ParameterControls* const controls = ControlsWithFocus()) {
                const int32_t step = key == VK_UP ? 1 : -1;
                StepParameter(dialog, *controls, SliderPosition(dialog, controls->sliderId) + step);
            }
            return 1;
        case VK_ADD:
            ZoomIn(dialog, state);
            SetFocus(GetDlgItem(dialog, IDC_ZOOM_IN));
            return 1;
        case VK_SUBTRACT:
            ZoomOut(dialog, state);
            SetFocus(GetDlgItem(dialog, IDC_ZOOM_OUT));
            return 1;
    }
    return 0;
}

INT_PTR SetAltHeld(HWND dialog, DialogState& state, bool isHeld) {
    state.altHeld = isHeld;
    SetDlgItemTextA(dialog, IDC_CANCEL_RESET, UiString(isHeld ? kStringReset : kStringCancel));
    return 0;
}

// ---- Commands ----

void Accept(HWND dialog) {
    const ViewParams values = ReadSliders(dialog);
    gParameterBlock->colorThreshold = values.colorThreshold;
    gParameterBlock->softness = values.softness;
    gParameterBlock->bias = values.bias;
    RECT window;
    GetWindowRect(dialog, &window);
    gParameterBlock->windowPosX = window.left;
    gParameterBlock->windowPosY = window.top;
    EndDialog(dialog, 1);
}

// The edit boxes' change notifications update the preview, once for each value that differs.
void Reset(HWND dialog) {
    for (const ParameterControls& controls : kParameterControls) {
        const int32_t value = kResetParams.*controls.param;
        SetSliderPosition(dialog, controls.sliderId, value);
        SetEditValue(dialog, controls.editId, value, false, kNoPreviousValue);
    }
}

// The text stays as typed, even where the slider limits the number.
void OnEditChange(HWND dialog, DialogState& state, const ParameterControls& controls) {
    SetSliderPosition(dialog, controls.sliderId, EditNumber(dialog, controls.editId));
    RenderPreview(dialog, state, false, false);
}

INT_PTR OnCommand(HWND dialog, DialogState& state, int id, UINT notification) {
    switch (id) {
        case IDOK: Accept(dialog); return 1;
        case IDCANCEL: EndDialog(dialog, 0); return 1;
        case IDC_CANCEL_RESET:
            if (state.altHeld) {
                Reset(dialog);
            } else {
                EndDialog(dialog, 0);
            }
            return 1;
        case IDC_ZOOM_OUT: ZoomOut(dialog, state); return 1;
        case IDC_ZOOM_IN: ZoomIn(dialog, state); return 1;
    }
    const ParameterControls* const controls = ControlsOfEdit(id);
    if (controls != nullptr && notification == EN_CHANGE && !state.suppressEditChange) {
        OnEditChange(dialog, state, *controls);
    }
    return 1;
}

// The position under the pointer on a stock trackbar, which jumps there when its channel is clicked.
int32_t ClickedPosition(HWND slider, const ParameterControls& controls) {
    RECT window;
    GetWindowRect(slider, &window);
    const int32_t width = window.right - window.left;
    const int32_t x = PointerIn(slider).x;
    return QuotientOrZero(WrapMul(controls.max - controls.min, x - 5), width - 10);
}

INT_PTR OnHScroll(HWND dialog, DialogState& state, WORD code, HWND slider) {
    if (const ParameterControls* const controls = ControlsOfSlider(GetDlgCtrlID(slider))) {
        int32_t position;
        if (code == SB_PAGEUP || code == SB_PAGEDOWN) {  // never from a CustomSlider
            position = ClickedPosition(slider, *controls);
            SetSliderPosition(dialog, controls->sliderId, position);
        } else {
            position = SliderPosition(dialog, controls->sliderId);
        }
        SetEditValue(dialog, controls->editId, position, true, kNoPreviousValue);
    }
    RenderPreview(dialog, state, false, false);
    return 0;
}

// ---- Mouse ----

// The image follows the pointer: dragging to the right moves the view to the left.
void PanTo(HWND dialog, DialogState& state, const POINT& position) {
    const double factor = state.zoom.Factor();
    state.panX += (state.lastMouseX - position.x) / factor;
    state.panY += (state.lastMouseY - position.y) / factor;
    state.lastMouseX = position.x;
    state.lastMouseY = position.y;
    RenderPreview(dialog, state, true, true);
}

INT_PTR OnMouseMove(HWND dialog, DialogState& state) {
    if (state.panning) {
        SetHandCursor();
        PanTo(dialog, state, PointerIn(dialog));
    } else if (state.canPan && PointInPreview(dialog)) {
        SetHandCursor();
    } else {
        SetArrowCursor();
    }
    return 0;
}

// Takes the focus out of the edit boxes wherever the click fell. In the pane it also starts a pan and shows the source
// for as long as the button is held.
INT_PTR OnButtonDown(HWND dialog, DialogState& state) {
    const HWND parking = GetDlgItem(dialog, IDC_FOCUS_PARKING);
    SetFocus(parking);
    if (!PointInPreview(dialog)) return 0;
    SetCapture(dialog);
    state.panning = true;
    const POINT position = PointerIn(dialog);
    state.lastMouseX = position.x;
    state.lastMouseY = position.y;
    RenderPreview(dialog, state, true, false);
    SetActiveWindow(parking);
    return 0;
}

INT_PTR OnButtonUp(HWND dialog, DialogState& state) {
    ReleaseCapture();
    state.panning = false;
    RenderPreview(dialog, state, true, false);
    return 0;
}

INT_PTR OnMouseWheel(HWND dialog, DialogState& state, int delta) {
    const int notches = delta / WHEEL_DELTA;
    if (PointInPreview(dialog)) {
        if (notches > 0) ZoomIn(dialog, state);
        if (notches < 0) ZoomOut(dialog, state);
        return 0;
    }
    if (const ParameterControls* const controls = ControlsWithFocus()) {
        StepParameter(dialog, *controls, WrapAdd(EditNumber(dialog, controls->editId), notches));
        RenderPreview(dialog, state, false, false);
    }
    return 0;
}

INT_PTR CALLBACK ParameterDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) return InitParameterDialog(dialog);
    if (StateOf(dialog) == nullptr) return 0;  // until InitParameterDialog has made it, and after WM_DESTROY
    DialogState& state = *StateOf(dialog);
    switch (message) {
        case WM_DESTROY: DestroyDialogState(dialog); return 0;

        case WM_PAINT: return OnPaint(dialog, state);

        case WM_KEYDOWN: return OnKeyDown(dialog, state, wParam);
        case WM_SYSKEYDOWN: return wParam == VK_MENU ? SetAltHeld(dialog, state, true) : 0;
        case WM_SYSKEYUP: return SetAltHeld(dialog, state, false);  // any key

        case WM_COMMAND: return OnCommand(dialog, state, LOWORD(wParam), HIWORD(wParam));
        case WM_HSCROLL: return OnHScroll(dialog, state, LOWORD(wParam), reinterpret_cast<HWND>(lParam));

        case WM_MOUSEMOVE: return OnMouseMove(dialog, state);
        case WM_LBUTTONDOWN:
        case WM_MBUTTONDOWN: return OnButtonDown(dialog, state);
        case WM_LBUTTONUP:
        case WM_MBUTTONUP: return OnButtonUp(dialog, state);
        case WM_LBUTTONDBLCLK:
            if (PointInPreview(dialog)) FitToPane(dialog, state);
            return 0;
        case WM_RBUTTONDOWN:
            if (PointInPreview(dialog)) ZoomToFullSizeAt(dialog, state, PointerIn(dialog));
            return 0;
        case WM_MOUSEWHEEL: return OnMouseWheel(dialog, state, static_cast<int16_t>(HIWORD(wParam)));
    }
    return 0;
}

}  // namespace

bool ShowParameterDialog() {
    if (gSPBasic == nullptr) return false;
    RegisterSliderClass();
    const HWND parent = reinterpret_cast<HWND>(ParentWindow(gFilterRecord->platformData));
    return DialogBoxParamA(gInstance, MAKEINTRESOURCEA(IDD_PARAMETERS), parent, ParameterDialogProc, 0) != 0;
}

}  // namespace stairmelt
