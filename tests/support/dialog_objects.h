// How many of the system's objects this process holds, for tests that look for leaks.
#pragma once

namespace stairmelt {

int CountGdiObjects();   // pens, brushes, bitmaps, device contexts and the like
int CountUserObjects();  // windows and what belongs to them; in Wine, which doesn't count them, the windows alone

}  // namespace stairmelt
