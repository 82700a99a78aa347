// The ramp: the weight at each pixel as a walk moves away from an edge, and the bias curve that shapes it. Every
// operation is fixed to the bit. Depths 8 and 16 use the integer form, depth 32 the floating-point form; in both,
// single-precision operations round one by one, in the order written.
#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "engine/pixel_format.h"
#include "engine/rules/arith.h"

namespace stairmelt::inline STAIRMELT_SET {

// The state of a ramp during one walk.
template <class Weights>
struct BlendRamp {
    using Weight = typename Weights::Weight;

    bool finished;      // set at the pixel on which the weight runs out; the walk ends before the next one
    Weight fullWeight;  // stands for 1.0 in the bias curve; constant during the walk
    Weight weight;      // starts at fullWeight, falls by `step` at each pixel, may end below zero
    Weight step;
    int32_t bias;  // 0: no curve
};

// The fall per pixel of a ramp that spends kHalf over `length` pixels at 100 percent. A script's softness can
// wrap the divisor to 0 or make it negative: an integer step of 0 leaves the walk to the image's bounds, and a
// floating-point one is what IEEE division gives.
template <class Weights>
typename Weights::Weight RampStep(int32_t softness, int32_t length) {
    const int32_t divisor = WrapMul(std::max(softness, int32_t{1}), length);
    if constexpr (std::is_floating_point_v<typename Weights::Weight>) {
        return Weights::kRampBudget / static_cast<float>(divisor);
    } else {
        return QuotientOrZero(Weights::kRampBudget, divisor);
    }
}

// Leaves an edge along a run of n pixels. Moves a pixel at most halfway, since the ramp on the other side does the
// same.
template <class Weights>
BlendRamp<Weights> StairRamp(int32_t softness, int32_t n, int32_t bias) {
    return {false, Weights::kHalf, Weights::kHalf, RampStep<Weights>(softness, WrapAdd(n, 1)), bias};
}

// Fades the end of a line one pixel thick, which has nothing on its other side. The doubling follows the division.
template <class Weights>
BlendRamp<Weights> TailRamp(int32_t softness, int32_t n, int32_t tailBias) {
    return {false, Weights::kWhole, Weights::kWhole, RampStep<Weights>(softness, WrapAdd(n, 1)) * 2, tailBias};
}

// Fades a diagonal of n cells. Its third ramp blends and ends the walk; the half ramp restores, starts higher and
// doesn't affect where the walk ends.
template <class Weights>
BlendRamp<Weights> FadeRamp(typename Weights::Weight fullWeight, int32_t softness, int32_t n, int32_t bias) {
    return {false, fullWeight, fullWeight, RampStep<Weights>(softness, n), bias};
}

// Advances the ramp by one pixel and returns that pixel's weight before the curve: the mean of a linear fall across the
// pixel's width. Where the fall reaches zero part of the way across, the rest is a triangle of area
// previous^2 / (2 * step).
template <class Weights>
typename Weights::Weight NextRampWeight(BlendRamp<Weights>& ramp) {
    const auto previous = ramp.weight;
    if constexpr (std::is_floating_point_v<typename Weights::Weight>) {
        ramp.weight = previous - ramp.step;
        if (!(0.0f < ramp.weight)) {
            ramp.finished = true;
            return previous * previous / (ramp.step * 2.0f);
        }
        return previous - ramp.step * 0.5f;
    } else {
        ramp.weight = WrapSub(previous, ramp.step);
        if (ramp.weight < 1) {
            ramp.finished = true;
            // The square wraps: a tail ramp spent on its first pixel gets weight 0, and that pixel keeps its value.
            return QuotientOrZero(WrapMul(previous, previous), WrapMul(ramp.step, 2));
        }
        return WrapSub(previous, ramp.step >> 1);
    }
}

// The maximum number of pixels in the rest of a walk. A floating-point weight rounds at every fall, by at most 2^-24 of
// itself: while the quotient is below 2^20, that takes less than a sixteenth from a fall, and an eighth more falls are
// enough.
template <class Weights>
int32_t MaxPixels(const BlendRamp<Weights>& ramp) {
    constexpr int32_t kMaxFalls = 1 << 20;
    if (!(ramp.step > 0)) return INT32_MAX;  // only the image's bounds end it
    const auto falls = ramp.weight / ramp.step;
    return falls < kMaxFalls ? static_cast<int32_t>(falls + falls / 8) + 2 : INT32_MAX;
}

// Bends a weight by `bias` percent of a cube; a negative bias is the same curve mirrored through the centre of the unit
// square. Both ends of the curve stay fixed.
template <class Weight>
Weight ApplyBiasCurve(Weight weight, Weight fullWeight, int32_t bias) {
    if (bias == 0) return weight;
    const float scale = static_cast<float>(fullWeight);
    const float straight = static_cast<float>(weight) / scale;
    float bent;
    if (bias > 0) {
        const float cube = straight * straight * straight * static_cast<float>(bias);
        const float line = static_cast<float>(WrapSub(100, bias)) * straight;
        bent = (cube + line) / 100.0f;
    } else {
        const float u = 1.0f - straight;
        const float cube = u * u * u * static_cast<float>(WrapNegate(bias));
        const float line = static_cast<float>(WrapAdd(100, bias)) * u;
        bent = 1.0f - (cube + line) / 100.0f;
    }
    if constexpr (std::is_floating_point_v<Weight>) {
        return scale * bent;
    } else {
        return TruncateToInt(scale * bent);
    }
}

// The ramp that a format's walks use.
template <class Format>
using RampOf = BlendRamp<typename Format::Weights>;

// The weight of the walk's next pixel, bent.
template <class Weights>
typename Weights::Weight NextBentWeight(BlendRamp<Weights>& ramp) {
    const auto weight = NextRampWeight(ramp);
    return ApplyBiasCurve(weight, ramp.fullWeight, ramp.bias);
}

}  // namespace stairmelt::inline STAIRMELT_SET
