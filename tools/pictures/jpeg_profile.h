// The ICC profile in a JPEG file, which not every system's codec hands out.
#pragma once

#include <span>

#include "tools/byte_order.h"

namespace stairmelt {

// The profile, put together from its parts; empty when there is none or when a part is missing.
Bytes ReadJpegProfile(std::span<const uint8_t> file);

}  // namespace stairmelt
