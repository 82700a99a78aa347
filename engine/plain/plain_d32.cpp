// The kernels of depth 32 in their plain form.
#include "engine/kernel_sets.h"
#include "engine/plain/plain_kernel.h"

namespace stairmelt {

const DepthKernels kPlainD32 = {
    SmoothPlainly<PixelFormat<Depth32, 1, 0>>, SmoothPlainly<PixelFormat<Depth32, 1, 1>>,
    SmoothPlainly<PixelFormat<Depth32, 2, 0>>, SmoothPlainly<PixelFormat<Depth32, 2, 1>>,
    SmoothPlainly<PixelFormat<Depth32, 3, 0>>, SmoothPlainly<PixelFormat<Depth32, 3, 1>>,
    SmoothPlainly<PixelFormat<Depth32, 4, 0>>, SmoothPlainly<PixelFormat<Depth32, 4, 1>>,
};

}  // namespace stairmelt
