// Moves a pixel toward another by a weight. Integer mixes truncate, except where a difference in opacity makes them
// round; the divisor is 65535 at every weight and no shift can stand in for it.
//
// Everything works on loaded pixels, so that a walk reads its neighbour once.
#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "engine/arith.h"
#include "engine/pixel_format.h"

namespace stairmelt::inline STAIRMELT_SET {

// `a` moved toward `b` by `weight`. Fits 32 bits for samples and weights in range; others wrap.
template <class Depth>
typename Depth::Sample MixSample(typename Depth::Sample a, typename Depth::Sample b, typename Depth::Weight weight) {
    if constexpr (std::is_floating_point_v<typename Depth::Sample>) {
        return (1.0f - weight) * a + weight * b;
    } else {
        const int32_t mixed = WrapAdd(WrapMul(a, WrapSub(Depth::kWhole, weight)), WrapMul(b, weight));
        return LowBits<typename Depth::Sample>(mixed / Depth::kWhole);
    }
}

template <class Format>
void MixColors(typename Format::Pixel& pixel, const typename Format::Pixel& toward, typename Format::Weight weight) {
    for (int c = 0; c < Format::kChannels; ++c) pixel[c] = MixSample<Format>(pixel[c], toward[c], weight);
}

// The mix of pixels with opacity. The source's share of the resulting opacity is the weight of its colour, so that a
// nearly transparent pixel gives up its colour readily and an opaque one takes little from a faint neighbour.
template <class Format>
requires(Format::kExtra == 1 && std::is_integral_v<typename Format::Sample>) void MixPixelWithOpacity(
    typename Format::Pixel& pixel, const typename Format::Pixel& toward, int32_t weight) {
    using Sample = typename Format::Sample;
    const int32_t opacity = pixel[Format::kOpacity];
    const int32_t towardOpacity = toward[Format::kOpacity];
    const int32_t inverse = WrapSub(Format::kWhole, weight);
    const int32_t kept = WrapMul(opacity, inverse);
    if (opacity == towardOpacity) {
        MixColors<Format>(pixel, toward, weight);
        return;
    }
    if (towardOpacity == 0) {
        pixel[Format::kOpacity] = LowBits<Sample>(kept / Format::kWhole);
        return;
    }
    const int32_t taken = WrapMul(towardOpacity, weight);
    if (kept != 0 || taken != 0) {  // 0 by 0: no opacity results, and the colours stay
        const float ratio = static_cast<float>(kept) / static_cast<float>(taken);
        const int32_t share = TruncateToInt(65535.0f / (ratio + 1.0f));
        for (int c = 0; c < Format::kChannels; ++c) {
            const int32_t mixed = WrapAdd(WrapMul(pixel[c], WrapSub(Format::kWhole, share)), WrapMul(toward[c], share));
            pixel[c] = LowBits<Sample>(WrapAdd(mixed, 32768) / Format::kWhole);  // the one mix that rounds
        }
    }
    pixel[Format::kOpacity] = LowBits<Sample>(WrapAdd(kept, taken) / Format::kWhole);
}

template <class Format>
requires(Format::kExtra == 1 && std::is_floating_point_v<typename Format::Sample>) void MixPixelWithOpacity(
    typename Format::Pixel& pixel, const typename Format::Pixel& toward, float weight) {
    const float opacity = pixel[Format::kOpacity];
    const float towardOpacity = toward[Format::kOpacity];
    if (opacity == towardOpacity) {
        MixColors<Format>(pixel, toward, weight);
        return;
    }
    const float kept = (1.0f - weight) * opacity;
    const float taken = towardOpacity * weight;
    if (towardOpacity != 0.0f && !(opacity == 0.0f && weight == 0.0f)) {
        MixColors<Format>(pixel, toward, 1.0f / (kept / taken + 1.0f));
    }
    pixel[Format::kOpacity] = kept + taken;
}

// Moves a pixel toward another: the one operation behind every ramp, fade, restore and single blend.
template <class Format>
void MixPixel(typename Format::Pixel& pixel, const typename Format::Pixel& toward, typename Format::Weight weight) {
    if constexpr (Format::kExtra == 1) {
        MixPixelWithOpacity<Format>(pixel, toward, weight);
    } else {
        MixColors<Format>(pixel, toward, weight);
    }
}

// What a walk holds of the pixel that it moves others toward: the pixel, or what the instruction set makes of it.
template <class Format>
auto LoadToward(const uint8_t* at) {
    if constexpr (Format::kMixesLanes) {
        return Format::InstructionSet::template LoadToward<Format>(at);
    } else {
        return Load<Format>(at);
    }
}

// MixPixel on a pixel in memory.
template <class Format, class Toward>
void MixPixelAt(uint8_t* at, const Toward& toward, typename Format::Weight weight) {
    if constexpr (Format::kMixesLanes) {
        Format::InstructionSet::template MixPixelAt<Format>(at, toward, weight);
    } else {
        typename Format::Pixel pixel = Load<Format>(at);
        MixPixel<Format>(pixel, toward, weight);
        Store<Format>(at, pixel);
    }
}

// Moves a destination pixel toward its own source value.
template <class Format>
void RestorePixel(const ImageView& source, const ImageView& destination, int32_t x, int32_t y,
                  typename Format::Weight weight) {
    MixPixelAt<Format>(PixelAt<Format>(destination, x, y), LoadToward<Format>(PixelAt<Format>(source, x, y)), weight);
}

}  // namespace stairmelt::inline STAIRMELT_SET
