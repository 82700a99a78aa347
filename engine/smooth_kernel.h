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

int32_t SmoothC1D8(const KernelJob& job);
int32_t SmoothC1D8A(const KernelJob& job);
int32_t SmoothC2D8(const KernelJob& job);
int32_t SmoothC2D8A(const KernelJob& job);
int32_t SmoothC3D8(const KernelJob& job);
int32_t SmoothC3D8A(const KernelJob& job);
int32_t SmoothC4D8(const KernelJob& job);
int32_t SmoothC4D8A(const KernelJob& job);
int32_t SmoothC1D16(const KernelJob& job);
int32_t SmoothC1D16A(const KernelJob& job);
int32_t SmoothC2D16(const KernelJob& job);
int32_t SmoothC2D16A(const KernelJob& job);
int32_t SmoothC3D16(const KernelJob& job);
int32_t SmoothC3D16A(const KernelJob& job);
int32_t SmoothC4D16(const KernelJob& job);
int32_t SmoothC4D16A(const KernelJob& job);
int32_t SmoothC1D32(const KernelJob& job);
int32_t SmoothC1D32A(const KernelJob& job);
int32_t SmoothC2D32(const KernelJob& job);
int32_t SmoothC2D32A(const KernelJob& job);
int32_t SmoothC3D32(const KernelJob& job);
int32_t SmoothC3D32A(const KernelJob& job);
int32_t SmoothC4D32(const KernelJob& job);
int32_t SmoothC4D32A(const KernelJob& job);

}  // namespace stairmelt
