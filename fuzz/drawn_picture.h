// Pictures drawn from a fuzzer's input: a few colours, and shapes of the kind that the kernels look for, so that there
// are runs, tails, diagonals and dots and not only noise.
#pragma once

#include <cstdint>
#include <vector>

#include "fuzz/byte_source.h"
#include "tests/support/kernel_list.h"

namespace stairmelt {

// The pixels of a picture, tightly packed. Samples may have any value of their type, such as floats that aren't numbers
// and 16-bit samples above white. Sides may be 0; negative ones count as 0.
std::vector<uint8_t> DrawPicture(const KernelCase& format, int32_t width, int32_t height, ByteSource& bytes);

}  // namespace stairmelt
