// The kernels of depth 32 for machines with AVX2.
#include "engine/block/avx2.h"
#include "engine/block/block_kernel.h"

constinit const stairmelt::DepthKernels stairmelt::kAvx2D32 = kBlockKernelsOf<Depth32, Avx2>;
