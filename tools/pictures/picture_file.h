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

// Reads a picture from a file's bytes, of which the first identify the format. Refuses pictures with more than
// `maxSamples` bytes of samples.
Picture DecodePicture(std::span<const uint8_t> file, size_t maxSamples = std::numeric_limits<size_t>::max());

Picture ReadPicture(const std::filesystem::path& path);

// True if the file is a JPEG with four inks, which PNG can't hold. False if it can't be read.
bool IsCmykJpeg(const std::filesystem::path& path);

// The file format for a name's extension.
FileKind KindToWrite(const std::filesystem::path& path);

// Throws if the format can't hold the picture; call it before any other work.
void RequireWritable(const Picture& picture, FileKind kind);

// The whole file.
Bytes EncodePicture(const Picture& picture, FileKind kind);

}  // namespace stairmelt
