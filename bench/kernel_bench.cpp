// Megapixels per second of every kernel on a flat, a drawn and a noisy picture, and the ratio to the plain form of the
// edge builder. The two forms run turn by turn on the same picture and the best time of each counts, so that the ratio
// means something on a busy machine. kernel_bench [format name, as C3D8A]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "engine/kernel_frame.h"

namespace stairmelt {

namespace {

constexpr int32_t kWidth = 2000;
constexpr int32_t kHeight = 1500;
constexpr int kRounds = 5;

enum class Scene { kFlat, kDrawn, kNoisy };
constexpr const char* kSceneNames[] = {"flat", "drawn", "noisy"};

// Brightness of a pixel, 0..1. Drawn: lines of several slopes on paper, all hard-edged.
double Brightness(Scene scene, int32_t x, int32_t y, std::mt19937& random) {
    switch (scene) {
        case Scene::kFlat: return 0.5;
        case Scene::kDrawn: return ((x * 3 + y) / 37 & 7) == 0 || ((x - y * 2) / 53 & 15) == 0 ? 0.0 : 1.0;
        case Scene::kNoisy: return static_cast<int>(random() % 256) / 255.0;
    }
    return 0;
}

template <class Format>
std::vector<uint8_t> DrawScene(Scene scene) {
    std::mt19937 random(1);
    std::vector<uint8_t> bytes(static_cast<size_t>(kWidth) * kHeight * Format::kPixelBytes);
    uint8_t* at = bytes.data();
    for (int32_t y = 0; y < kHeight; ++y) {
        for (int32_t x = 0; x < kWidth; ++x, at += Format::kPixelBytes) {
            typename Format::Pixel pixel;
            for (int c = 0; c < Format::kPixelSize; ++c) {
                const double value = c == Format::kOpacity ? 1.0 : Brightness(scene, x, y, random);
                if constexpr (Format::kBits == 32) {
                    pixel[c] = static_cast<float>(value);
                } else {
                    pixel[c] = static_cast<typename Format::Sample>(value * Format::kOpaque);
                }
            }
            Store<Format>(at, pixel);
        }
    }
    return bytes;
}

// Seconds of one run on a fresh copy of the scene.
double Time(int32_t (*kernel)(const KernelJob&), const KernelJob& job, const std::vector<uint8_t>& scene) {
    std::memcpy(job.destination->base, scene.data(), scene.size());
    const auto start = std::chrono::steady_clock::now();
    kernel(job);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

template <class Depth, int kChannels, int kExtra>
void BenchFormat(const std::string& wanted) {
    using Format = PixelFormat<Depth, kChannels, kExtra>;
    const std::string name =
        "C" + std::to_string(kChannels) + "D" + std::to_string(Format::kBits) + (kExtra != 0 ? "A" : "");
    if (!wanted.empty() && wanted != name) return;
    for (const Scene scene : {Scene::kFlat, Scene::kDrawn, Scene::kNoisy}) {
        std::vector<uint8_t> picture = DrawScene<Format>(scene);
        std::vector<uint8_t> result(picture.size());
        const ImageView source = {kWidth, kHeight, picture.data(), kWidth * Format::kPixelBytes};
        const ImageView destination = {kWidth, kHeight, result.data(), kWidth * Format::kPixelBytes};
        const KernelJob job = {10, 70, 0, nullptr, 0, &source, &destination, 0, 0, kWidth, kHeight};
        double plain = 1e9;
        double fast = 1e9;
        for (int round = 0; round < kRounds; ++round) {
            plain = std::min(plain, Time(SmoothKernel<Format, BuildEdgeMapPlain<Format>>, job, picture));
            fast = std::min(fast, Time(SmoothKernel<Format>, job, picture));
        }
        constexpr double kMegapixels = kWidth * kHeight / 1e6;
        std::printf("%-7s %-5s  plain %7.1f MP/s  fast %7.1f MP/s  ratio %5.2f\n", name.c_str(),
                    kSceneNames[static_cast<int>(scene)], kMegapixels / plain, kMegapixels / fast, plain / fast);
    }
}

template <class Depth>
void BenchDepth(const std::string& wanted) {
    BenchFormat<Depth, 1, 0>(wanted);
    BenchFormat<Depth, 1, 1>(wanted);
    BenchFormat<Depth, 2, 0>(wanted);
    BenchFormat<Depth, 2, 1>(wanted);
    BenchFormat<Depth, 3, 0>(wanted);
    BenchFormat<Depth, 3, 1>(wanted);
    BenchFormat<Depth, 4, 0>(wanted);
    BenchFormat<Depth, 4, 1>(wanted);
}

}  // namespace

}  // namespace stairmelt

int main(int argc, char** argv) {
    const std::string wanted = argc > 1 ? argv[1] : "";
    stairmelt::BenchDepth<stairmelt::Depth8>(wanted);
    stairmelt::BenchDepth<stairmelt::Depth16>(wanted);
    stairmelt::BenchDepth<stairmelt::Depth32>(wanted);
    return 0;
}
