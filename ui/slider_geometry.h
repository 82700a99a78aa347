// Positions and pixels of the slider. Arithmetic only, signed 32-bit with wraps, truncating toward zero.
#pragma once

#include <algorithm>
#include <cstdint>

#include "engine/rules/arith.h"

namespace stairmelt {

// The bounds are inclusive and differ.
struct SliderRange {
    int32_t min, max;

    int32_t Clamp(int32_t value) const { return value < min ? min : value > max ? max : value; }
    int32_t Span() const { return WrapSub(max, min); }
};

constexpr int32_t kThumbHalf =
    6;  // pixels from the thumb's middle to its side, and from a control's end to the range's
constexpr int32_t kStripMargin = 7;  // covers the thumb on either side of a strip

// The position under a pixel of a control `width` pixels wide.
inline int32_t SliderPositionAt(int32_t x, int32_t width, const SliderRange& range) {
    const int32_t along = QuotientOrZero(WrapMul(range.Span(), x - kThumbHalf), width - 2 * kThumbHalf);
    return range.Clamp(WrapAdd(along, range.min));
}

// The thumb's middle, as the strip that a move redraws takes it. A value that was never painted gives any number; the
// strip is then merely larger, or elsewhere.
inline int32_t StripThumbX(int32_t value, int32_t width, const SliderRange& range) {
    const int32_t along = QuotientOrZero(WrapMul(width - 2 * kThumbHalf, WrapSub(value, range.min)), range.Span());
    return WrapAdd(along, kThumbHalf);
}

// The thumb's middle, as painted: a pixel less wide, and not offset by the range's start. The margin of the strip
// covers the difference for ranges from 0.
inline int32_t PaintedThumbX(int32_t value, int32_t width, const SliderRange& range) {
    const int32_t along = QuotientOrZero(WrapMul(width - 2 * kThumbHalf - 1, value), range.Span());
    return WrapAdd(along, kThumbHalf);
}

struct SliderStrip {
    int32_t left, right;
};

// What a move from one thumb place to another uncovers; `rightLimit` cuts it.
inline SliderStrip StripBetween(int32_t oldX, int32_t newX, int32_t rightLimit) {
    return {std::max(WrapSub(std::min(oldX, newX), kStripMargin), 0),
            std::min(WrapAdd(std::max(oldX, newX), kStripMargin), rightLimit)};
}

}  // namespace stairmelt
