// The 24 pixel formats: the kernels of each, and pictures in it.
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
    std::string name;  // "C3D8A": colour channels, bits of a sample, A for an opacity sample
    int pixelBytes;
    std::vector<KernelForm> forms;  // the named kernel comes first

    // Converts the canvas to this format, rows without padding. Gray and black are luminances, a second channel is
    // blue, and four channels are inks. Paper is transparent, everything else opaque.
    std::vector<uint8_t> (*convert)(const Canvas& canvas);

    // Share of the pixels that have flag R or D at the benchmark's threshold, 0..1.
    double (*flaggedShare)(const ImageView& image);
};

// By depth, then by channels.
extern const std::vector<BenchFormat> kFormats;

// A format by its name, which has to exist.
const BenchFormat& FindFormat(const std::string& name);

constexpr int32_t kBenchThreshold = 10;

}  // namespace stairmelt
