// Runs a form of a kernel on a picture, and checks what holds for every picture.
#pragma once

#include <gtest/gtest.h>

#include "engine/kernel_sets.h"
#include "tests/support/guarded_image.h"
#include "tests/support/same_pixels.h"
#include "tests/support/scenes.h"

namespace stairmelt {

struct Values {
    int32_t colorThreshold, softness, bias;
};

struct Picture {
    int32_t width, height;
    std::vector<uint8_t> pixels;  // tightly packed
};

inline std::vector<uint8_t> Smooth(const KernelCase& format, Kernel kernel, const Picture& picture,
                                   const Values& values, const ImageLayout& from = {}, const ImageLayout& to = {}) {
    const auto& [width, height, pixels] = picture;
    GuardedImage source(format, width, height, pixels, from), destination(format, width, height, pixels, to);
    EXPECT_EQ(kernel({values.colorThreshold, values.softness, values.bias, nullptr, format.Key(), &source.view,
                      &destination.view, 0, 0, width, height}),
              kKernelDone);
    EXPECT_TRUE(source.IsUntouched()) << "write into the source";
    EXPECT_TRUE(destination.AreGuardsUntouched()) << "write beside the pixels";
    return destination.Pixels();
}

inline Kernel KernelOf(const KernelSet& set, const KernelCase& format) {
    return set.Get(format.channels, format.depth, format.extra);
}

// Counts the pictures of a format whose result is wrong, of which the first three are reported.
class WrongResults {
public:
    // Returns whether to go on. describe() tells which picture it is.
    template <class Describe>
    bool Check(const std::string& difference, Describe describe) {
        if (difference.empty()) return true;
        ADD_FAILURE() << describe() << ": " << difference;
        return ++count < 3;
    }

private:
    int count = 0;
};

}  // namespace stairmelt
