// The kernels of depth 16 for any x86-64 machine.
#include "engine/block/block_kernel.h"
#include "engine/kernel_sets.h"

namespace stairmelt {

const DepthKernels kBaselineD16 = {
    SmoothInBlocks<PixelFormat<Depth16, 1, 0>>, SmoothInBlocks<PixelFormat<Depth16, 1, 1>>,
    SmoothInBlocks<PixelFormat<Depth16, 2, 0>>, SmoothInBlocks<PixelFormat<Depth16, 2, 1>>,
    SmoothInBlocks<PixelFormat<Depth16, 3, 0>>, SmoothInBlocks<PixelFormat<Depth16, 3, 1>>,
    SmoothInBlocks<PixelFormat<Depth16, 4, 0>>, SmoothInBlocks<PixelFormat<Depth16, 4, 1>>,
};

}  // namespace stairmelt
