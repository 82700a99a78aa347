#include "ui/generic_proc.h"

#include "ui/placement.h"

namespace stairmelt {

namespace {

DialogObject* gDialogObject = nullptr;  // of the open dialog

void CentreDialog(HWND dialog) {
    HWND parent = GetParent(dialog);
    if (parent == nullptr) parent = GetDesktopWindow();
    RECT client;
    GetClientRect(parent, &client);
    POINT corners[] = {{client.left, client.top}, {client.right, client.bottom}};
    for (POINT& corner : corners) ClientToScreen(parent, &corner);
    RECT window;
    GetWindowRect(dialog, &window);
    const PixelSize size = {window.right - window.left, window.bottom - window.top};
    const bool hasSystemMenu = (GetWindowLongA(dialog, GWL_STYLE) & WS_SYSMENU) != 0;
    const PixelPoint place = GeneralDialogPosition({corners[0].x, corners[0].y, corners[1].x, corners[1].y}, size,
                                                   {GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)},
                                                   GetSystemMetrics(SM_CXSIZE), hasSystemMenu);
    SetWindowPos(dialog, nullptr, place.x, place.y, size.width, size.height, SWP_NOZORDER);
}

INT_PTR OnInitDialog(HWND dialog, DialogObject* object) {
    CentreDialog(dialog);
    gDialogObject = object;
    if (object == nullptr) return 0;
    object->window = dialog;
    object->OnInit();
    return 1;
}

INT_PTR OnCommand(HWND dialog, WORD item, WORD notification, LPARAM lParam) {
    if (gDialogObject != nullptr) gDialogObject->OnCommand(item, notification, lParam);
    if ((item == IDOK || item == IDCANCEL) && notification == 0) EndDialog(dialog, item);
    return 1;
}

}  // namespace

}  // namespace stairmelt

INT_PTR CALLBACK GenericProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    using namespace stairmelt;
    switch (message) {
        case WM_INITDIALOG: return OnInitDialog(dialog, reinterpret_cast<DialogObject*>(lParam));
        case WM_DESTROY: gDialogObject = nullptr; return 0;
        case WM_COMMAND: return OnCommand(dialog, LOWORD(wParam), HIWORD(wParam), lParam);
    }
    if (gDialogObject != nullptr) {
        gDialogObject->OnMessage(message, wParam, lParam);
    } else {
        DefWindowProcA(dialog, message, wParam, lParam);
    }
    return 0;
}
