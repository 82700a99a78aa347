// The named kernels of depth 16.
#include "engine/kernel_frame.h"
#include "engine/smooth_kernel.h"

namespace stairmelt {

int32_t SmoothC1D16(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth16, 1, 0>>(job); }
int32_t SmoothC1D16A(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth16, 1, 1>>(job); }
int32_t SmoothC2D16(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth16, 2, 0>>(job); }
int32_t SmoothC2D16A(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth16, 2, 1>>(job); }
int32_t SmoothC3D16(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth16, 3, 0>>(job); }
int32_t SmoothC3D16A(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth16, 3, 1>>(job); }
int32_t SmoothC4D16(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth16, 4, 0>>(job); }
int32_t SmoothC4D16A(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth16, 4, 1>>(job); }

}  // namespace stairmelt
