// A picture and its metadata between reading and writing. Samples have the file's full range (16 bits: 0..65535), and
// CMYK samples are amounts of ink; host_samples.h converts them for the host.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/byte_order.h"

namespace stairmelt {

constexpr char kXmpKeyword[] = "XML:com.adobe.xmp";
constexpr double kInchesPerMetre = 1 / 0.0254;

struct Picture {
    int32_t width = 0;      // pixels, at least 1
    int32_t height = 0;     // rows, at least 1
    int colors = 0;         // 1 gray, 3 red green blue, 4 cyan magenta yellow black
    bool hasAlpha = false;  // an opacity sample follows the colours of each pixel; colours aren't premultiplied
    int depth = 0;          // bits per sample: 8, 16, or 32 for a float with white at 1
    Bytes samples{};        // interleaved, row after row without padding, in the machine's byte order

    double dpiX = 0, dpiY = 0;    // pixels per inch; 0 if unknown
    uint16_t orientation = 1;     // as in TIFF: 1 upright, 2..8 rotated or mirrored; the EXIF block's, if it has one
    Bytes profile{};              // ICC profile; empty if there is none
    Bytes exif{};                 // a block as in PNG and JPEG files; empty if there is none
    std::vector<Bytes> chunks{};  // a PNG's chunks about colours, type and data, for writing PNG
    uint16_t compression = 1;     // a TIFF's, for writing TIFF; 1 for none
    uint16_t predictor = 1;       // likewise
    bool morePages = false;       // the file holds more pictures, which aren't read

    // Texts about the picture in UTF-8, by PNG keyword, including an XMP packet.
    struct Text {
        std::string keyword, text;
    };
    std::vector<Text> texts{};

    size_t SamplesPerPixel() const { return static_cast<size_t>(colors) + (hasAlpha ? 1 : 0); }
    size_t PixelBytes() const { return SamplesPerPixel() * static_cast<size_t>(depth / 8); }
    size_t RowBytes() const { return PixelBytes() * static_cast<size_t>(width); }
    uint8_t* Row(size_t y) { return &samples[y * RowBytes()]; }
    const uint8_t* Row(size_t y) const { return &samples[y * RowBytes()]; }
};

}  // namespace stairmelt
