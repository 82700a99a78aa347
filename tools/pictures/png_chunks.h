// What the system's PNG codec doesn't carry: the colour type as the file has it, a transparent colour, the exact
// resolution, the colour chunks, and pictures of gray with alpha, which no pixel format of the codec describes.
#pragma once

#include <array>
#include <optional>
#include <span>

#include "tools/byte_order.h"
#include "tools/pictures/picture.h"

namespace stairmelt {

struct PngFacts {
    uint8_t bitDepth = 0;                             // 1, 2, 4, 8 or 16
    bool isGray = false;                              // colour type 0 or 4
    bool hasAlpha = false;                            // colour type 4 or 6
    std::optional<std::array<uint16_t, 3>> colorKey;  // transparent colour, at bitDepth; gray has it three times
    double dpiX = 0, dpiY = 0;                        // 0 where the file gives none, or only a shape
    Bytes colorChunks;                                // iCCP, sRGB, gAMA, cHRM and cICP, whole
};

// Reads the facts of a PNG file. Throws ToolError when the chunks don't hang together.
PngFacts ReadPngFacts(std::span<const uint8_t> file);

// Takes the pixels of `encoded`, a PNG fresh from the codec, and dresses them with the picture's resolution and
// colours. The header is made to say what the picture is: a picture whose kind the codec can't write has been encoded
// as gray of one byte per pixel, as wide as its rows have bytes and with no row filter, and the bytes of its rows are
// then the same.
Bytes DressPng(std::span<const uint8_t> encoded, const Picture& picture);

}  // namespace stairmelt
