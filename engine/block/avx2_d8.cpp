// The kernels of depth 8 for machines with AVX2.
#include "engine/block/avx2.h"
#include "engine/block/block_kernel.h"

constinit const stairmelt::DepthKernels stairmelt::kAvx2D8 = kBlockKernelsOf<Depth8, Avx2>;
