#pragma once

#include "bench/canvas.h"

namespace stairmelt {

// Draws something like a photograph: smooth light, areas with borders a pixel or two wide, surfaces whose texture comes
// and goes, and grain.
void DrawPhoto(Canvas& canvas);

}  // namespace stairmelt
