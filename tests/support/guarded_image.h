// An image in memory that shows what a kernel touches beside its pixels.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "engine/image.h"
#include "tests/support/kernel_list.h"

namespace stairmelt {

// Where the rows lie, in bytes. Without a tail the memory ends with the last pixel: the address sanitizer reports an
// access behind it.
struct ImageLayout {
    int lead = 256;   // guard before the first row
    int tail = 256;   // guard behind the last row's pixels
    int padding = 0;  // between a row's pixels and the next row
    bool isBottomUp = false;
    uint8_t fill = 0xA5;  // of guards and padding
};

class GuardedImage {
public:
    // Takes tightly packed pixels. An image with a side below 1 has no rows.
    GuardedImage(const KernelCase& format, int32_t width, int32_t height, const std::vector<uint8_t>& pixels,
                 const ImageLayout& imageLayout = {})
        : layout(imageLayout) {
        if (width > 0 && height > 0) {
            rows = static_cast<size_t>(height);
            rowBytes = static_cast<size_t>(width) * static_cast<size_t>(format.PixelBytes());
            stride = rowBytes + static_cast<size_t>(layout.padding);
        }
        const size_t size = rows == 0 ? 0 : (rows - 1) * stride + rowBytes;
        memory = std::vector<uint8_t>(static_cast<size_t>(layout.lead + layout.tail) + size, layout.fill);
        for (size_t y = 0; y < rows; ++y) std::memcpy(Row(memory, y), pixels.data() + y * rowBytes, rowBytes);
        atFirst = memory;
        const int32_t step = static_cast<int32_t>(stride);
        view = {width, height, Row(memory, 0), layout.isBottomUp ? -step : step};
    }
    GuardedImage(const GuardedImage&) = delete;
    GuardedImage& operator=(const GuardedImage&) = delete;

    std::vector<uint8_t> Pixels() {
        std::vector<uint8_t> pixels(rows * rowBytes);
        for (size_t y = 0; y < rows; ++y) std::memcpy(pixels.data() + y * rowBytes, Row(memory, y), rowBytes);
        return pixels;
    }

    bool IsUntouched() const { return memory == atFirst; }

    // Whether nothing but pixels has changed.
    bool AreGuardsUntouched() {
        std::vector<uint8_t> expected = atFirst;
        for (size_t y = 0; y < rows; ++y) std::memcpy(Row(expected, y), Row(memory, y), rowBytes);
        return memory == expected;
    }

    ImageView view{};

private:
    uint8_t* Row(std::vector<uint8_t>& bytes, size_t y) const {
        return bytes.data() + layout.lead + (layout.isBottomUp && rows > 0 ? rows - 1 - y : y) * stride;
    }

    const ImageLayout layout;
    size_t rows = 0, rowBytes = 0, stride = 0;
    std::vector<uint8_t> memory, atFirst;
};

}  // namespace stairmelt
