// The 24 kernels with their formats, for tests that drive them all through one check.
#pragma once

#include <cstdint>
#include <string>

#include "engine/smooth_kernel.h"

namespace stairmelt {

struct KernelCase {
    const char* name;
    int channels, depth, extra;
    Kernel kernel;

    KernelKey Key() const {
        return MakeKernelKey(static_cast<uint32_t>(channels), static_cast<uint32_t>(depth),
                             static_cast<uint32_t>(extra));
    }
    int SampleBytes() const { return depth / 8; }
    int PixelBytes() const { return (channels + extra) * SampleBytes(); }
    // The golden file's name for the format: "c3d16a".
    std::string FileName() const {
        return "c" + std::to_string(channels) + "d" + std::to_string(depth) + (extra != 0 ? "a" : "");
    }
};

constexpr KernelCase kAllKernels[] = {
    {"C1D8", 1, 8, 0, SmoothC1D8},      {"C1D8A", 1, 8, 1, SmoothC1D8A},    {"C2D8", 2, 8, 0, SmoothC2D8},
    {"C2D8A", 2, 8, 1, SmoothC2D8A},    {"C3D8", 3, 8, 0, SmoothC3D8},      {"C3D8A", 3, 8, 1, SmoothC3D8A},
    {"C4D8", 4, 8, 0, SmoothC4D8},      {"C4D8A", 4, 8, 1, SmoothC4D8A},    {"C1D16", 1, 16, 0, SmoothC1D16},
    {"C1D16A", 1, 16, 1, SmoothC1D16A}, {"C2D16", 2, 16, 0, SmoothC2D16},   {"C2D16A", 2, 16, 1, SmoothC2D16A},
    {"C3D16", 3, 16, 0, SmoothC3D16},   {"C3D16A", 3, 16, 1, SmoothC3D16A}, {"C4D16", 4, 16, 0, SmoothC4D16},
    {"C4D16A", 4, 16, 1, SmoothC4D16A}, {"C1D32", 1, 32, 0, SmoothC1D32},   {"C1D32A", 1, 32, 1, SmoothC1D32A},
    {"C2D32", 2, 32, 0, SmoothC2D32},   {"C2D32A", 2, 32, 1, SmoothC2D32A}, {"C3D32", 3, 32, 0, SmoothC3D32},
    {"C3D32A", 3, 32, 1, SmoothC3D32A}, {"C4D32", 4, 32, 0, SmoothC4D32},   {"C4D32A", 4, 32, 1, SmoothC4D32A},
};

}  // namespace stairmelt
