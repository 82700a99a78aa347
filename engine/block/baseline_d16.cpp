// The kernels of depth 16 for any x86-64 machine.
#include "engine/block/block_kernel.h"

constinit const stairmelt::DepthKernels stairmelt::kBaselineD16 = kBlockKernelsOf<Depth16, Baseline>;
