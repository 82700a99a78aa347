// The kernels of depth 8 for any x86-64 machine.
#include "engine/block/block_kernel.h"

constinit const stairmelt::DepthKernels stairmelt::kBaselineD8 = kBlockKernelsOf<Depth8, Baseline>;
