// An image buffer with padded rows and guard zones around it, for proving that nothing outside the pixels is touched.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "engine/image.h"

namespace stairmelt {

class GuardedImage {
public:
    // Rows are `padding` bytes longer than their pixels need. `pixels` are tightly packed.
    GuardedImage(int width, int height, int pixelBytes, int padding, const std::vector<uint8_t>& pixels)
        : rowBytes(static_cast<size_t>(width) * static_cast<size_t>(pixelBytes)),
          stride(rowBytes + static_cast<size_t>(padding)),
          rows(static_cast<size_t>(height)),
          memory(2 * kGuard + stride * rows, kFill) {
        for (size_t y = 0; y < rows; ++y) {
            if (rowBytes > 0) std::memcpy(Row(y), pixels.data() + y * rowBytes, rowBytes);
        }
        view = {width, height, memory.data() + kGuard, static_cast<int32_t>(stride)};
    }
    GuardedImage(const GuardedImage&) = delete;
    GuardedImage& operator=(const GuardedImage&) = delete;

    std::vector<uint8_t> Pixels() {
        std::vector<uint8_t> pixels;
        for (size_t y = 0; y < rows; ++y) pixels.insert(pixels.end(), Row(y), Row(y) + rowBytes);
        return pixels;
    }

    // Names the first byte outside the pixels that has changed; empty if none has.
    std::string StrayWrite() {
        std::vector<bool> isPixel(memory.size());
        for (size_t y = 0; y < rows; ++y) {
            for (size_t i = 0; i < rowBytes; ++i) isPixel[kGuard + y * stride + i] = true;
        }
        for (size_t i = 0; i < memory.size(); ++i) {
            if (!isPixel[i] && memory[i] != kFill) return "stray write at byte " + std::to_string(i);
        }
        return {};
    }

    ImageView view{};

private:
    static constexpr size_t kGuard = 256;
    static constexpr uint8_t kFill = 0xA5;

    uint8_t* Row(size_t y) { return memory.data() + kGuard + y * stride; }

    size_t rowBytes, stride, rows;
    std::vector<uint8_t> memory;
};

}  // namespace stairmelt
