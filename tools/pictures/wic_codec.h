// The Windows Imaging Component: files' bytes into images, and images into files' bytes. Nothing is premultiplied,
// scaled or colour-managed on the way. Functions throw ToolError. COM has been initialised by the caller.
#pragma once

#include <span>

#include "tools/pictures/pixel_layout.h"

namespace stairmelt {

enum class FileKind { kPng, kTiff, kBmp, kJpeg };

// The first picture of a file held in memory.
CodecImage DecodeImage(FileKind kind, std::span<const uint8_t> file);

// A whole file. TIFF is stored without compression. PNG rows of `plainRows` get no row filter: their bytes are deflated
// as they are. The image's profile isn't written, since not every system's encoders take one.
Bytes EncodeImage(FileKind kind, const CodecImage& image, bool plainRows = false);

}  // namespace stairmelt
