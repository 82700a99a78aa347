#include "engine/kernel_sets.h"

#include "engine/instruction_set.h"

namespace stairmelt {

const KernelSet kPlainKernels = {"plain", [] { return true; }, {&kPlainD8, &kPlainD16, &kPlainD32}};
const KernelSet kBaselineKernels = {"baseline", [] { return true; }, {&kBaselineD8, &kBaselineD16, &kBaselineD32}};
const KernelSet kAvx2Kernels = {"avx2", HasAvx2, {&kAvx2D8, &kAvx2D16, &kAvx2D32}};

bool IsForBlocks(int32_t width, int32_t height) {
    constexpr int32_t kMinWidth = 32;
    constexpr int32_t kMaxSide = INT32_MAX - 1024;
    return width >= kMinWidth && width <= kMaxSide && height >= 1 && height <= kMaxSide;
}

const KernelSet& FastestKernels(int32_t width, int32_t height) {
    static const bool hasAvx2 = kAvx2Kernels.runsHere();
    if (!IsForBlocks(width, height)) return kPlainKernels;
    return hasAvx2 ? kAvx2Kernels : kBaselineKernels;
}

}  // namespace stairmelt
