// The library's entry: keeps the module handle, from which dialogs are loaded.
#include "host/dll_main.h"

namespace stairmelt {

HINSTANCE gInstance = nullptr;

}  // namespace stairmelt

BOOL WINAPI DllMain(HINSTANCE instance, DWORD, LPVOID) {
    stairmelt::gInstance = instance;
    return TRUE;
}
