#include "tools/pictures/image_file.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tools/file_bytes.h"
#include "tools/pictures/jpeg_profile.h"
#include "tools/pictures/png_chunks.h"
#include "tools/pictures/tiff_bytes.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

std::optional<FileKind> KindByContent(const Bytes& file) {
    using namespace std::string_view_literals;
    const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
    if (text.starts_with("\x89PNG\r\n\x1A\n")) return FileKind::kPng;
    if (text.starts_with("II\x2A\0"sv) || text.starts_with("MM\0\x2A"sv)) return FileKind::kTiff;
    if (text.starts_with("BM")) return FileKind::kBmp;
    if (text.starts_with("\xFF\xD8\xFF")) return FileKind::kJpeg;
    return std::nullopt;
}

void Decode(FileKind kind, const Bytes& file, Picture& picture) {
    const CodecImage image = DecodeImage(kind, file);
    UnpackPixels(image, picture);
    if (kind == FileKind::kTiff) return;  // its tags have told more exactly
    picture.dpiX = image.dpiX;
    picture.dpiY = image.dpiY;
    picture.profile = image.profile;
}

void ReadPng(const Bytes& file, Picture& picture) {
    PngFacts facts = ReadPngFacts(file);
    Decode(FileKind::kPng, file, picture);
    RestorePngChannels(facts, picture);
    picture.dpiX = facts.dpiX;
    picture.dpiY = facts.dpiY;
    picture.pngColorChunks = std::move(facts.colorChunks);
}

void ReadTiff(Bytes& file, Picture& picture) {
    TiffByteLayout layout;
    if (PresentTiffAsBytes(file, picture, layout)) {
        CodecImage bytes = DecodeImage(FileKind::kTiff, file);
        const bool asPresented = bytes.layout == PixelLayout::kGray8 && bytes.height == picture.height &&
                                 static_cast<size_t>(bytes.width) == picture.RowBytes();
        if (!asPresented) throw ToolError("this system's TIFF decoder doesn't give plain bytes");
        picture.samples = std::move(bytes.rows);
        FinishTiffSamples(picture, layout);
    } else {
        Decode(FileKind::kTiff, file, picture);
    }
}

// The picture's rows as gray of one byte per pixel, which every codec understands.
CodecImage AsBytes(const Picture& picture) {
    CodecImage image;
    image.width = static_cast<int32_t>(picture.RowBytes());
    image.height = picture.height;
    image.layout = PixelLayout::kGray8;
    image.rows = picture.samples;
    return image;
}

// Codecs have no pixel format for gray with alpha, and not every system's puts 16-bit samples into the PNG's byte
// order.
bool GoesIntoPngAsBytes(const Picture& picture) {
    return picture.depth == 16 || (picture.colors == 1 && picture.hasAlpha);
}

CodecImage ForPng(const Picture& picture) {
    if (GoesIntoPngAsBytes(picture)) {
        CodecImage image = AsBytes(picture);
        if (picture.depth == 16) {
            for (size_t at = 0; at < image.rows.size(); at += 2) std::swap(image.rows[at], image.rows[at + 1]);
        }
        return image;
    }
    CodecImage image;
    image.width = picture.width;
    image.height = picture.height;
    image.layout = picture.colors == 1 ? PixelLayout::kGray8
                   : picture.hasAlpha  ? PixelLayout::kBgra32
                                       : PixelLayout::kBgr24;
    image.rows = PackPixels(picture, image.layout);
    return image;
}

// Gray in a BMP is a palette.
CodecImage ForBmp(const Picture& picture) {
    CodecImage image;
    image.width = picture.width;
    image.height = picture.height;
    image.layout = picture.colors == 1 ? PixelLayout::kIndexed8 : PixelLayout::kBgr24;
    if (picture.colors == 1) {
        for (uint32_t gray = 0; gray < 256; ++gray) image.palette.push_back(0xFF000000 | gray * 0x010101);
    }
    image.rows = PackPixels(picture, image.layout);
    image.dpiX = picture.dpiX;
    image.dpiY = picture.dpiY;
    return image;
}

}  // namespace

Picture ReadPicture(const std::filesystem::path& path) {
    Bytes file = LoadFile(path);
    const std::optional<FileKind> kind = KindByContent(file);
    if (!kind) throw ToolError("not a PNG, TIFF, BMP or JPEG file");
    Picture picture;
    switch (*kind) {
        case FileKind::kPng: ReadPng(file, picture); break;
        case FileKind::kTiff: ReadTiff(file, picture); break;
        case FileKind::kBmp: Decode(*kind, file, picture); break;
        case FileKind::kJpeg:
            Decode(*kind, file, picture);
            if (picture.profile.empty()) picture.profile = ReadJpegProfile(file);
            break;
    }
    return picture;
}

FileKind KindToWrite(const std::filesystem::path& path) {
    std::u8string extension = path.extension().u8string();
    std::ranges::transform(extension, extension.begin(),
                           [](char8_t c) { return c >= u8'A' && c <= u8'Z' ? static_cast<char8_t>(c + 32) : c; });
    if (extension == u8".png") return FileKind::kPng;
    if (extension == u8".tif" || extension == u8".tiff") return FileKind::kTiff;
    if (extension == u8".bmp") return FileKind::kBmp;
    throw ToolError("can only be written as .png, .tif, .tiff or .bmp");
}

void RequireWritable(const Picture& picture, FileKind kind) {
    if (kind == FileKind::kTiff) return;
    const std::string name = kind == FileKind::kPng ? "PNG" : "BMP";
    if (picture.colors == 4) throw ToolError("a " + name + " file can't hold CMYK; a TIFF file can");
    if (picture.depth == 32) throw ToolError("a " + name + " file can't hold 32 bits per channel; a TIFF file can");
    if (kind == FileKind::kPng) return;
    if (picture.depth == 16) throw ToolError("a BMP file can't hold 16 bits per channel; PNG and TIFF files can");
    // Some encoders could, but few programs would take the fourth byte for what it is.
    if (picture.hasAlpha) throw ToolError("a BMP file can't hold transparency; PNG and TIFF files can");
}

Bytes EncodePicture(const Picture& picture, FileKind kind) {
    switch (kind) {
        case FileKind::kPng: return DressPng(EncodeImage(kind, ForPng(picture), GoesIntoPngAsBytes(picture)), picture);
        case FileKind::kTiff: {
            Bytes file = EncodeImage(kind, AsBytes(picture));
            DescribeTiff(file, picture);
            return file;
        }
        default: return EncodeImage(FileKind::kBmp, ForBmp(picture));
    }
}

}  // namespace stairmelt
