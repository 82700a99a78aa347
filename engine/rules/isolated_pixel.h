// The average that softens a lone pixel or the tip of a spike: the weighted mean of a destination pixel and its four
// neighbours in the source. All sums are in single precision, and the order of the additions is part of the result.
#pragma once

#include <cstdint>
#include <type_traits>

#include "engine/image.h"
#include "engine/pixel_format.h"
#include "engine/rules/arith.h"
#include "engine/rules/mix.h"

namespace stairmelt::inline STAIRMELT_SET {

// Calls visit(address) for the source's pixels on the left, on the right, above and below, in this order, skipping
// those outside the image.
template <class Format, class Visit>
void ForEachNeighbour(const ImageView& source, int32_t x, int32_t y, Visit visit) {
    const uint8_t* const at = PixelAt<Format>(source, x, y);
    if (x > 0) visit(at - Format::kPixelBytes);
    if (x < source.width - 1) visit(at + Format::kPixelBytes);
    if (y > 0) visit(at - static_cast<ptrdiff_t>(source.rowStride));
    if (y < source.height - 1) visit(at + static_cast<ptrdiff_t>(source.rowStride));
}

// With opacity, colours are averaged by opacity, and the opacity itself is averaged. The integer depths then round to
// nearest, and the opacity is clamped to its range.
template <class Format>
void AverageIsolatedPixel(const KernelJob& job, int32_t x, int32_t y, typename Format::Weight neighbourWeight) {
    using Colors = ColorsOf<Format>;
    uint8_t* const at = PixelAt<Format>(*job.destination, x, y);
    float weights = 0.0f;
    typename Colors::Sums values{};
    if constexpr (Format::kExtra == 0) {
        ForEachNeighbour<Format>(*job.source, x, y, [&](const uint8_t* neighbour) {
            weights += static_cast<float>(neighbourWeight);
            values = Colors::Add(values, Colors::Load(neighbour).Weighted(neighbourWeight));
        });
        if (!(weights > 0.0f)) return;
        weights += static_cast<float>(Format::kWhole);
        values = Colors::Add(values, Colors::Load(at).Weighted(Format::kWhole));
        Colors::Quotient(values, weights).Store(at);
    } else {
        constexpr bool kRounds = std::is_integral_v<typename Format::Sample>;
        const float weight = static_cast<float>(neighbourWeight) / static_cast<float>(Format::kWhole);
        float opacities = 0.0f;
        ForEachNeighbour<Format>(*job.source, x, y, [&](const uint8_t* neighbour) {
            const float share = static_cast<float>(LoadOpacity<Format>(neighbour)) * weight;
            weights += weight;
            opacities += share;
            values = Colors::Add(values, Colors::Load(neighbour).Scaled(share));
        });
        if (!(weights > 0.0f)) return;
        weights += 1.0f;
        const float opacity = static_cast<float>(LoadOpacity<Format>(at));
        opacities += opacity;
        values = Colors::Add(values, Colors::Load(at).Scaled(opacity));
        if constexpr (kRounds) {
            const int32_t average = TruncateToInt((weights * 0.5f + opacities) / weights);
            StoreOpacity<Format>(at, average > Format::kOpaque ? Format::kOpaque : average);
        } else {
            StoreOpacity<Format>(at, opacities / weights);
        }
        if (opacities == 0.0f) return;
        if constexpr (kRounds) values = Colors::Add(opacities * 0.5f, values);
        Colors::Quotient(values, opacities).Store(at);
    }
}

}  // namespace stairmelt::inline STAIRMELT_SET
