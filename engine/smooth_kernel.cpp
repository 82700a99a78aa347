// The named kernels: their shared checks, and the choice of the form that runs.
#include "engine/smooth_kernel.h"

#include "engine/kernel_sets.h"

namespace stairmelt {

static int32_t Smooth(int channels, int depth, int extra, const KernelJob& job) {
    const ImageView& source = *job.source;
    const ImageView& destination = *job.destination;
    if (source.width != destination.width || source.height != destination.height) return kKernelParameterError;
    return FastestKernels(source.width, source.height).Get(channels, depth, extra)(job);
}

#define KERNELS(c)                                                                   \
    int32_t SmoothC##c##D8(const KernelJob& job) { return Smooth(c, 8, 0, job); }    \
    int32_t SmoothC##c##D8A(const KernelJob& job) { return Smooth(c, 8, 1, job); }   \
    int32_t SmoothC##c##D16(const KernelJob& job) { return Smooth(c, 16, 0, job); }  \
    int32_t SmoothC##c##D16A(const KernelJob& job) { return Smooth(c, 16, 1, job); } \
    int32_t SmoothC##c##D32(const KernelJob& job) { return Smooth(c, 32, 0, job); }  \
    int32_t SmoothC##c##D32A(const KernelJob& job) { return Smooth(c, 32, 1, job); }
KERNELS(1) KERNELS(2) KERNELS(3) KERNELS(4)
#undef KERNELS

}  // namespace stairmelt
