// The named kernels: their shared checks, and the choice of the form that runs.
#include "engine/smooth_kernel.h"

#include "engine/kernel_sets.h"

namespace stairmelt {

int32_t Smooth(int channels, int depth, int extra, const KernelJob& job) {
    const ImageView& source = *job.source;
    const ImageView& destination = *job.destination;
    if (source.width != destination.width || source.height != destination.height) return kKernelParameterError;
    return FastestKernels(source.width, source.height).Get(channels, depth, extra)(job);
}

}  // namespace stairmelt
