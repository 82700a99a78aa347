#include "host/kernel_dispatch.h"

#include "engine/smooth_kernel.h"

namespace stairmelt {

namespace {

struct KernelRow {
    KernelKey key;
    Kernel kernel;
};

constexpr KernelRow kKernels[] = {
    {MakeKernelKey(1, 8, 0), SmoothC1D8},   {MakeKernelKey(1, 8, 1), SmoothC1D8A},
    {MakeKernelKey(1, 16, 0), SmoothC1D16}, {MakeKernelKey(1, 16, 1), SmoothC1D16A},
    {MakeKernelKey(1, 32, 0), SmoothC1D32}, {MakeKernelKey(1, 32, 1), SmoothC1D32A},
    {MakeKernelKey(2, 8, 0), SmoothC2D8},   {MakeKernelKey(2, 8, 1), SmoothC2D8A},
    {MakeKernelKey(2, 16, 0), SmoothC2D16}, {MakeKernelKey(2, 16, 1), SmoothC2D16A},
    {MakeKernelKey(2, 32, 0), SmoothC2D32}, {MakeKernelKey(2, 32, 1), SmoothC2D32A},
    {MakeKernelKey(3, 8, 0), SmoothC3D8},   {MakeKernelKey(3, 8, 1), SmoothC3D8A},
    {MakeKernelKey(3, 16, 0), SmoothC3D16}, {MakeKernelKey(3, 16, 1), SmoothC3D16A},
    {MakeKernelKey(3, 32, 0), SmoothC3D32}, {MakeKernelKey(3, 32, 1), SmoothC3D32A},
    {MakeKernelKey(4, 8, 0), SmoothC4D8},   {MakeKernelKey(4, 8, 1), SmoothC4D8A},
    {MakeKernelKey(4, 16, 0), SmoothC4D16}, {MakeKernelKey(4, 16, 1), SmoothC4D16A},
    {MakeKernelKey(4, 32, 0), SmoothC4D32}, {MakeKernelKey(4, 32, 1), SmoothC4D32A},
};

}  // namespace

int32_t DispatchKernel(const KernelJob& job) {
    for (const KernelRow& row : kKernels) {
        if (row.key == job.key) return row.kernel(job);
    }
    return kKernelParameterError;
}

}  // namespace stairmelt
