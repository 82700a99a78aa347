// The 24 kernels, one for each pixel format. All are instances of one algorithm and differ only in how a pixel is
// stored, compared and mixed: C counts the colour channels, D the bits of a sample, and A marks an opacity sample.
//
// A kernel smooths the stairs in the whole destination image. Samples are 0..255 at depth 8, 0..32768 at depth 16, and
// floats with 1.0 as white at depth 32. Any values of the job's parameters and any sample values are supported without
// undefined behaviour and without a write outside the destination. The result of a kernel is exact: it depends on the
// pixels and parameters alone, not on strides, alignment or the machine. Only the bits of a NaN may vary.
//
// Each returns kKernelDone, kKernelParameterError if the views differ in size, or kKernelMemoryError.
#pragma once

#include "engine/image.h"

namespace stairmelt {

using Kernel = int32_t (*)(const KernelJob& job);

// Chooses the form that runs. channels: 1..4; depth: 8, 16 or 32; extra: 0 or 1.
int32_t Smooth(int channels, int depth, int extra, const KernelJob& job);

template <int kChannels, int kDepth, int kExtra>
int32_t SmoothFormat(const KernelJob& job) {
    return Smooth(kChannels, kDepth, kExtra, job);
}

constexpr Kernel SmoothC1D8 = SmoothFormat<1, 8, 0>;
constexpr Kernel SmoothC1D8A = SmoothFormat<1, 8, 1>;
constexpr Kernel SmoothC2D8 = SmoothFormat<2, 8, 0>;
constexpr Kernel SmoothC2D8A = SmoothFormat<2, 8, 1>;
constexpr Kernel SmoothC3D8 = SmoothFormat<3, 8, 0>;
constexpr Kernel SmoothC3D8A = SmoothFormat<3, 8, 1>;
constexpr Kernel SmoothC4D8 = SmoothFormat<4, 8, 0>;
constexpr Kernel SmoothC4D8A = SmoothFormat<4, 8, 1>;

constexpr Kernel SmoothC1D16 = SmoothFormat<1, 16, 0>;
constexpr Kernel SmoothC1D16A = SmoothFormat<1, 16, 1>;
constexpr Kernel SmoothC2D16 = SmoothFormat<2, 16, 0>;
constexpr Kernel SmoothC2D16A = SmoothFormat<2, 16, 1>;
constexpr Kernel SmoothC3D16 = SmoothFormat<3, 16, 0>;
constexpr Kernel SmoothC3D16A = SmoothFormat<3, 16, 1>;
constexpr Kernel SmoothC4D16 = SmoothFormat<4, 16, 0>;
constexpr Kernel SmoothC4D16A = SmoothFormat<4, 16, 1>;

constexpr Kernel SmoothC1D32 = SmoothFormat<1, 32, 0>;
constexpr Kernel SmoothC1D32A = SmoothFormat<1, 32, 1>;
constexpr Kernel SmoothC2D32 = SmoothFormat<2, 32, 0>;
constexpr Kernel SmoothC2D32A = SmoothFormat<2, 32, 1>;
constexpr Kernel SmoothC3D32 = SmoothFormat<3, 32, 0>;
constexpr Kernel SmoothC3D32A = SmoothFormat<3, 32, 1>;
constexpr Kernel SmoothC4D32 = SmoothFormat<4, 32, 0>;
constexpr Kernel SmoothC4D32A = SmoothFormat<4, 32, 1>;

}  // namespace stairmelt
