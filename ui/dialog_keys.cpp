#include "ui/dialog_keys.h"

#include "ui/custom_slider.h"
#include "ui/dialog_controls.h"

namespace stairmelt {

namespace {

// The key that the dialog receives instead; 0 if the key stays with the control.
WPARAM ForwardedKey(WPARAM key, bool isEdit) {
    if (isEdit) return key == VK_UP || key == VK_DOWN ? key : 0;
    switch (key) {
        case VK_ADD:
        case VK_OEM_PLUS:
        case VK_OEM_PERIOD: return VK_ADD;  // the period is the > of a US keyboard
        case VK_SUBTRACT:
        case VK_OEM_COMMA:
        case VK_OEM_MINUS: return VK_SUBTRACT;
    }
    return 0;
}

LRESULT CALLBACK ChildSubclassProc(HWND child, UINT message, WPARAM wParam, LPARAM lParam) {
    const HWND dialog = GetParent(child);
    const ParameterControls* const edit = ControlsOfEdit(GetDlgCtrlID(child));
    switch (message) {
        case WM_SYSKEYDOWN:
        case WM_SYSKEYUP:
            if (wParam == VK_MENU) return SendMessageA(dialog, message, wParam, lParam);
            break;
        case WM_KEYDOWN:
        case WM_KEYUP:
            if (const WPARAM key = ForwardedKey(wParam, edit != nullptr)) {
                return SendMessageA(dialog, message, key, lParam);
            }
            break;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            if (edit != nullptr) SendDlgItemMessageA(dialog, edit->sliderId, CSM_REDRAWTHUMB, 0, 0);
            break;
    }
    const WNDPROC procedure = reinterpret_cast<WNDPROC>(GetWindowLongPtrA(child, GWLP_USERDATA));
    return CallWindowProcA(procedure, child, message, wParam, lParam);
}

}  // namespace

BOOL CALLBACK SubclassChild(HWND child, LPARAM) {
    const LONG_PTR ours = reinterpret_cast<LONG_PTR>(ChildSubclassProc);
    const LONG_PTR procedure = GetWindowLongPtrA(child, GWLP_WNDPROC);
    if (procedure == ours) return TRUE;  // subclassed twice, it would call itself forever
    SetWindowLongPtrA(child, GWLP_WNDPROC, ours);
    SetWindowLongPtrA(child, GWLP_USERDATA, procedure);
    return TRUE;
}

}  // namespace stairmelt
