// From a key to its kernel.
#pragma once

#include <cstdint>

#include "engine/image.h"

namespace stairmelt {

// Runs the kernel that the job's key names and returns its result; kKernelParameterError for any other key.
int32_t DispatchKernel(const KernelJob& job);

}  // namespace stairmelt
