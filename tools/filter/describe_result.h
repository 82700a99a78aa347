// Describes the results of a selector.
#pragma once

#include <cstdint>
#include <string>

namespace stairmelt {

// The meaning of a non-zero result, without a full stop.
std::string DescribeResult(int16_t result);

}  // namespace stairmelt
