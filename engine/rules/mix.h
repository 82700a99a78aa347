// Moves a pixel toward another by a weight: the one operation behind every ramp, fade, restore and single blend.
// Integer mixes truncate; only the colours of two pixels of different opacity are rounded to nearest. The divisor is
// 65535 at every weight, and no shift can replace it.
//
// The arithmetic is written once, over a type Colors that holds the colour samples of one pixel: SampleColors here, or
// what an instruction set offers in its place. Any Colors has the functions of SampleColors with the same results.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "engine/image.h"
#include "engine/pixel_format.h"
#include "engine/rules/arith.h"

namespace stairmelt::inline STAIRMELT_SET {

// `a` moved toward `b` by `weight`, not yet divided by kWhole. Fits 32 bits for samples and weights in range; others
// wrap.
constexpr int32_t WeighSamples(int32_t a, int32_t b, int32_t weight) {
    return WrapAdd(WrapMul(a, WrapSub(IntegerWeights::kWhole, weight)), WrapMul(b, weight));
}

constexpr int32_t MixSample(int32_t a, int32_t b, int32_t weight) {
    return WeighSamples(a, b, weight) / IntegerWeights::kWhole;
}
constexpr float MixSample(float a, float b, float weight) { return (1.0f - weight) * a + weight * b; }

// The colour samples of a pixel, one after the other.
template <class Format>
struct SampleColors {
    using Weight = typename Format::Weight;
    using Sums = std::array<float, Format::kChannels>;
    std::array<Weight, Format::kChannels> samples;  // wider than a sample at the integer depths

    static SampleColors Load(const uint8_t* at) {
        const typename Format::Pixel pixel = LoadSamples<Format>(at);
        return Each([&](int c) { return static_cast<Weight>(pixel[c]); });
    }
    // Keeps the low bits that fit a sample.
    void Store(uint8_t* at) const {
        typename Format::Sample stored[Format::kChannels];
        for (int c = 0; c < Format::kChannels; ++c) stored[c] = ToSample<typename Format::Sample>(samples[c]);
        std::memcpy(at, stored, sizeof stored);
    }

    static SampleColors Mix(const SampleColors& a, const SampleColors& b, Weight weight) {
        return Each([&](int c) { return MixSample(a.samples[c], b.samples[c], weight); });
    }
    // The one mix that rounds; at the integer depths only.
    static SampleColors MixToNearest(const SampleColors& a, const SampleColors& b, int32_t weight) {
        return Each([&](int c) {
            return WrapAdd(WeighSamples(a.samples[c], b.samples[c], weight), 32768) / IntegerWeights::kWhole;
        });
    }

