// A picture as the tool holds it between reading and writing, with what the file says about it. Samples have the file's
// full range here (16 bits: 0..65535) and CMYK counts ink; what the host expects is a matter of host_samples.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/byte_order.h"
#include "tools/pictures/exif.h"

namespace stairmelt {

struct Picture {
    int32_t width = 0;      // pixels, at least 1
    int32_t height = 0;     // rows, at least 1
    int colors = 0;         // 1 gray, 3 red green blue, 4 cyan magenta yellow black
    bool hasAlpha = false;  // an opacity sample follows the colours of each pixel; colours aren't multiplied by it
    int depth = 0;          // bits in a sample: 8, 16, or 32 for a float with white at 1
    Bytes samples;          // interleaved, row after row without padding, in the machine's byte order

    double dpiX = 0;            // pixels per inch; 0 where the file doesn't say
    double dpiY = 0;            //
    uint16_t orientation = 1;   // as in TIFF: 1 upright, 2..8 turned or mirrored
    Bytes profile;              // ICC profile; empty where the file has none
    Bytes xmp;                  // XMP packet; likewise
    Exif exif;                  // without the orientation
    std::vector<Bytes> chunks;  // a PNG's chunks about colours and with texts, type and data, for another PNG
    uint16_t compression = 1;   // a TIFF's, for another TIFF; 1 for none
    uint16_t predictor = 1;     // likewise
    bool morePages = false;     // the file holds further pictures, which aren't read

    // Texts about the picture in UTF-8, by the keywords of PNG.
    struct Text {
        std::string keyword, text;
    };
    std::vector<Text> texts;

    size_t SamplesPerPixel() const { return static_cast<size_t>(colors) + (hasAlpha ? 1 : 0); }
    size_t PixelBytes() const { return SamplesPerPixel() * static_cast<size_t>(depth / 8); }
    size_t RowBytes() const { return PixelBytes() * static_cast<size_t>(width); }
};

}  // namespace stairmelt
