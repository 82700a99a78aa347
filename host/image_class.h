// Which kernel supports the current image.
#pragma once

#include <cstdint>

#include "engine/image.h"

namespace stairmelt {

// ClassifyImage's result for an image that no kernel supports; never a key.
constexpr KernelKey kUnsupportedImage = 0x66646162;  // 'fdab'

// Derives the key from the current record's imageMode, planes and depth. The mode only decides the channel count: the
// depth in its name isn't compared with the depth field.
KernelKey ClassifyImage();

// Colour channels of an image mode. The multichannel modes, and numbers that aren't modes, count all planes.
int32_t ColorChannelCount(int16_t imageMode, int16_t planes);

}  // namespace stairmelt
