#include "ui/dialog_state.h"

#include <new>

#include "host/coordinates.h"

namespace stairmelt {

DialogState* StateOf(HWND dialog) { return reinterpret_cast<DialogState*>(GetWindowLongPtrA(dialog, GWLP_USERDATA)); }

DialogState* CreateDialogState(HWND dialog) {
    DialogState* const state = new (std::nothrow) DialogState;
    if (state != nullptr) {
        const VPoint size = ImageSize();
        const int32_t halfWidth = size.h / 2, halfHeight = size.v / 2;  // as integers
        state->panX = halfWidth;
        state->panY = halfHeight;
    }
    SetWindowLongPtrA(dialog, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(state));
    return state;
}

void DestroyDialogState(HWND dialog) {
    delete StateOf(dialog);
    SetWindowLongPtrA(dialog, GWLP_USERDATA, 0);
}

}  // namespace stairmelt
