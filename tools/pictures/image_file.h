// Picture files: PNG, TIFF, BMP and JPEG in; PNG, TIFF and BMP out. The system's codecs do the work; what they can't
// carry is read from and written into the files beside them. Functions throw ToolError. COM has been initialised by the
// caller.
#pragma once

#include <filesystem>

#include "tools/pictures/picture.h"
#include "tools/pictures/wic_codec.h"

namespace stairmelt {

// The picture in a file. The kind is told by the file's first bytes, whatever its name.
Picture ReadPicture(const std::filesystem::path& path);

// The kind of file that a name asks for, by its extension.
FileKind KindToWrite(const std::filesystem::path& path);

// Throws when files of that kind can't hold such a picture; to be asked before any work is done.
void RequireWritable(const Picture& picture, FileKind kind);

// The whole file. Resolution and profile are left out where the kind has no place for them.
Bytes EncodePicture(const Picture& picture, FileKind kind);

}  // namespace stairmelt
