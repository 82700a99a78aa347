// Comparison of pixels that have to be the same.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

namespace stairmelt {

constexpr size_t kNoDifference = SIZE_MAX;

// The offset of the first sample that isn't the same in both, which are of one length. Where a float isn't a number,
// any such value will do.
inline size_t FirstDifference(int depth, const std::vector<uint8_t>& wanted, const std::vector<uint8_t>& got) {
    if (wanted == got) return kNoDifference;
    const size_t sampleBytes = static_cast<size_t>(depth / 8);
    for (size_t i = 0; i < wanted.size(); i += sampleBytes) {
        if (std::memcmp(&wanted[i], &got[i], sampleBytes) == 0) continue;
        if (depth != 32) return i;
        float a, b;
        std::memcpy(&a, &wanted[i], sizeof(a));
        std::memcpy(&b, &got[i], sizeof(b));
        if (a == a || b == b) return i;
    }
    return kNoDifference;
}

}  // namespace stairmelt