    // For averages. The product with a weight is formed in integers at the integer depths, the one with a float not.
    Sums Weighted(Weight weight) const {
        return EachSum([&](int c) {
            if constexpr (std::is_integral_v<Weight>) {
                return static_cast<float>(WrapMul(samples[c], weight));
            } else {
                return weight * samples[c];
            }
        });
    }
    Sums Scaled(float factor) const {
        return EachSum([&](int c) { return static_cast<float>(samples[c]) * factor; });
    }
    static Sums Add(const Sums& a, const Sums& b) {
        return EachSum([&](int c) { return a[c] + b[c]; });
    }
    static Sums Add(float a, const Sums& b) {
        return EachSum([&](int c) { return a + b[c]; });
    }
    static SampleColors Quotient(const Sums& sums, float divisor) {
        return Each([&](int c) {
            if constexpr (std::is_integral_v<Weight>) {
                return TruncateToInt(sums[c] / divisor);
            } else {
                return sums[c] / divisor;
            }
        });
    }

private:
    template <class Value>
    static SampleColors Each(Value value) {
        SampleColors colors;
        for (int c = 0; c < Format::kChannels; ++c) colors.samples[c] = value(c);
        return colors;
    }
    template <class Value>
    static Sums EachSum(Value value) {
        Sums sums;
        for (int c = 0; c < Format::kChannels; ++c) sums[c] = value(c);
        return sums;
    }
};

template <class Format>
using ColorsOf = typename Format::InstructionSet::template Colors<Format>;

template <class Format>
typename Format::Weight LoadOpacity(const uint8_t* at) {
    typename Format::Sample sample;
    std::memcpy(&sample, at + Format::kChannels * sizeof sample, sizeof sample);
    return sample;
}

template <class Format>
void StoreOpacity(uint8_t* at, typename Format::Weight opacity) {
    const auto sample = ToSample<typename Format::Sample>(opacity);
    std::memcpy(at + Format::kChannels * sizeof sample, &sample, sizeof sample);
}

// A pixel that others are moved toward; a walk loads it once.
template <class Format>
struct BlendTarget {
    ColorsOf<Format> colors;
    typename Format::Weight opacity;  // 0 where the format has none
};

template <class Format>
BlendTarget<Format> LoadBlendTarget(const uint8_t* at) {
    if constexpr (Format::kExtra == 1) {
        return {ColorsOf<Format>::Load(at), LoadOpacity<Format>(at)};
    } else {
        return {ColorsOf<Format>::Load(at), 0};
    }
}

// The mix of two pixels whose opacities differ. The target's share of the resulting opacity is the weight of its
// colour, so that a nearly transparent pixel changes its colour readily and an opaque one takes little from a faint
// neighbour. If the resulting opacity is 0, the colours are unchanged.
template <class Format>
void MixDifferentOpacities(uint8_t* at, const BlendTarget<Format>& target, typename Format::Weight opacity,
                           typename Format::Weight weight) {
    using Colors = ColorsOf<Format>;
    if constexpr (std::is_floating_point_v<typename Format::Weight>) {
        const float kept = (1.0f - weight) * opacity;
        const float taken = target.opacity * weight;
        if (target.opacity != 0.0f && !(opacity == 0.0f && weight == 0.0f)) {
            Colors::Mix(Colors::Load(at), target.colors, 1.0f / (kept / taken + 1.0f)).Store(at);
        }
        StoreOpacity<Format>(at, kept + taken);
    } else {
        const int32_t kept = WrapMul(opacity, WrapSub(Format::kWhole, weight));
        if (target.opacity == 0) return StoreOpacity<Format>(at, kept / Format::kWhole);
        const int32_t taken = WrapMul(target.opacity, weight);
        if (kept != 0 || taken != 0) {
            const float ratio = static_cast<float>(kept) / static_cast<float>(taken);
            const int32_t share = TruncateToInt(65535.0f / (ratio + 1.0f));
            Colors::MixToNearest(Colors::Load(at), target.colors, share).Store(at);
        }
        StoreOpacity<Format>(at, WrapAdd(kept, taken) / Format::kWhole);
    }
}

// Moves the pixel at `at` toward another.
template <class Format>
void MixPixel(uint8_t* at, const BlendTarget<Format>& target, typename Format::Weight weight) {
    using Colors = ColorsOf<Format>;
    if constexpr (Format::kExtra == 1) {
        const auto opacity = LoadOpacity<Format>(at);
        if (opacity != target.opacity) return MixDifferentOpacities<Format>(at, target, opacity, weight);
    }
    Colors::Mix(Colors::Load(at), target.colors, weight).Store(at);
}

// Moves destination pixel (x, y) toward source pixel (fromX, fromY).
template <class Format>
void MixPixelAt(const KernelJob& job, int32_t x, int32_t y, int32_t fromX, int32_t fromY,
                typename Format::Weight weight) {
    MixPixel<Format>(PixelAt<Format>(*job.destination, x, y),
                     LoadBlendTarget<Format>(PixelAt<Format>(*job.source, fromX, fromY)), weight);
}

}  // namespace stairmelt::inline STAIRMELT_SET
