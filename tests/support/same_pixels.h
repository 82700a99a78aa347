// Compares pixels that have to be the same.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/kernel_list.h"

namespace stairmelt {

// Sample number `index` of tightly packed pixels.
inline double SampleAt(const KernelCase& format, const std::vector<uint8_t>& pixels, size_t index) {
    const uint8_t* const at = pixels.data() + index * static_cast<size_t>(format.SampleBytes());
    const auto read = [at](auto sample) {
        std::memcpy(&sample, at, sizeof sample);
        return static_cast<double>(sample);
    };
    if (format.depth == 8) return read(uint8_t{});
    return format.depth == 16 ? read(uint16_t{}) : read(float{});
}

// Describes the first sample that differs; empty if none does. Both are tightly packed and of one size. Where a float
// isn't a number, any such value is accepted.
inline std::string FirstDifference(const KernelCase& format, int32_t width, const std::vector<uint8_t>& wanted,
                                   const std::vector<uint8_t>& got) {
    if (wanted == got) return {};
    const size_t sampleBytes = static_cast<size_t>(format.SampleBytes());
    for (size_t i = 0; i < wanted.size() / sampleBytes; ++i) {
        if (std::memcmp(&wanted[i * sampleBytes], &got[i * sampleBytes], sampleBytes) == 0) continue;
        const double a = SampleAt(format, wanted, i), b = SampleAt(format, got, i);
        if (a != a && b != b) continue;
        const int samples = format.channels + format.extra, pixel = static_cast<int>(i) / samples;
        char text[100];
        std::snprintf(text, sizeof text, "pixel (%d, %d) sample %d: wanted %.9g, got %.9g", pixel % width,
                      pixel / width, static_cast<int>(i) % samples, a, b);
        return text;
    }
    return {};
}

}  // namespace stairmelt
