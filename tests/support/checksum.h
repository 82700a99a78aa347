// A checksum (FNV-1a) for results that are pinned as a whole.
#pragma once

#include <cstdint>
#include <vector>

namespace stairmelt {

inline uint64_t Checksum(const std::vector<uint8_t>& bytes) {
    uint64_t sum = 14695981039346656037u;
    for (const uint8_t byte : bytes) sum = (sum ^ byte) * 1099511628211u;
    return sum;
}

}  // namespace stairmelt
