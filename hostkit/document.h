// The document that a fake host has open.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "host/filter_api.h"

namespace stairmelt {

struct FakeDocument {
    int32_t width = 0;  // pixels
    int32_t height = 0;
    int16_t imageMode = kModeRGBColor;
    int16_t planes = 3;              // samples per pixel, transparency included
    int32_t depth = 8;               // bits per sample; a depth below 8 takes a byte per sample
    bool hasTransparency = false;    // the image is a layer whose last plane is its transparency
    std::optional<VRect> selection;  // within the image; the filter's result is kept inside it
    bool isFloating = false;         // the selection floats; the filter gets its mask with every delivery
    std::vector<uint8_t> source;     // interleaved samples, rows tightly packed; the filter's input
    std::vector<uint8_t> result;     // the same with the filter's output; equal to the source after a failed run

    int32_t SampleBytes() const { return depth >= 8 ? depth / 8 : 1; }
    size_t PixelBytes() const {
        return static_cast<size_t>(planes > 0 ? planes : 0) * static_cast<size_t>(SampleBytes());
    }
    size_t RowBytes() const { return static_cast<size_t>(width) * PixelBytes(); }
    VRect Bounds() const { return {0, 0, height, width}; }
    bool IsBig() const { return width > 32767 || height > 32767; }  // beyond the 16-bit coordinates
};

// Fills in the record's size, mode, depth and planes, and both forms of its coordinates. Requests nothing.
void DescribeDocument(const FakeDocument& document, FilterRecord& record, BigDocumentStruct& big);

}  // namespace stairmelt
