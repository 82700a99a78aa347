// The average that softens a lone pixel or the tip of a spike: the weighted mean of a destination pixel and its four
// neighbours in the source. All sums are in single precision, and the order of the additions is part of the result.
#pragma once

#include <array>
#include <cstdint>
#include <type_traits>

#include "engine/arith.h"
#include "engine/image.h"
#include "engine/pixel_format.h"

namespace stairmelt::inline STAIRMELT_SET {

// Calls visit(neighbour pixel) for the source's pixels on the left, on the right, above and below, in this order,
// skipping what lies outside the image.
template <class Format, class Visit>
void ForEachNeighbour(const ImageView& source, int32_t x, int32_t y, Visit visit) {
    if (x > 0) visit(Load<Format>(PixelAt<Format>(source, x - 1, y)));
    if (x < source.width - 1) visit(Load<Format>(PixelAt<Format>(source, x + 1, y)));
    if (y > 0) visit(Load<Format>(PixelAt<Format>(source, x, y - 1)));
    if (y < source.height - 1) visit(Load<Format>(PixelAt<Format>(source, x, y + 1)));
}

// The product of a sample and a weight; formed in integers at the integer depths.
template <class Format>
float WeightedSample(typename Format::Sample sample, typename Format::Weight weight) {
    if constexpr (std::is_integral_v<typename Format::Sample>) {
        return static_cast<float>(WrapMul(sample, weight));
    } else {
        return weight * sample;
    }
}

// A sum as a sample: truncated at the integer depths.
template <class Format>
typename Format::Sample SampleFromAverage(float value) {
    if constexpr (std::is_integral_v<typename Format::Sample>) {
        return LowBits<typename Format::Sample>(TruncateToInt(value));
    } else {
        return value;
    }
}

template <class Format>
requires(Format::kExtra == 0) void AverageSampleBySample(const ImageView& source, const ImageView& destination,
                                                         int32_t x, int32_t y,
                                                         typename Format::Weight neighbourWeight) {
    float weights = 0.0f;
    std::array<float, Format::kChannels> values{};
    ForEachNeighbour<Format>(source, x, y, [&](const typename Format::Pixel& neighbour) {
        weights += static_cast<float>(neighbourWeight);
        for (int c = 0; c < Format::kChannels; ++c) values[c] += WeightedSample<Format>(neighbour[c], neighbourWeight);
    });
    if (!(weights > 0.0f)) return;

    weights += static_cast<float>(Format::kWhole);
    uint8_t* const at = PixelAt<Format>(destination, x, y);
    typename Format::Pixel pixel = Load<Format>(at);
    for (int c = 0; c < Format::kChannels; ++c) {
        values[c] += WeightedSample<Format>(pixel[c], Format::kWhole);
        pixel[c] = SampleFromAverage<Format>(values[c] / weights);
    }
    Store<Format>(at, pixel);
}

// With opacity, colours are averaged by opacity, and the opacity itself is averaged. The integer depths round to
// nearest here, and the opacity is held to its range.
template <class Format>
requires(Format::kExtra == 1) void AverageSampleBySample(const ImageView& source, const ImageView& destination,
                                                         int32_t x, int32_t y,
                                                         typename Format::Weight neighbourWeight) {
    constexpr bool kRounds = std::is_integral_v<typename Format::Sample>;
    const float weight = static_cast<float>(neighbourWeight) / static_cast<float>(Format::kWhole);
    float weights = 0.0f;
    float opacities = 0.0f;
    std::array<float, Format::kChannels> values{};
    ForEachNeighbour<Format>(source, x, y, [&](const typename Format::Pixel& neighbour) {
        const float share = static_cast<float>(neighbour[Format::kOpacity]) * weight;
        weights += weight;
        opacities += share;
        for (int c = 0; c < Format::kChannels; ++c) values[c] += static_cast<float>(neighbour[c]) * share;
    });
    if (!(weights > 0.0f)) return;

    weights += 1.0f;
    uint8_t* const at = PixelAt<Format>(destination, x, y);
    typename Format::Pixel pixel = Load<Format>(at);
    const float opacity = static_cast<float>(pixel[Format::kOpacity]);
    opacities += opacity;
    for (int c = 0; c < Format::kChannels; ++c) values[c] += static_cast<float>(pixel[c]) * opacity;

    if constexpr (kRounds) {
        const int32_t average = TruncateToInt((weights * 0.5f + opacities) / weights);
        pixel[Format::kOpacity] =
            LowBits<typename Format::Sample>(average > Format::kOpaque ? Format::kOpaque : average);
    } else {
        pixel[Format::kOpacity] = opacities / weights;
    }
    if (opacities != 0.0f) {
        for (int c = 0; c < Format::kChannels; ++c) {
            const float sum = kRounds ? opacities * 0.5f + values[c] : values[c];
            pixel[c] = SampleFromAverage<Format>(sum / opacities);
        }
    }
    Store<Format>(at, pixel);
}

template <class Format>
void AverageIsolatedPixel(const ImageView& source, const ImageView& destination, int32_t x, int32_t y,
                          typename Format::Weight neighbourWeight) {
    if constexpr (Format::kMixesLanes) {
        Format::InstructionSet::template AverageIsolatedPixel<Format>(source, destination, x, y, neighbourWeight);
    } else {
        AverageSampleBySample<Format>(source, destination, x, y, neighbourWeight);
    }
}

}  // namespace stairmelt::inline STAIRMELT_SET
