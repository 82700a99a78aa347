// Reads PNG, TIFF and JPEG files and writes PNG and TIFF files, with libpng, libtiff and libjpeg-turbo. Pictures aren't
// premultiplied, rotated or colour-managed, and a TIFF keeps its compression if that is lossless. Functions throw
// ToolError.
#pragma once

#include <filesystem>
#include <limits>
#include <span>

#include "tools/pictures/picture.h"

namespace stairmelt {

enum class FileKind { kPng, kTiff };  // the formats that can be written

// Reads a picture from a file's bytes; the first ones identify the format. Refuses pictures with more than `maxSamples`
// bytes of samples.
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
