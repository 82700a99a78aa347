// The named kernels of depth 32.
#include "engine/kernel_frame.h"
#include "engine/smooth_kernel.h"

namespace stairmelt {

int32_t SmoothC1D32(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth32, 1, 0>>(job); }
int32_t SmoothC1D32A(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth32, 1, 1>>(job); }
int32_t SmoothC2D32(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth32, 2, 0>>(job); }
int32_t SmoothC2D32A(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth32, 2, 1>>(job); }
int32_t SmoothC3D32(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth32, 3, 0>>(job); }
int32_t SmoothC3D32A(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth32, 3, 1>>(job); }
int32_t SmoothC4D32(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth32, 4, 0>>(job); }
int32_t SmoothC4D32A(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth32, 4, 1>>(job); }

}  // namespace stairmelt
