// The named kernels: their shared checks, and the choice of the form that runs.
#include "engine/smooth_kernel.h"

#include "engine/kernel_sets.h"

namespace stairmelt {

namespace {

int32_t Smooth(int channels, int depth, int extra, const KernelJob& job) {
    const ImageView& source = *job.source;
    const ImageView& destination = *job.destination;
    if (source.width != destination.width || source.height != destination.height) return kKernelParameterError;
    return FastestKernels(source.width, source.height).Get(channels, depth, extra)(job);
}

}  // namespace

int32_t SmoothC1D8(const KernelJob& job) { return Smooth(1, 8, 0, job); }
int32_t SmoothC1D8A(const KernelJob& job) { return Smooth(1, 8, 1, job); }
int32_t SmoothC2D8(const KernelJob& job) { return Smooth(2, 8, 0, job); }
int32_t SmoothC2D8A(const KernelJob& job) { return Smooth(2, 8, 1, job); }
int32_t SmoothC3D8(const KernelJob& job) { return Smooth(3, 8, 0, job); }
int32_t SmoothC3D8A(const KernelJob& job) { return Smooth(3, 8, 1, job); }
int32_t SmoothC4D8(const KernelJob& job) { return Smooth(4, 8, 0, job); }
int32_t SmoothC4D8A(const KernelJob& job) { return Smooth(4, 8, 1, job); }

int32_t SmoothC1D16(const KernelJob& job) { return Smooth(1, 16, 0, job); }
int32_t SmoothC1D16A(const KernelJob& job) { return Smooth(1, 16, 1, job); }
int32_t SmoothC2D16(const KernelJob& job) { return Smooth(2, 16, 0, job); }
int32_t SmoothC2D16A(const KernelJob& job) { return Smooth(2, 16, 1, job); }
int32_t SmoothC3D16(const KernelJob& job) { return Smooth(3, 16, 0, job); }
int32_t SmoothC3D16A(const KernelJob& job) { return Smooth(3, 16, 1, job); }
int32_t SmoothC4D16(const KernelJob& job) { return Smooth(4, 16, 0, job); }
int32_t SmoothC4D16A(const KernelJob& job) { return Smooth(4, 16, 1, job); }

int32_t SmoothC1D32(const KernelJob& job) { return Smooth(1, 32, 0, job); }
int32_t SmoothC1D32A(const KernelJob& job) { return Smooth(1, 32, 1, job); }
int32_t SmoothC2D32(const KernelJob& job) { return Smooth(2, 32, 0, job); }
int32_t SmoothC2D32A(const KernelJob& job) { return Smooth(2, 32, 1, job); }
int32_t SmoothC3D32(const KernelJob& job) { return Smooth(3, 32, 0, job); }
int32_t SmoothC3D32A(const KernelJob& job) { return Smooth(3, 32, 1, job); }
int32_t SmoothC4D32(const KernelJob& job) { return Smooth(4, 32, 0, job); }
int32_t SmoothC4D32A(const KernelJob& job) { return Smooth(4, 32, 1, job); }

}  // namespace stairmelt
