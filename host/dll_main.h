// The module handle of the plug-in.
#pragma once

#include <windows.h>

namespace stairmelt {

extern HINSTANCE gInstance;  // set by every notification of the library's entry

}  // namespace stairmelt
