// Counting bits. std::countl_one and its like aren't used: where a compiler doesn't inline them, as in a Debug build,
// the linker could keep a copy that was compiled for AVX2 and use it on all machines.
#pragma once

#include <cstdint>

#ifdef _MSC_VER
#include <intrin.h>
#endif

#include "engine/instruction_set.h"

namespace stairmelt::inline STAIRMELT_SET {

// The number of zeros below the lowest set bit, and above the highest one, of a word that isn't 0.
#if defined(_MSC_VER) && !defined(__clang__)
inline int32_t TrailingZeros(uint64_t word) {
    unsigned long index;
    _BitScanForward64(&index, word);
    return static_cast<int32_t>(index);
}
inline int32_t LeadingZeros(uint64_t word) {
    unsigned long index;
    _BitScanReverse64(&index, word);
    return 63 - static_cast<int32_t>(index);
}
#else
inline int32_t TrailingZeros(uint64_t word) { return __builtin_ctzll(word); }
inline int32_t LeadingZeros(uint64_t word) { return __builtin_clzll(word); }
#endif

// The set bits from the lowest one on, at most `max`, which is below 64; and from the highest one down.
inline int32_t TrailingOnes(uint64_t word, int max) { return TrailingZeros(~word | uint64_t{1} << max); }
inline int32_t LeadingOnes(uint64_t word, int max) { return LeadingZeros(~word | uint64_t{1} << (63 - max)); }

}  // namespace stairmelt::inline STAIRMELT_SET
