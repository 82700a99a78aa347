#include "tools/pictures/picture_file.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "tools/file_bytes.h"
#include "tools/pictures/codecs.h"
#include "tools/pictures/exif.h"
#include "tools/tool_error.h"

namespace stairmelt {

using namespace std::string_view_literals;

void ThrowDamaged(const std::string& why) { throw ToolError("the file is damaged: " + why); }

void AllocateSamples(size_t fileSize, size_t maxSamples, Picture& picture) {
    // No format compresses a picture this large any better; smaller ones may be blank.
    constexpr size_t kLarge = size_t{1} << 30, kMaxRatio = 4096;
    const auto rows = static_cast<size_t>(picture.height);
    if (picture.RowBytes() > maxSamples / rows) throw std::bad_alloc();
    const size_t size = picture.RowBytes() * rows;
    if (size > kLarge && size / kMaxRatio > fileSize) ThrowDamaged("it is too short for the picture's size");
    picture.samples.resize(size);
}

void SetOrientation(uint32_t orientation, Picture& picture) {
    if (orientation >= 1 && orientation <= 8) picture.orientation = static_cast<uint16_t>(orientation);
}

void SetExif(std::span<const uint8_t> block, Picture& picture) {
    const ExifReader exif(block);
    if (exif.IsEmpty()) return;
    picture.exif.assign(block.begin(), block.end());
    picture.orientation = 1;
    SetOrientation(exif.Number(kOrientationTag), picture);
}

size_t LibraryFile::Read(uint8_t* to, size_t size) {
    size = at < input.size() ? std::min(size, input.size() - at) : 0;
    std::copy_n(input.begin() + static_cast<ptrdiff_t>(size == 0 ? 0 : at), size, to);
    at += size;
    return size;
}

size_t LibraryFile::Write(const uint8_t* from, size_t size) {
    try {
        if (at + size > output.size()) output.resize(at + size);
    } catch (const std::exception&) {
        isMemoryShort = true;
        return 0;
    }
    std::copy_n(from, size, &output[at]);
    at += size;
    return size;
}

void LibraryFile::Report(const char* text) {
    if (message[0] == '\0') std::snprintf(message.data(), message.size(), "%s", text);
}

void LibraryFile::Leave(const char* text) {
    Report(text);
    std::longjmp(jump, 1);  // NOLINT(cert-err52-cpp)
}

void LibraryFile::Throw() const {
    if (isMemoryShort) throw std::bad_alloc();
    if (input.empty()) throw ToolError(std::string("can't be written: ") + message.data());
    ThrowDamaged(message.data());
}

Picture DecodePicture(std::span<const uint8_t> file, size_t maxSamples) {
    const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
    const auto begins = [&](std::string_view signature) { return text.starts_with(signature); };
    Picture picture;
    if (begins("\x89PNG\r\n\x1A\n"))
        ReadPng(file, maxSamples, picture);
    else if (begins("II\x2A\0"sv) || begins("MM\0\x2A"sv) || begins("II\x2B\0"sv) || begins("MM\0\x2B"sv))
        ReadTiff(file, maxSamples, picture);
    else if (begins("\xFF\xD8\xFF"))
        ReadJpeg(file, maxSamples, picture);
    else
        throw ToolError("not a PNG, TIFF or JPEG file");
    return picture;
}

Picture ReadPicture(const std::filesystem::path& path) { return DecodePicture(LoadFile(path)); }

FileKind KindToWrite(const std::filesystem::path& path) {
    std::u8string extension = path.extension().u8string();
    std::ranges::transform(extension, extension.begin(),
                           [](char8_t c) { return c >= u8'A' && c <= u8'Z' ? static_cast<char8_t>(c + 32) : c; });
    if (extension == u8".png") return FileKind::kPng;
    if (extension == u8".tif" || extension == u8".tiff") return FileKind::kTiff;
    throw ToolError("can only be written as .png, .tif or .tiff");
}

void RequireWritable(const Picture& picture, FileKind kind) {
    if (kind == FileKind::kTiff) return;
    if (picture.colors == 4) throw ToolError("a PNG file can't hold CMYK; a TIFF file can");
    if (picture.depth == 32) throw ToolError("a PNG file can't hold 32 bits per channel; a TIFF file can");
}

Bytes EncodePicture(const Picture& picture, FileKind kind) {
    return kind == FileKind::kPng ? WritePng(picture) : WriteTiff(picture);
}

}  // namespace stairmelt
