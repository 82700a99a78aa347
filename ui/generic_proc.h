// A general dialog procedure, exported for dialogs that come with an object of their own. None of this build's does.
#pragma once

#include <windows.h>

namespace stairmelt {

// What such a dialog passes as the lParam of WM_INITDIALOG; it stays the caller's. The order of the virtual functions
// is part of the interface.
class DialogObject {
public:
    virtual void Reserved() = 0;  // never called
    virtual void OnInit() = 0;
    virtual void OnCommand(WORD item, WORD notification, LPARAM lParam) = 0;
    virtual void OnMessage(UINT message, WPARAM wParam, LPARAM lParam) = 0;  // all but the messages of the others

    HWND window = nullptr;  // filled in before OnInit

protected:
    ~DialogObject() = default;
};

}  // namespace stairmelt

// Serves one dialog at a time. Exported by its plain name.
extern "C" INT_PTR CALLBACK GenericProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
