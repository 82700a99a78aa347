// The kernels of depth 32 for machines with AVX2.
#include "engine/block/avx2.h"
#include "engine/block/block_kernel.h"
#include "engine/kernel_sets.h"

namespace stairmelt {

const DepthKernels kAvx2D32 = {
    SmoothInBlocks<PixelFormat<Depth32, 1, 0, Avx2>>, SmoothInBlocks<PixelFormat<Depth32, 1, 1, Avx2>>,
    SmoothInBlocks<PixelFormat<Depth32, 2, 0, Avx2>>, SmoothInBlocks<PixelFormat<Depth32, 2, 1, Avx2>>,
    SmoothInBlocks<PixelFormat<Depth32, 3, 0, Avx2>>, SmoothInBlocks<PixelFormat<Depth32, 3, 1, Avx2>>,
    SmoothInBlocks<PixelFormat<Depth32, 4, 0, Avx2>>, SmoothInBlocks<PixelFormat<Depth32, 4, 1, Avx2>>,
};

}  // namespace stairmelt
