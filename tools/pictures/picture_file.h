// Picture files: PNG, TIFF and JPEG in, PNG and TIFF out, by libpng, libtiff and libjpeg-turbo. Nothing is
// premultiplied, turned or colour-managed on the way, and a TIFF's compression is kept as far as it is without loss.
// Functions throw ToolError.
#pragma once

#include <filesystem>
#include <limits>
#include <span>

#include "tools/pictures/picture.h"

namespace stairmelt {

enum class FileKind { kPng, kTiff };  // those that are written

// The picture in a file's bytes, whose kind is told by the first of them. A picture with more than `maxSamples` bytes
// of samples is refused.
Picture DecodePicture(std::span<const uint8_t> file, size_t maxSamples = std::numeric_limits<size_t>::max());

Picture ReadPicture(const std::filesystem::path& path);

// Whether the file is a JPEG of four inks, which PNG can't hold. False for what can't be read.
bool IsCmykJpeg(const std::filesystem::path& path);

// The kind of file that a name asks for, by its extension.
FileKind KindToWrite(const std::filesystem::path& path);

// Throws when files of that kind can't hold such a picture; to be asked before any work is done.
void RequireWritable(const Picture& picture, FileKind kind);

// The whole file.
Bytes EncodePicture(const Picture& picture, FileKind kind);

}  // namespace stairmelt
