// Seeded pictures for the kernels, in any format.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "tests/support/kernel_list.h"
#include "tests/support/seeded_random.h"

namespace stairmelt {

// Appends a sample of `level` in 0..255, full scale of the depth at 255.
inline void AppendSample(std::vector<uint8_t>& bytes, int depth, int level) {
    const size_t at = bytes.size();
    bytes.resize(at + static_cast<size_t>(depth / 8));
    if (depth == 8) {
        bytes[at] = static_cast<uint8_t>(level);
    } else if (depth == 16) {
        const uint16_t sample = static_cast<uint16_t>(level * 32768 / 255);
        std::memcpy(&bytes[at], &sample, 2);
    } else {
        const float sample = static_cast<float>(level) / 255.0f;
        std::memcpy(&bytes[at], &sample, 4);
    }
}

// A patchwork with hard edges and lone pixels: nearly every pattern turns up in it. Opacity, where the format has it,
// is mostly full, sometimes partial or none. With a step, there are three levels that lie a step apart, so that of
// three pixels only the first and the last may differ.
inline std::vector<uint8_t> Patchwork(const KernelCase& format, int width, int height, SeededRandom& random,
                                      int step = 0) {
    const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
    std::vector<int> level(count), opacity(count, 255);
    const int base = random.Below(256);
    for (int& value : level) value = base;
    const auto fill = [&](std::vector<int>& plane, int value) {
        const int slope = random.Below(7) - 3;
        const int left = random.Below(width + 1) - 1, top = random.Below(height);
        const int w = 1 + random.Below(8), h = 1 + random.Below(8);
        for (int y = top; y < top + h && y < height; ++y) {
            for (int x = left; x < left + w; ++x) {
                const int sx = x + (y - top) * slope / 2;
                if (sx >= 0 && sx < width)
                    plane[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(sx)] = value;
            }
        }
    };
    const int patches = 2 + width * height / 12;
    for (int i = 0; i < patches; ++i) fill(level, step == 0 ? random.Below(256) : base / 2 + step * random.Below(3));
    for (int i = 0; i < patches / 4; ++i) fill(opacity, random.Below(3) * 100);

    std::vector<uint8_t> bytes;
    for (size_t i = 0; i < count; ++i) {
        for (int c = 0; c < format.channels; ++c) AppendSample(bytes, format.depth, (level[i] + c * 31) % 256);
        if (format.extra != 0) AppendSample(bytes, format.depth, opacity[i]);
    }
    return bytes;
}

}  // namespace stairmelt
