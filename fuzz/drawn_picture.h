// Pictures that a fuzzer's input draws: a few colours, and shapes of the kind that the kernels look for, so that runs,
// tails, diagonals and dots turn up and not noise alone.
#pragma once

#include <cstdint>
#include <vector>

#include "fuzz/byte_source.h"
#include "tests/support/kernel_list.h"

namespace stairmelt {

// The pixels of a picture, tightly packed. Samples may be any the depth can hold: floats that aren't numbers, 16-bit
// ones above white. Sides may be 0; negative ones count as 0.
std::vector<uint8_t> DrawPicture(const KernelCase& format, int32_t width, int32_t height, ByteSource& bytes);

}  // namespace stairmelt
