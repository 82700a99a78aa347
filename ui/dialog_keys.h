// The keys that the parameter dialog takes from its controls.
#pragma once

#include <windows.h>

namespace stairmelt {

// For EnumChildWindows: puts a control's keys through the dialog first. Up and Down step a parameter, from its edit box
// only; plus and minus and the keys beside them zoom, everywhere but in an edit box; Alt turns Cancel into Reset.
// The control's own procedure is kept in its user data.
BOOL CALLBACK SubclassChild(HWND child, LPARAM);

}  // namespace stairmelt
