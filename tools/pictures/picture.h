// A picture as the tool holds it between reading and writing. Samples have the file's full range here (16 bits:
// 0..65535); the host's range is a matter of host_samples.h.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tools/byte_order.h"

namespace stairmelt {

struct Picture {
    int32_t width = 0;      // pixels, at least 1
    int32_t height = 0;     // rows, at least 1
    int colors = 0;         // 1 gray, 3 red green blue, 4 cyan magenta yellow black
    bool hasAlpha = false;  // an opacity sample follows the colours of each pixel; colours aren't multiplied by it
    int depth = 0;          // bits in a sample: 8, 16, or 32 for a float with white at 1
    Bytes samples;          // interleaved, row after row without padding, in the machine's byte order

    double dpiX = 0;         // pixels per inch; 0 where the file doesn't tell
    double dpiY = 0;         //
    Bytes profile;           // ICC profile; empty where the file has none
    Bytes pngColorChunks;    // what a PNG says about its colours (iCCP, sRGB, gAMA ...), whole chunks, for another PNG
    uint16_t rotation = 1;   // a TIFF's orientation tag, for another TIFF: 1 upright, 2..8 turned or mirrored
    bool morePages = false;  // the file holds further pictures, which aren't read

    size_t SamplesPerPixel() const { return static_cast<size_t>(colors) + (hasAlpha ? 1 : 0); }
    size_t PixelBytes() const { return SamplesPerPixel() * static_cast<size_t>(depth / 8); }
    size_t RowBytes() const { return PixelBytes() * static_cast<size_t>(width); }
};

}  // namespace stairmelt
