#include "tests/support/dialog_objects.h"

#include <windows.h>

#include <cstdint>

namespace stairmelt {

// Wine doesn't count them, but keeps their table where Windows does. The process's environment block points to it:
// 0x4000 entries of 24 bytes, with a type of 0 if unused.
int CountGdiObjects() {
    if (const DWORD count = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS)) return static_cast<int>(count);
    const auto getBlock = reinterpret_cast<const uint8_t*(WINAPI*)()>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "RtlGetCurrentPeb")));
    const uint8_t* const table = *reinterpret_cast<const uint8_t* const*>(getBlock() + 0xF8);
    int count = 0;
    for (int i = 0; i < 0x4000; ++i) count += table[i * 24 + 14] != 0;
    return count;
}

int CountUserObjects() {
    if (const DWORD count = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS)) return static_cast<int>(count);
    int count = 0;
    const auto countOne = [](HWND window, LPARAM total) -> BOOL {
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        *reinterpret_cast<int*>(total) += process == GetCurrentProcessId();
        return TRUE;
    };
    EnumChildWindows(GetDesktopWindow(), countOne, reinterpret_cast<LPARAM>(&count));
    return count;
}

}  // namespace stairmelt
