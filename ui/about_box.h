// The about box.
#pragma once

#include <cstdint>

namespace stairmelt {

// Shows the box over the given window (0 for none) until the user closes it.
void ShowAboutBox(intptr_t parentWindow);

}  // namespace stairmelt
