// TIFF pictures as plain bytes. The system's TIFF codec differs from system to system in the pixels that it
// understands: one has no gray with alpha, another no 16-bit gray to write, none all of CMYK and floats. Every codec
// understands 8-bit gray. So a picture is shown to it, and taken from it, as gray of one byte per pixel and RowBytes()
// wide: it does the strips, tiles and compression, and the tags here say what the bytes are.
#pragma once

#include <span>

#include "tools/pictures/picture.h"
#include "tools/pictures/tiff_directory.h"

namespace stairmelt {

// How the bytes of a picture become samples, once the codec has unpacked them.
struct TiffByteLayout {
    bool bigEndian = false;
    bool whiteIsZero = false;  // gray counts ink
    bool differences = false;  // samples hold the difference from the pixel before
    size_t segmentPixels = 0;  // differences start afresh after so many pixels: width of the picture, or of a tile
};

// Fills in all of `picture` but its samples, and presents `file` as bytes. False, with `file` unchanged, when the
// picture is of a kind whose bytes aren't its samples: palettes, less than 8 bits, compression that knows of pixels Its
// resolution, profile and page count are filled in all the same. Throws ToolError for what can't be filtered:
// premultiplied or several extra channels, channels kept apart, signed samples, and samples that aren't in the file.
bool PresentTiffAsBytes(Bytes& file, Picture& picture, TiffByteLayout& layout);

// Turns picture.samples from the bytes of the file into samples, in place.
void FinishTiffSamples(Picture& picture, const TiffByteLayout& layout);

// Gives `encoded`, which the codec has written from picture.samples as bytes, the picture's tags. The samples are in
// the machine's byte order, which is the order of the file too: an encoder that chose the other one is turned down.
void DescribeTiff(Bytes& encoded, const Picture& picture);

}  // namespace stairmelt
