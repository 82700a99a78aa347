// The kernels of depth 32 for any x86-64 machine.
#include "engine/block/block_kernel.h"

constinit const stairmelt::DepthKernels stairmelt::kBaselineD32 = kBlockKernelsOf<Depth32, Baseline>;
