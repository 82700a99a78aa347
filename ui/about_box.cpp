#include "ui/about_box.h"

#include <windows.h>

#include <cstdio>

#include "host/dll_main.h"
#include "resources/resource_ids.h"
#include "resources/version_numbers.h"
#include "ui/placement.h"
#include "ui/ui_strings.h"

namespace stairmelt {

namespace {

void PlaceAboutBox(HWND dialog) {
    RECT window;
    GetWindowRect(dialog, &window);
    const PixelSize size = {window.right - window.left, window.bottom - window.top};
    const PixelSize screen = {GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    RECT parent = {0, 0, screen.width, screen.height};
    if (const HWND parentWindow = GetParent(dialog)) GetWindowRect(parentWindow, &parent);
    const PixelPoint place = AboutBoxPosition({parent.left, parent.top, parent.right, parent.bottom}, size, screen);
    MoveWindow(dialog, place.x, place.y, size.width, size.height, TRUE);
}

INT_PTR InitAboutBox(HWND dialog) {
    PlaceAboutBox(dialog);
    char build[32] = "";
    // Read once, while the box opens: pressing Shift later has no effect.
    if (GetKeyState(VK_SHIFT) < 0) std::snprintf(build, sizeof build, " (build:%d)", VERSION_BUILD);
    char version[256];
    std::snprintf(version, sizeof version, "Version %d.%d.%d (DEMO)%s", VERSION_MAJOR, VERSION_MINOR, VERSION_REVISION,
                  build);
    SetDlgItemTextA(dialog, IDC_ABOUT_VERSION, version);
    SetDlgItemTextA(dialog, IDC_ABOUT_COPYRIGHT, UiString(kStringCopyright));
    return 1;
}

// The box has no button: Escape, Close and a left click anywhere close it.
INT_PTR CALLBACK AboutDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_INITDIALOG: return InitAboutBox(dialog);
        case WM_COMMAND:
            if (LOWORD(wParam) == IDCANCEL) EndDialog(dialog, 0);
            return 1;
        case WM_LBUTTONDOWN: EndDialog(dialog, 0); return 1;
    }
    return 0;
}

}  // namespace

void ShowAboutBox(intptr_t parentWindow) {
    DialogBoxParamA(gInstance, MAKEINTRESOURCEA(IDD_ABOUT), reinterpret_cast<HWND>(parentWindow), AboutDialogProc, 0);
}

}  // namespace stairmelt
