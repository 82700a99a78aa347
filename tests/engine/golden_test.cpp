// Small pictures with the exact result that is expected for them, 14 for each format.
#include <cstdio>
#include <memory>

#include "tests/engine/run_kernel.h"

namespace stairmelt {

namespace {

struct GoldenHeader {
    int32_t channels, depth, extra;
    Values values;
    int32_t width, height;
};

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// Returns the number of cases in the format's file.
int RunGoldenFile(const KernelCase& format, const KernelSet& set) {
    const std::string path = "golden/" + format.FileName() + ".cases";
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    char magic[5] = {};
    if (!file || std::fread(magic, 1, 4, file.get()) != 4 || std::string(magic) != "SMC1") return 0;
    WrongResults wrong;
    bool isChecked = true;
    int cases = 0;
    for (GoldenHeader h; std::fread(&h, sizeof h, 1, file.get()) == 1; ++cases) {
        const size_t size = static_cast<size_t>(h.width * h.height * format.PixelBytes());
        std::vector<uint8_t> given(size), wanted(size);
        if (std::fread(given.data(), 1, size, file.get()) != size) return 0;
        if (std::fread(wanted.data(), 1, size, file.get()) != size) return 0;
        if (!isChecked) continue;
        const std::vector<uint8_t> got =
            Smooth(format, KernelOf(set, format), {h.width, h.height, given}, h.values, {0, 0});
        isChecked = wrong.Check(FirstDifference(format, h.width, wanted, got), [&] {
            return std::string(set.name) + " " + path + " case " + std::to_string(cases) + ", threshold " +
                   std::to_string(h.values.colorThreshold) + ", softness " + std::to_string(h.values.softness) +
                   ", bias " + std::to_string(h.values.bias);
        });
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
