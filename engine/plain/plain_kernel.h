// The kernel in its plain form: the definition of the result. It also runs on narrow images.
#pragma once

#include <cstdint>

#include "engine/image.h"
#include "engine/kernel_sets.h"
#include "engine/plain/edge_builder.h"
#include "engine/plain/edge_map.h"
#include "engine/plain/stair_scan.h"
#include "engine/rules/scan_weights.h"

namespace stairmelt {

// For two views of the same, arbitrary size. Returns kKernelDone or kKernelMemoryError.
template <class Format>
int32_t SmoothPlainly(const KernelJob& job) {
    const ImageView& destination = *job.destination;
    EdgeMap map;
    if (!map.Allocate(destination.width, destination.height)) return kKernelMemoryError;
    // A host may report 2^31 rows of no pixels: skip them.
    if (destination.width < 1 || destination.height < 1) return kKernelDone;
    // Reads the destination, which still equals the source.
    BuildEdgeMap<Format>(destination, DeriveEdgeThreshold<Format>(job.colorThreshold), map);
    StairScan<Format>{job, map, DeriveScanWeights<Format>(job)}.Run();
    return kKernelDone;
}

template <class Depth>
inline constexpr DepthKernels kPlainKernelsOf = {
    SmoothPlainly<PixelFormat<Depth, 1, 0>>, SmoothPlainly<PixelFormat<Depth, 1, 1>>,
    SmoothPlainly<PixelFormat<Depth, 2, 0>>, SmoothPlainly<PixelFormat<Depth, 2, 1>>,
    SmoothPlainly<PixelFormat<Depth, 3, 0>>, SmoothPlainly<PixelFormat<Depth, 3, 1>>,
    SmoothPlainly<PixelFormat<Depth, 4, 0>>, SmoothPlainly<PixelFormat<Depth, 4, 1>>,
};

}  // namespace stairmelt
