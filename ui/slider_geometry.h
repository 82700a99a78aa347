// Conversion between the slider's positions and pixels. Arithmetic only: 32-bit, wrapping, truncating toward zero.
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

// Pixels from the thumb's centre to its side, and from a control's end to that of the range.
constexpr int32_t kThumbHalf = 6;
constexpr int32_t kStripMargin = 7;  // covers the thumb on either side of a strip

// The position at pixel column `x` of a control `width` pixels wide.
inline int32_t SliderPositionAt(int32_t x, int32_t width, const SliderRange& range) {
    const int32_t along = QuotientOrZero(WrapMul(range.Span(), x - kThumbHalf), width - 2 * kThumbHalf);
    return range.Clamp(WrapAdd(along, range.min));
}

// The thumb's centre, as used for the strip that a move redraws. For the mark of a thumb that was never painted the
// product wraps; the strip is then only larger or misplaced.
inline int32_t StripThumbX(int32_t value, int32_t width, const SliderRange& range) {
    const int32_t along = QuotientOrZero(WrapMul(width - 2 * kThumbHalf, WrapSub(value, range.min)), range.Span());
    return WrapAdd(along, kThumbHalf);
}

// The thumb's centre, as painted: across one pixel less, and not offset by the range's minimum. The strip's margin
// covers the difference for ranges that start at 0.
inline int32_t PaintedThumbX(int32_t value, int32_t width, const SliderRange& range) {
    const int32_t along = QuotientOrZero(WrapMul(width - 2 * kThumbHalf - 1, value), range.Span());
    return WrapAdd(along, kThumbHalf);
}

struct SliderStrip {
    int32_t left, right;
};

// The columns that a move of the thumb from `oldX` to `newX` affects, up to `rightLimit`.
inline SliderStrip StripBetween(int32_t oldX, int32_t newX, int32_t rightLimit) {
    return {std::max(WrapSub(std::min(oldX, newX), kStripMargin), 0),
            std::min(WrapAdd(std::max(oldX, newX), kStripMargin), rightLimit)};
}

}  // namespace stairmelt
