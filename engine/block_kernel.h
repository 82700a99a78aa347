// A kernel that takes the flags as bits and decides for blocks of pixels. The map is built a little ahead of the scan,
// so that the pixels are still in the cache when they are visited; a run that goes down further has the rows built that
// it comes to.
//
// The result is that of plain_kernel.h, to the bit: the flags are the same, the decisions rest on them alone, and the
// blends are made in the same order. Where a float isn't a number the result isn't either, whichever it is.
#pragma once

#include <cstdint>

#include "engine/block_scan.h"
#include "engine/flag_planes.h"
#include "engine/image.h"
#include "engine/plane_builder.h"
#include "engine/scan_weights.h"

namespace stairmelt::inline STAIRMELT_SET {

// Serves views of one size, from 1 by 1 on to what IsForBlocks (kernel_sets.h) allows. Returns kKernelDone or
// kKernelMemoryError.
template <class Format>
int32_t SmoothInBlocks(const KernelJob& job) {
    const ImageView& destination = *job.destination;
    FlagPlanes planes;
    if (!planes.Allocate(destination.width, destination.height)) return kKernelMemoryError;
    // From the destination, which still equals the source in the rows that aren't built yet.
    PlaneBuilder<Format> builder(destination, DeriveEdgeThreshold<Format>(job.colorThreshold), planes);
    planes.BuildBy(builder);
    BlockScan<Format>(job, planes, DeriveScanWeights<Format>(job)).Run();
    return kKernelDone;
}

}  // namespace stairmelt::inline STAIRMELT_SET
