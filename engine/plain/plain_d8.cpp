// The kernels of depth 8 in their plain form.
#include "engine/kernel_sets.h"
#include "engine/plain/plain_kernel.h"

namespace stairmelt {

const DepthKernels kPlainD8 = {
    SmoothPlainly<PixelFormat<Depth8, 1, 0>>, SmoothPlainly<PixelFormat<Depth8, 1, 1>>,
    SmoothPlainly<PixelFormat<Depth8, 2, 0>>, SmoothPlainly<PixelFormat<Depth8, 2, 1>>,
    SmoothPlainly<PixelFormat<Depth8, 3, 0>>, SmoothPlainly<PixelFormat<Depth8, 3, 1>>,
    SmoothPlainly<PixelFormat<Depth8, 4, 0>>, SmoothPlainly<PixelFormat<Depth8, 4, 1>>,
};

}  // namespace stairmelt
