// The kernels of depth 8 in their plain form.
#include "engine/plain/plain_kernel.h"

constinit const stairmelt::DepthKernels stairmelt::kPlainD8 = kPlainKernelsOf<Depth8>;
