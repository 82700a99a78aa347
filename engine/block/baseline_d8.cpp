// The kernels of depth 8 for any x86-64 machine.
#include "engine/block/block_kernel.h"
#include "engine/kernel_sets.h"

namespace stairmelt {

const DepthKernels kBaselineD8 = {
    SmoothInBlocks<PixelFormat<Depth8, 1, 0>>, SmoothInBlocks<PixelFormat<Depth8, 1, 1>>,
    SmoothInBlocks<PixelFormat<Depth8, 2, 0>>, SmoothInBlocks<PixelFormat<Depth8, 2, 1>>,
    SmoothInBlocks<PixelFormat<Depth8, 3, 0>>, SmoothInBlocks<PixelFormat<Depth8, 3, 1>>,
    SmoothInBlocks<PixelFormat<Depth8, 4, 0>>, SmoothInBlocks<PixelFormat<Depth8, 4, 1>>,
};

}  // namespace stairmelt
