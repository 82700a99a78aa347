// The keys that the parameter dialog handles for its controls.
#pragma once

#include <windows.h>

namespace stairmelt {

// For EnumChildWindows: subclasses a control so that the dialog sees some keys first. Up and Down step a parameter, but
// only from its edit box; plus, minus and the keys beside them zoom, except in an edit box; Alt turns Cancel into
// Reset. The control's own procedure is kept in its user data.
BOOL CALLBACK SubclassChild(HWND child, LPARAM);

}  // namespace stairmelt
