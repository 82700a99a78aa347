#pragma once

#include "bench/canvas.h"

namespace stairmelt {

// Draws something like a photograph: smooth light, areas with borders a pixel or two wide, surfaces with and without
// texture, and grain.
void DrawPhoto(Canvas& canvas);

}  // namespace stairmelt
