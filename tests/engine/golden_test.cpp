// Small pictures with the exact result that is expected for them, 14 for each format.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

#include "engine/kernel_sets.h"
#include "tests/support/guarded_image.h"
#include "tests/support/kernel_list.h"

namespace stairmelt {

namespace {

struct GoldenHeader {
    int32_t channels, depth, extra, colorThreshold, softness, bias, width, height;
};

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// Names the first pixel that differs, with the bytes of both; empty if none does.
std::string FirstDifference(const std::vector<uint8_t>& wanted, const std::vector<uint8_t>& got, int width,
                            int pixelBytes) {
    for (size_t i = 0; i < wanted.size(); ++i) {
        if (wanted[i] == got[i]) continue;
        const int pixel = static_cast<int>(i) / pixelBytes;
        return "pixel (" + std::to_string(pixel % width) + ", " + std::to_string(pixel / width) + ") byte " +
               std::to_string(static_cast<int>(i) % pixelBytes) + ": wanted " + std::to_string(wanted[i]) + ", got " +
               std::to_string(got[i]);
    }
    return {};
}

int RunGoldenFile(const KernelCase& format, const KernelSet& set) {
    const std::string path = "golden/" + format.FileName() + ".cases";
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    if (!file) return 0;
    char magic[4];
    if (std::fread(magic, 1, 4, file.get()) != 4 || std::string(magic, 4) != "SMC1") return 0;
    int cases = 0;
    for (GoldenHeader h; std::fread(&h, sizeof h, 1, file.get()) == 1; ++cases) {
        EXPECT_EQ(MakeKernelKey(static_cast<uint32_t>(h.channels), static_cast<uint32_t>(h.depth),
                                static_cast<uint32_t>(h.extra)),
                  format.Key());
        const size_t size = static_cast<size_t>(h.width * h.height * format.PixelBytes());
        std::vector<uint8_t> given(size), wanted(size);
        if (std::fread(given.data(), 1, size, file.get()) != size) return 0;
        if (std::fread(wanted.data(), 1, size, file.get()) != size) return 0;
        GuardedImage source(h.width, h.height, format.PixelBytes(), 0, given);
        GuardedImage destination(h.width, h.height, format.PixelBytes(), 0, given);
        const KernelJob job = {h.colorThreshold,  h.softness, h.bias, nullptr, format.Key(), &source.view,
                               &destination.view, 0,          0,      h.width, h.height};
        EXPECT_EQ(set.Get(format.channels, format.depth, format.extra)(job), kKernelDone);
        EXPECT_EQ(FirstDifference(wanted, destination.Pixels(), h.width, format.PixelBytes()), "")
            << set.name << " " << path << " case " << cases << ", threshold " << h.colorThreshold << ", softness "
            << h.softness << ", bias " << h.bias;
    }
    return cases;
}

}  // namespace

TEST(Golden, EveryCaseOfEveryFormatIsExact) {
    for (const KernelSet* set : {&kPlainKernels, &kBaselineKernels, &kAvx2Kernels}) {
        if (!set->runsHere()) continue;
        for (const KernelCase& format : kAllKernels) EXPECT_EQ(RunGoldenFile(format, *set), 14) << format.name;
    }
}

}  // namespace stairmelt
