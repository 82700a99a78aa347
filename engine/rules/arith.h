// Named helpers for required wraps and truncations. The kernels' results depend on them: parameters reach the kernels
// unchecked from scripts, and the ramps rely on some products wrapping at 32 bits.
#pragma once

#include <cstdint>

#include "engine/instruction_set.h"

namespace stairmelt::inline STAIRMELT_SET {

constexpr int32_t WrapAdd(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

constexpr int32_t WrapSub(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

constexpr int32_t WrapMul(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

constexpr int32_t WrapNegate(int32_t a) { return WrapSub(0, a); }

// Truncates toward zero. A divisor that wrapped to 0 gives 0, so that no parameter can stop the host.
constexpr int32_t QuotientOrZero(int32_t a, int32_t b) {
    if (b == 0) return 0;
    if (b == -1) return WrapNegate(a);
    return a / b;
}

// Truncates toward zero. NaN and values out of range give the lowest integer, as the x86-64 conversion does.
template <class Float>
constexpr int32_t TruncateToInt(Float value) {
    constexpr Float kLimit = static_cast<Float>(2147483648.0);
    if (value >= -kLimit && value < kLimit) return static_cast<int32_t>(value);
    return INT32_MIN;
}

// Keeps the low bits that fit an integer sample; a float stays as it is.
template <class Sample>
constexpr Sample ToSample(int32_t value) {
    return static_cast<Sample>(static_cast<uint32_t>(value));
}
template <class Sample>
constexpr Sample ToSample(float value) {
    return value;
}

}  // namespace stairmelt::inline STAIRMELT_SET
