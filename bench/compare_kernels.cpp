// Compares the kernels of this build with those of another revision, loaded from a shared library:
//
//   compare_kernels LIBRARY [FORMAT...]
//
// Both smooth the same pictures alternately, so that other load on the machine affects both. Each line shows the median
// times in milliseconds per megapixel and the median ratio of neighbouring runs; above 1, this build is faster. If
// results differ, the exit status is 1.
#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "bench/formats.h"
#include "bench/pictures.h"
#include "bench/workplace.h"

namespace stairmelt {

namespace {

constexpr int32_t kWidth = 3000, kHeight = 2000;
constexpr int kRounds = 15;

double MedianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The kernel's name as this platform's compilers mangle it.
Kernel OtherKernel(void* library, const std::string& format) {
    const std::string name = "Smooth" + format;
    const std::string symbol = "_ZN9stairmelt" + std::to_string(name.size()) + name + "ERKNS_9KernelJobE";
    return reinterpret_cast<Kernel>(dlsym(library, symbol.c_str()));
}

bool Compare(const BenchFormat& format, const PictureKind& kind, Kernel other) {
    const Scene scene = {kind.name, kWidth, kHeight, [&](int32_t w, int32_t h) { return DrawPicture(kind, w, h); }};
    Workplace place(scene, format);
    const auto millisecondsOf = [&](Kernel kernel) {
        place.Renew();
        return SecondsOf([&] { kernel(place.Job()); }) * 1e3 / place.Megapixels();
    };
    const ImageView& result = *place.Job().destination;
    const auto pixels = [&] {
        return std::vector<uint8_t>(result.base, result.base + static_cast<ptrdiff_t>(result.rowStride) * kHeight);
    };
    std::vector<double> before, now, ratios;
    for (int round = 0; round < kRounds; ++round) {
        before.push_back(millisecondsOf(other));
        now.push_back(millisecondsOf(format.forms.front().kernel));
        ratios.push_back(before.back() / now.back());
    }
    const std::vector<uint8_t> pixelsNow = pixels();
    millisecondsOf(other);
    const bool isSame = pixelsNow == pixels();
    std::printf("%-6s %-8s %7.2f %7.2f %6.2f%s\n", format.name.c_str(), kind.name, MedianOf(before), MedianOf(now),
                MedianOf(ratios), isSame ? "" : "   results differ");
    std::fflush(stdout);
    return isSame;
}

}  // namespace

}  // namespace stairmelt

int main(int argc, char** argv) {
    using namespace stairmelt;
    void* const library = argc > 1 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : nullptr;
    if (library == nullptr) {
        std::fprintf(stderr, "compare_kernels: cannot load the other kernels: %s\n",
                     argc > 1 ? dlerror() : "no library");
        return 2;
    }
    std::vector<std::string> names(argv + 2, argv + argc);
    if (names.empty()) names = {"C3D8", "C1D8", "C3D16", "C3D8A", "C3D32"};
    std::printf("%-6s %-8s %7s %7s %6s\n", "format", "picture", "before", "now", "ratio");
    bool isSame = true;
    for (const std::string& name : names) {
        const BenchFormat& format = FindFormat(name);
        const Kernel other = OtherKernel(library, name);
        if (other == nullptr) {
            std::fprintf(stderr, "compare_kernels: the other revision has no kernel for %s\n", name.c_str());
            return 2;
        }
        for (const PictureKind& kind : kPictures) isSame &= Compare(format, kind, other);
    }
    return isSame ? 0 : 1;
}
