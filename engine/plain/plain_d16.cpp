// The kernels of depth 16 in their plain form.
#include "engine/plain/plain_kernel.h"

constinit const stairmelt::DepthKernels stairmelt::kPlainD16 = kPlainKernelsOf<Depth16>;
