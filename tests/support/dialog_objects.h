// Counts the system objects that this process holds, for tests that look for leaks.
#pragma once

namespace stairmelt {

int CountGdiObjects();   // pens, brushes, bitmaps, device contexts and the like
int CountUserObjects();  // windows, menus and the like; in Wine, which doesn't count them, only windows

}  // namespace stairmelt
