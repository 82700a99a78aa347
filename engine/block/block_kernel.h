// A kernel in the fast form: it keeps the flags as bits, decides for blocks of pixels, and visits only where something
// is done. The flags are built a little ahead of the scan, so that the pixels are still in the cache when they are
// changed. Flags, decisions and the order of blends are those of the plain form, and so is the result.
#pragma once

#include <cstdint>

#include "engine/block/flag_planes.h"
#include "engine/block/painter.h"
#include "engine/block/plane_builder.h"
#include "engine/block/planner.h"
#include "engine/image.h"
#include "engine/kernel_sets.h"
#include "engine/rules/scan_weights.h"

namespace stairmelt::inline STAIRMELT_SET {

// For views of one size, from 1 by 1 to what IsForBlocks (kernel_sets.h) allows. Returns kKernelDone or
// kKernelMemoryError.
template <class Format>
int32_t SmoothInBlocks(const KernelJob& job) {
    const ImageView& destination = *job.destination;
    FlagPlanes planes;
    if (!planes.Allocate(destination.width, destination.height)) return kKernelMemoryError;
    PlaneBuilder<Format> builder(destination, DeriveEdgeThreshold<Format>(job.colorThreshold), planes);
    planes.BuildBy(builder, builder.kBandRows);
    Painter<Format> painter(job, DeriveScanWeights<Format>(job), planes);
    PlanVisits(destination.width, destination.height, planes, painter);
    return kKernelDone;
}

template <class Depth, class Set>
inline constexpr DepthKernels kBlockKernelsOf = {
    SmoothInBlocks<PixelFormat<Depth, 1, 0, Set>>, SmoothInBlocks<PixelFormat<Depth, 1, 1, Set>>,
    SmoothInBlocks<PixelFormat<Depth, 2, 0, Set>>, SmoothInBlocks<PixelFormat<Depth, 2, 1, Set>>,
    SmoothInBlocks<PixelFormat<Depth, 3, 0, Set>>, SmoothInBlocks<PixelFormat<Depth, 3, 1, Set>>,
    SmoothInBlocks<PixelFormat<Depth, 4, 0, Set>>, SmoothInBlocks<PixelFormat<Depth, 4, 1, Set>>,
};

}  // namespace stairmelt::inline STAIRMELT_SET
