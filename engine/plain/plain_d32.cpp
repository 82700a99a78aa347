// The kernels of depth 32 in their plain form.
#include "engine/plain/plain_kernel.h"

constinit const stairmelt::DepthKernels stairmelt::kPlainD32 = kPlainKernelsOf<Depth32>;
