// What a kernel derives from the job before it touches a pixel.
#pragma once

#include <cstdint>
#include <type_traits>

#include "engine/image.h"
#include "engine/pixel_format.h"
#include "engine/rules/arith.h"
#include "engine/rules/cell_builder.h"

namespace stairmelt::inline STAIRMELT_SET {

// A pixel with more channels, whose differences are summed, is allowed a larger difference, though less than in
// proportion. An opacity sample doesn't count.
template <class Format>
EdgeThreshold<Format> DeriveEdgeThreshold(int32_t colorThreshold) {
    const int32_t base = WrapMul(Format::kChannels + 1, colorThreshold) / 4;
    if constexpr (Format::kBits == 8) {
        return base;
    } else if constexpr (Format::kBits == 16) {
        return WrapMul(base, 32768) / 255;
    } else {
        return static_cast<float>(base) / 255.0f;
    }
}

template <class Format>
struct ScanWeights {
    int32_t tailBias;                         // a third of the job's bias: a tail bends less than a stair
    typename Format::Weight neighbourWeight;  // of each neighbour in the isolated pixel average
    typename Format::Weight cornerWeight;     // of the contact blends
};

template <class Format>
typename Format::Weight DeriveNeighbourWeight(int32_t softness) {
    if constexpr (std::is_integral_v<typename Format::Weight>) {
        return WrapMul(softness, Format::kHalf) / 200;
    } else {
        return static_cast<float>(softness) * 0.5f / 200.0f;
    }
}

// Constant from the softness at which the ramps between two runs of one length just meet, and falling to zero below it.
template <class Format>
typename Format::Weight DeriveCornerWeight(int32_t softness) {
    constexpr int32_t kFullFrom = 70;  // where ramps meet; not the default softness, which is 70, too
    if (softness >= kFullFrom) return Format::kContact;
    const float share = 1.0f - static_cast<float>(WrapSub(kFullFrom, softness)) / 70.0f;
    if constexpr (std::is_integral_v<typename Format::Weight>) {
        return TruncateToInt(share * static_cast<float>(Format::kContact));
    } else {
        return share * Format::kContact;
    }
}

template <class Format>
ScanWeights<Format> DeriveScanWeights(const KernelJob& job) {
    return {job.bias / 3, DeriveNeighbourWeight<Format>(job.softness), DeriveCornerWeight<Format>(job.softness)};
}

}  // namespace stairmelt::inline STAIRMELT_SET
