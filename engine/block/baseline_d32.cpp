// The kernels of depth 32 for any x86-64 machine.
#include "engine/block/block_kernel.h"
#include "engine/kernel_sets.h"

namespace stairmelt {

const DepthKernels kBaselineD32 = {
    SmoothInBlocks<PixelFormat<Depth32, 1, 0>>, SmoothInBlocks<PixelFormat<Depth32, 1, 1>>,
    SmoothInBlocks<PixelFormat<Depth32, 2, 0>>, SmoothInBlocks<PixelFormat<Depth32, 2, 1>>,
    SmoothInBlocks<PixelFormat<Depth32, 3, 0>>, SmoothInBlocks<PixelFormat<Depth32, 3, 1>>,
    SmoothInBlocks<PixelFormat<Depth32, 4, 0>>, SmoothInBlocks<PixelFormat<Depth32, 4, 1>>,
};

}  // namespace stairmelt
