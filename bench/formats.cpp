#include "bench/formats.h"

#include <array>
#include <cstdlib>
#include <cstring>

#include "engine/kernel_sets.h"
#include "engine/plain/plain_kernel.h"
#include "engine/rules/scan_weights.h"

namespace stairmelt {

namespace {

// Every form that is measured, one per line.
std::vector<KernelForm> FormsOf(int channels, int depth, int extra, Kernel named) {
    return {
        {"fast", named},
        {"baseline", kBaselineKernels.Get(channels, depth, extra)},
        {"plain", kPlainKernels.Get(channels, depth, extra)},
    };
}

// The first `count` are a pixel's colour samples, 0..255.
std::array<int, 4> ColorSamples(const uint8_t* rgb, int count) {
    const int red = rgb[0], green = rgb[1], blue = rgb[2];
    const int luminance = (77 * red + 150 * green + 29 * blue) / 256;
    switch (count) {
        case 1: return {luminance};
        case 2: return {luminance, blue};
        case 3: return {red, green, blue};
        default: return {255 - red, 255 - green, 255 - blue, (255 - luminance) / 2};
    }
}

template <class Format>
typename Format::Sample ScaledSample(int value) {
    if constexpr (Format::kBits == 32) {
        return static_cast<float>(value) / 255.0f;
    } else {
        return static_cast<typename Format::Sample>(value * Format::kOpaque / 255);
    }
}

template <class Format>
std::vector<uint8_t> Convert(const Canvas& canvas) {
    const size_t pixels = static_cast<size_t>(canvas.width) * static_cast<size_t>(canvas.height);
    std::vector<uint8_t> bytes(pixels * Format::kPixelBytes);
    const uint8_t* rgb = canvas.bytes.data();
    uint8_t* at = bytes.data();
    for (size_t i = 0; i < pixels; ++i, rgb += 3, at += Format::kPixelBytes) {
        const std::array<int, 4> colors = ColorSamples(rgb, Format::kChannels);
        typename Format::Pixel pixel;
        for (size_t c = 0; c < Format::kChannels; ++c) pixel[c] = ScaledSample<Format>(colors[c]);
        if constexpr (Format::kExtra == 1) {
            const bool isPaper = canvas.paper && *canvas.paper == Color{rgb[0], rgb[1], rgb[2]};
            pixel[Format::kOpacity] = ScaledSample<Format>(isPaper ? 0 : 255);
        }
        std::memcpy(at, &pixel, Format::kPixelBytes);
    }
    return bytes;
}

template <class Format>
double FlaggedShare(const ImageView& image) {
    EdgeMap map;
    if (!map.Allocate(image.width, image.height)) return 0;
    BuildEdgeMap<Format>(image, DeriveEdgeThreshold<Format>(kBenchThreshold), map);
    int64_t flagged = 0;
    for (int32_t y = 0; y < image.height; ++y) {
        for (int32_t x = 0; x < image.width; ++x) flagged += (*map.CellAt(x, y) & (kFlagR | kFlagD)) != 0;
    }
    return static_cast<double>(flagged) / (static_cast<double>(image.width) * image.height);
}

template <class Depth, int kChannels, int kExtra>
BenchFormat Row(Kernel named) {
    using Format = PixelFormat<Depth, kChannels, kExtra>;
    return {
        "C" + std::to_string(kChannels) + "D" + std::to_string(Format::kBits) + (kExtra != 0 ? "A" : ""),
        Format::kPixelBytes,
        FormsOf(kChannels, Format::kBits, kExtra, named),
        Convert<Format>,
        FlaggedShare<Format>,
    };
}

}  // namespace

const std::vector<BenchFormat> kFormats = {
    Row<Depth8, 1, 0>(SmoothC1D8),    Row<Depth8, 1, 1>(SmoothC1D8A),   Row<Depth8, 2, 0>(SmoothC2D8),
    Row<Depth8, 2, 1>(SmoothC2D8A),   Row<Depth8, 3, 0>(SmoothC3D8),    Row<Depth8, 3, 1>(SmoothC3D8A),
    Row<Depth8, 4, 0>(SmoothC4D8),    Row<Depth8, 4, 1>(SmoothC4D8A),   Row<Depth16, 1, 0>(SmoothC1D16),
    Row<Depth16, 1, 1>(SmoothC1D16A), Row<Depth16, 2, 0>(SmoothC2D16),  Row<Depth16, 2, 1>(SmoothC2D16A),
    Row<Depth16, 3, 0>(SmoothC3D16),  Row<Depth16, 3, 1>(SmoothC3D16A), Row<Depth16, 4, 0>(SmoothC4D16),
    Row<Depth16, 4, 1>(SmoothC4D16A), Row<Depth32, 1, 0>(SmoothC1D32),  Row<Depth32, 1, 1>(SmoothC1D32A),
    Row<Depth32, 2, 0>(SmoothC2D32),  Row<Depth32, 2, 1>(SmoothC2D32A), Row<Depth32, 3, 0>(SmoothC3D32),
    Row<Depth32, 3, 1>(SmoothC3D32A), Row<Depth32, 4, 0>(SmoothC4D32),  Row<Depth32, 4, 1>(SmoothC4D32A),
};

const BenchFormat& FindFormat(const std::string& name) {
    for (const BenchFormat& format : kFormats) {
        if (format.name == name) return format;
    }
    std::abort();
}

}  // namespace stairmelt
