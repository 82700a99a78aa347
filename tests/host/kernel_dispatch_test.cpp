#include "host/kernel_dispatch.h"

#include <gtest/gtest.h>

#include <set>

#include "host/image_class.h"
#include "tests/support/guarded_image.h"
#include "tests/support/scenes.h"

namespace stairmelt {

namespace {

// Runs a kernel, or DispatchKernel, on a picture of the format.
std::vector<uint8_t> RunKey(const KernelCase& format, Kernel kernel, int32_t* result) {
    SeededRandom random(3);
    const std::vector<uint8_t> pixels = Patchwork(format, 24, 16, random);
    GuardedImage source(24, 16, format.PixelBytes(), 0, pixels), destination(24, 16, format.PixelBytes(), 0, pixels);
    const KernelJob job = {10, 90, 40, nullptr, format.Key(), &source.view, &destination.view, 0, 0, 24, 16};
    *result = kernel(job);
    return destination.Pixels();
}

}  // namespace

TEST(KernelDispatch, EachKeyReachesItsOwnKernel) {
    for (const KernelCase& format : kAllKernels) {
        int32_t result = -1;
        const std::vector<uint8_t> wanted = RunKey(format, format.kernel, &result);
        EXPECT_TRUE(RunKey(format, DispatchKernel, &result) == wanted) << format.name;
        EXPECT_EQ(result, kKernelDone) << format.name;
        // No other kernel of the same pixel size would have passed for it.
        for (const KernelCase& other : kAllKernels) {
            if (other.kernel == format.kernel || other.PixelBytes() != format.PixelBytes()) continue;
            EXPECT_FALSE(RunKey(format, other.kernel, &result) == wanted) << format.name << " by " << other.name;
        }
    }
}

TEST(KernelDispatch, OtherKeysRunNothing) {
    std::set<KernelKey> keys;
    for (const KernelCase& format : kAllKernels) keys.insert(format.Key());
    const auto refuses = [&](KernelKey key) {
        if (keys.count(key) != 0) return true;
        return DispatchKernel({10, 70, 0, nullptr, key, nullptr, nullptr, 0, 0, 0, 0}) == kKernelParameterError;
    };
    EXPECT_TRUE(refuses(kUnservedImage));
    for (const KernelKey key : keys) {
        for (int bit = 0; bit < 32; ++bit) EXPECT_TRUE(refuses(key ^ (1u << bit))) << key << " bit " << bit;
    }
}

}  // namespace stairmelt
