// Results of a selector in words.
#pragma once

#include <cstdint>
#include <string>

namespace stairmelt {

// What a non-zero result means, without a full stop.
std::string ResultWords(int16_t result);

}  // namespace stairmelt
