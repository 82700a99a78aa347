// The 24 pixel formats, with their kernels and with pictures in them.
#pragma once

#include <string>
#include <vector>

#include "bench/canvas.h"
#include "engine/smooth_kernel.h"

namespace stairmelt {

// One of the forms of a kernel that are compared with each other.
struct KernelForm {
    const char* name;
    Kernel kernel;
};

struct BenchFormat {
    std::string name;  // "C3D8A": colour channels, bits per sample, A for an opacity sample
    int pixelBytes;
    std::vector<KernelForm> forms;  // the named kernel comes first

    // Converts the canvas to this format, with rows without padding. Gray and black are luminances, a second channel is
    // blue, and four channels are inks. Paper is transparent, everything else opaque.
    std::vector<uint8_t> (*convert)(const Canvas& canvas);

    // The share of pixels with flag R or D at the benchmark's threshold, 0..1.
    double (*flaggedShare)(const ImageView& image);
};

// Sorted by depth, then by channels.
extern const std::vector<BenchFormat> kFormats;

// The format with this name, which has to exist.
const BenchFormat& FindFormat(const std::string& name);

constexpr int32_t kBenchThreshold = 10;

}  // namespace stairmelt
