// A general dialog procedure, exported for dialogs that provide their own object. No dialog of this build does.
#pragma once

#include <windows.h>

namespace stairmelt {

// Passed by such a dialog as the lParam of WM_INITDIALOG; the caller keeps ownership. The order of the virtual
// functions is part of the interface.
class DialogObject {
public:
    virtual void Reserved() = 0;  // never called
    virtual void OnInit() = 0;
    virtual void OnCommand(WORD item, WORD notification, LPARAM lParam) = 0;
    virtual void OnMessage(UINT message, WPARAM wParam, LPARAM lParam) = 0;  // all other messages

    HWND window = nullptr;  // filled in before OnInit

protected:
    ~DialogObject() = default;
};

}  // namespace stairmelt

// Handles one dialog at a time. Exported under its undecorated name.
extern "C" INT_PTR CALLBACK GenericProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
