// The screen on systems other than Windows: there is none.
#include "hostkit/screen.h"

namespace stairmelt {

void DrawOnScreen(void*, int32_t, int32_t, int32_t, int32_t, const uint32_t*) {}

void ShowCursorOnScreen(const char*) {}

}  // namespace stairmelt
