// Maps keys to kernels.
#pragma once

#include <cstdint>

#include "engine/image.h"

namespace stairmelt {

// Runs the kernel for the job's key and returns its result; kKernelParameterError if there is none.
int32_t DispatchKernel(const KernelJob& job);

}  // namespace stairmelt
