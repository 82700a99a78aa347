// The kernels of depth 16 for machines with AVX2.
#include "engine/block/avx2.h"
#include "engine/block/block_kernel.h"

constinit const stairmelt::DepthKernels stairmelt::kAvx2D16 = kBlockKernelsOf<Depth16, Avx2>;
