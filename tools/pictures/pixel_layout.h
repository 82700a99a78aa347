// Pixels as the system's codecs lay them out, and the way from there into a Picture and back.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "tools/pictures/picture.h"
#include "tools/pictures/png_chunks.h"

namespace stairmelt {

enum class PixelLayout {
    kGray1,  // less than a byte: first pixel in the top bits
    kGray2,
    kGray4,
    kGray8,
    kGray16,  // two bytes and more: the machine's byte order
    kBgr24,
    kRgb24,
    kBgrx32,  // the fourth byte means nothing
    kBgra32,
    kRgba32,
    kRgb48,
    kRgba64,
    kIndexed1,  // indices into the palette
    kIndexed2,
    kIndexed4,
    kIndexed8,
};

// An image as it comes from a codec or goes to one.
struct CodecImage {
    int32_t width = 0;
    int32_t height = 0;
    PixelLayout layout = PixelLayout::kGray8;
    Bytes rows;                     // row after row; each begins at a new byte, without further padding
    std::vector<uint32_t> palette;  // alpha << 24 | red << 16 | green << 8 | blue; for the indexed layouts
    double dpiX = 0, dpiY = 0;
    Bytes profile;  // empty where there is none, or where the codec doesn't hand it out
};

size_t BitsPerPixel(PixelLayout layout);
size_t RowBytes(PixelLayout layout, int32_t width);

// Fills in size, channels, depth and samples. Gray of less than 8 bits is spread over 0..255. A palette becomes gray
// when all of it is gray, else RGB, and gets alpha when an entry isn't opaque.
void UnpackPixels(const CodecImage& image, Picture& picture);

// Makes of a decoded PNG what the file says it is: gray where the codec gave gray in three channels, and with alpha
// where the file names a transparent colour and the codec left that out. Throws ToolError when the codec has lost bits
// or alpha.
void RestorePngChannels(const PngFacts& facts, Picture& picture);

// The rows of a picture of 8 bits in one of the codecs' layouts; it has the picture's channels.
Bytes PackPixels(const Picture& picture, PixelLayout layout);

}  // namespace stairmelt
