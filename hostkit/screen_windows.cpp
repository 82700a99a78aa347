#include <windows.h>

#include <cstring>

#include "host/filter_api.h"
#include "hostkit/screen.h"

namespace stairmelt {

void DrawOnScreen(void* context, int32_t x, int32_t y, int32_t width, int32_t height, const uint32_t* pixels) {
    if (!context || width <= 0 || height <= 0) return;
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;  // negative: the first row is the top one
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    StretchDIBits(static_cast<HDC>(context), x, y, width, height, 0, 0, width, height, pixels, &info, DIB_RGB_COLORS,
                  SRCCOPY);
}

void ShowCursorOnScreen(const char* name) {
    if (!name) {
        SetCursor(nullptr);
        return;
    }
    SetCursor(LoadCursor(nullptr, std::strcmp(name, kCursorHand) == 0 ? IDC_HAND : IDC_ARROW));
}

}  // namespace stairmelt
