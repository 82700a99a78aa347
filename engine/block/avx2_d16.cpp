// The kernels of depth 16 for machines with AVX2.
#include "engine/block/avx2.h"
#include "engine/block/block_kernel.h"
#include "engine/kernel_sets.h"

namespace stairmelt {

const DepthKernels kAvx2D16 = {
    SmoothInBlocks<PixelFormat<Depth16, 1, 0, Avx2>>, SmoothInBlocks<PixelFormat<Depth16, 1, 1, Avx2>>,
    SmoothInBlocks<PixelFormat<Depth16, 2, 0, Avx2>>, SmoothInBlocks<PixelFormat<Depth16, 2, 1, Avx2>>,
    SmoothInBlocks<PixelFormat<Depth16, 3, 0, Avx2>>, SmoothInBlocks<PixelFormat<Depth16, 3, 1, Avx2>>,
    SmoothInBlocks<PixelFormat<Depth16, 4, 0, Avx2>>, SmoothInBlocks<PixelFormat<Depth16, 4, 1, Avx2>>,
};

}  // namespace stairmelt
