// The library's entry: keeps the module handle, from which dialogs are loaded, and releases the runtime's memory.
#include "host/dll_main.h"

#include <exception>

#ifdef __GLIBCXX__
// The library's headers don't declare it.
namespace __gnu_cxx {
void __freeres();  // NOLINT(bugprone-reserved-identifier): the library's name
}
#endif

namespace stairmelt {

HINSTANCE gInstance = nullptr;

namespace {

// GCC's C++ library reserves 73 KB for exceptions when it starts and never frees them. It is linked statically, so that
// a host that loads the plug-in for each run would lose that much each time.
void FreeRuntimeReserve() {
#ifdef __GLIBCXX__
    __gnu_cxx::__freeres();
#endif
}

}  // namespace

}  // namespace stairmelt

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
    stairmelt::gInstance = instance;
    // At the end of the process (reserved isn't null) the heap is left alone: another thread may have died within it.
    if (reason == DLL_PROCESS_DETACH && reserved == nullptr) stairmelt::FreeRuntimeReserve();
    return TRUE;
}
