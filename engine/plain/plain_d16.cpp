// The kernels of depth 16 in their plain form.
#include "engine/kernel_sets.h"
#include "engine/plain/plain_kernel.h"

namespace stairmelt {

const DepthKernels kPlainD16 = {
    SmoothPlainly<PixelFormat<Depth16, 1, 0>>, SmoothPlainly<PixelFormat<Depth16, 1, 1>>,
    SmoothPlainly<PixelFormat<Depth16, 2, 0>>, SmoothPlainly<PixelFormat<Depth16, 2, 1>>,
    SmoothPlainly<PixelFormat<Depth16, 3, 0>>, SmoothPlainly<PixelFormat<Depth16, 3, 1>>,
    SmoothPlainly<PixelFormat<Depth16, 4, 0>>, SmoothPlainly<PixelFormat<Depth16, 4, 1>>,
};

}  // namespace stairmelt
