// The 24 kernels in their plain form (plain/, the definition) and the fast one of each instruction set (block/); rules/
// is common to both. All give the same result to the bit. The named kernels of smooth_kernel.h run one of these.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "engine/smooth_kernel.h"

namespace stairmelt {

// The kernels of one depth: one to four colour channels, each without and with opacity.
using DepthKernels = std::array<Kernel, 8>;

// Each is defined in a separate file, compiled for its instruction set.
extern const DepthKernels kPlainD8, kPlainD16, kPlainD32;
extern const DepthKernels kBaselineD8, kBaselineD16, kBaselineD32;
extern const DepthKernels kAvx2D8, kAvx2D16, kAvx2D32;

struct KernelSet {
    const char* name;
    bool (*runsHere)();             // on this machine
    const DepthKernels* depths[3];  // 8, 16 and 32 bits

    // channels: 1..4; depth: 8, 16 or 32; extra: 0 or 1. Both views must have the same size.
    Kernel Get(int channels, int depth, int extra) const {
        return (*depths[depth / 16])[static_cast<size_t>((channels - 1) * 2 + extra)];
    }
};

// The plain form supports every size, the others every size from 1 by 1 up to the longest sides that IsForBlocks
// allows.
extern const KernelSet kPlainKernels, kBaselineKernels, kAvx2Kernels;

// Narrow images use the plain form, since most of their flag bits would be guards. So do images whose sides are so long
// that adding to a coordinate could overflow.
bool IsForBlocks(int32_t width, int32_t height);

// The fastest set for images of that size on this machine.
const KernelSet& FastestKernels(int32_t width, int32_t height);

}  // namespace stairmelt
