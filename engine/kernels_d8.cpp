// The named kernels of depth 8.
#include "engine/kernel_frame.h"
#include "engine/smooth_kernel.h"

namespace stairmelt {

int32_t SmoothC1D8(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth8, 1, 0>>(job); }
int32_t SmoothC1D8A(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth8, 1, 1>>(job); }
int32_t SmoothC2D8(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth8, 2, 0>>(job); }
int32_t SmoothC2D8A(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth8, 2, 1>>(job); }
int32_t SmoothC3D8(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth8, 3, 0>>(job); }
int32_t SmoothC3D8A(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth8, 3, 1>>(job); }
int32_t SmoothC4D8(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth8, 4, 0>>(job); }
int32_t SmoothC4D8A(const KernelJob& job) { return SmoothKernel<PixelFormat<Depth8, 4, 1>>(job); }

}  // namespace stairmelt
