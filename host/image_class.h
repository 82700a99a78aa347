// Which kernel serves the current image.
#pragma once

#include <cstdint>

#include "engine/image.h"

namespace stairmelt {

// What ClassifyImage answers for an image that no kernel serves; never a key.
constexpr KernelKey kUnservedImage = 0x66646162;  // 'fdab'

// Derives the key from the current record's imageMode, planes and depth. The mode only decides the channel count: its
// name's depth isn't compared with the depth field. Changes nothing.
KernelKey ClassifyImage();

// Colour channels of an image mode. The multichannel modes and every number that isn't a mode count all planes.
int32_t ColorChannelCount(int16_t imageMode, int16_t planes);

}  // namespace stairmelt
