// The frame that all kernels share: checks, derived quantities and the order of the phases.
#pragma once

#include <cstdint>
#include <type_traits>

#include "engine/arith.h"
#include "engine/edge_builder.h"
#include "engine/edge_map.h"
#include "engine/image.h"
#include "engine/pixel_format.h"
#include "engine/stair_scan.h"

namespace stairmelt {

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
    constexpr int32_t kFullFrom = 70;
    if (softness >= kFullFrom) return Format::kContact;
    const float share = 1.0f - static_cast<float>(WrapSub(kFullFrom, softness)) / 70.0f;
    if constexpr (std::is_integral_v<typename Format::Weight>) {
        return TruncateToInt(share * static_cast<float>(Format::kContact));
    } else {
        return share * Format::kContact;
    }
}

// A kernel. kBuild is the form of the edge builder: BuildEdgeMapPlain gives the same result, slowly.
template <class Format, void (*kBuild)(const ImageView&, EdgeThreshold<Format>, EdgeMap&) = BuildEdgeMap<Format>>
int32_t SmoothKernel(const KernelJob& job) {
    const ImageView& source = *job.source;
    const ImageView& destination = *job.destination;
    if (source.width != destination.width || source.height != destination.height) return kKernelParameterError;

    const ScanWeights<Format> weights{
        job.bias / 3,
        DeriveNeighbourWeight<Format>(job.softness),
        DeriveCornerWeight<Format>(job.softness),
    };
    EdgeMap map;
    if (!map.Allocate(destination.width, destination.height)) return kKernelMemoryError;
    // From the destination, which still equals the source.
    kBuild(destination, DeriveEdgeThreshold<Format>(job.colorThreshold), map);
    StairScan<Format>{job, source, destination, map, weights}.Run();
    return kKernelDone;
}

}  // namespace stairmelt
