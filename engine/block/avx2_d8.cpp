// The kernels of depth 8 for machines with AVX2.
#include "engine/block/avx2.h"
#include "engine/block/block_kernel.h"
#include "engine/kernel_sets.h"

namespace stairmelt {

const DepthKernels kAvx2D8 = {
    SmoothInBlocks<PixelFormat<Depth8, 1, 0, Avx2>>, SmoothInBlocks<PixelFormat<Depth8, 1, 1, Avx2>>,
    SmoothInBlocks<PixelFormat<Depth8, 2, 0, Avx2>>, SmoothInBlocks<PixelFormat<Depth8, 2, 1, Avx2>>,
    SmoothInBlocks<PixelFormat<Depth8, 3, 0, Avx2>>, SmoothInBlocks<PixelFormat<Depth8, 3, 1, Avx2>>,
    SmoothInBlocks<PixelFormat<Depth8, 4, 0, Avx2>>, SmoothInBlocks<PixelFormat<Depth8, 4, 1, Avx2>>,
};

}  // namespace stairmelt
