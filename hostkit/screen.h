// What a fake host does on a real screen. On other systems than Windows, these functions do nothing.
#pragma once

#include <cstdint>

namespace stairmelt {

// Copies pixels (0x00RRGGBB, row by row) into a device context, with the top left one at (x, y).
void DrawOnScreen(void* context, int32_t x, int32_t y, int32_t width, int32_t height, const uint32_t* pixels);

// Shows the cursor with this host name; null hides the cursor.
void ShowCursorOnScreen(const char* name);

}  // namespace stairmelt
