// The kernel in its plain form: the definition of the result. It also runs on narrow images.
#pragma once

#include <cstdint>

#include "engine/image.h"
#include "engine/kernel_sets.h"
#include "engine/plain/edge_map.h"
#include "engine/plain/stair_scan.h"
#include "engine/rules/cell_builder.h"
#include "engine/rules/scan_weights.h"

namespace stairmelt {

// Sets the flags of a zeroed map of the image's size. An image without pixels gets none, and nothing is read.
template <class Format>
void BuildEdgeMap(const ImageView& image, EdgeThreshold<Format> threshold, EdgeMap& map) {
    if (image.width < 1 || image.height < 1) return;
    const CellBuilder<Format> builder{image, threshold};
    const int32_t packedEnd = builder.PackedEnd();
    for (int32_t y = 0; y < image.height - 1; ++y) {
        for (int32_t group = 0; group < packedEnd; group += 4) {
            const uint32_t word = builder.PackedStep(group, y);
            for (int k = 0; k < 4; ++k) *map.CellAt(group + k, y) = static_cast<uint8_t>(word >> (8 * k));
        }
        for (int32_t x = packedEnd; x < image.width - 1; ++x) *map.CellAt(x, y) = builder.PlainStep(x, y);
        *map.CellAt(image.width - 1, y) = builder.LastColumnStep(y);
    }
    for (int32_t x = 0; x < image.width - 1; ++x) *map.CellAt(x, image.height - 1) = builder.LastRowStep(x);
}

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
