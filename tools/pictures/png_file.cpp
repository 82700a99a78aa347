// Reads and writes PNG files with libpng. Colour chunks are copied unchanged, since the library would convert or refuse
// some.
#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <new>
#include <string_view>

#include "tools/pictures/codecs.h"
#include "tools/pictures/exif.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

using namespace std::string_view_literals;

// Names of four characters and a zero, as the library takes them. acTL means that the picture is animated.
constexpr char kKeptChunks[] = "iCCP\0sRGB\0gAMA\0cHRM\0cICP\0mDCV\0cLLI\0sBIT\0acTL";
constexpr int kKeptCount = sizeof(kKeptChunks) / 5;

// The library's records, freed by the destructor.
struct PngFile : LibraryFile {
    png_structp png = nullptr;
    png_infop info = nullptr;

    explicit PngFile(std::span<const uint8_t> bytes = {}) : LibraryFile{.input = bytes} {
        Do([&] {
            png = input.empty() ? png_create_write_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning)
                                : png_create_read_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning);
            info = png_create_info_struct(png);  // returns null for null
        });
        if (info == nullptr) throw std::bad_alloc();
        input.empty() ? png_set_write_fn(png, this, OnWrite, nullptr) : png_set_read_fn(png, this, OnRead);
        png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_ALWAYS, reinterpret_cast<png_const_bytep>(kKeptChunks),
                                    kKeptCount);
    }
    ~PngFile() {
        input.empty() ? png_destroy_write_struct(&png, &info) : png_destroy_read_struct(&png, &info, nullptr);
    }
    PngFile(const PngFile&) = delete;
    PngFile& operator=(const PngFile&) = delete;

    [[noreturn]] static void OnError(png_structp png, png_const_charp text) {
        static_cast<PngFile*>(png_get_error_ptr(png))->Leave(text);
    }
    static void OnWarning(png_structp, png_const_charp) {}
    static void OnRead(png_structp png, png_bytep to, size_t size) {
        if (static_cast<PngFile*>(png_get_io_ptr(png))->Read(to, size) != size) png_error(png, "it ends early");
    }
    static void OnWrite(png_structp png, png_bytep from, size_t size) {
        if (static_cast<PngFile*>(png_get_io_ptr(png))->Write(from, size) != size) png_error(png, "no memory");
    }
};

bool IsGrayPalette(const PngFile& file) {
    png_colorp palette = nullptr;
    int count = 0;
    if (png_get_PLTE(file.png, file.info, &palette, &count) == 0) return false;
    return std::all_of(palette, palette + count, [](png_color c) { return c.red == c.green && c.red == c.blue; });
}

void ReadPixels(PngFile& file, size_t maxSamples, Picture& picture) {
    png_structp const png = file.png;
    png_infop const info = file.info;
    int passes = 0;
    file.Do([&] {
        png_read_info(png, info);
        png_set_expand(png);
        if (IsGrayPalette(file)) png_set_rgb_to_gray_fixed(png, PNG_ERROR_ACTION_NONE, -1, -1);
        if (std::endian::native == std::endian::little) png_set_swap(png);
        passes = png_set_interlace_handling(png);
        png_read_update_info(png, info);
    });
    picture.width = static_cast<int32_t>(png_get_image_width(png, info));
    picture.height = static_cast<int32_t>(png_get_image_height(png, info));
    picture.depth = png_get_bit_depth(png, info);
    picture.colors = (png_get_color_type(png, info) & PNG_COLOR_MASK_COLOR) != 0 ? 3 : 1;
    picture.hasAlpha = (png_get_color_type(png, info) & PNG_COLOR_MASK_ALPHA) != 0;
    AllocateSamples(file.input.size(), maxSamples, picture);
    file.Do([&] {
        for (int pass = 0; pass < passes; ++pass)
            for (int32_t y = 0; y < picture.height; ++y)
                png_read_row(png, picture.Row(static_cast<size_t>(y)), nullptr);
        png_read_end(png, info);
    });
}

// The chunk has a name, a zero and the method before the compressed profile, which begins with its own size.
Bytes InflateProfile(std::span<const uint8_t> chunk) {
    const auto zero = std::ranges::find(chunk, uint8_t{0});
    if (chunk.end() - zero < 2) return {};
    const std::span<const uint8_t> packed(zero + 2, chunk.end());
    Bytes profile(4);
    uLongf size = 4;
    uncompress(profile.data(), &size, packed.data(), static_cast<uLong>(packed.size()));
    constexpr size_t kMaxRatio = 1032;  // deflate's
    size = GetNumber<uint32_t>(profile.data(), true);
    if (size / kMaxRatio > packed.size()) return {};
    profile.resize(size);
    const int status = uncompress(profile.data(), &size, packed.data(), static_cast<uLong>(packed.size()));
    return status == Z_OK && size == profile.size() ? profile : Bytes{};
}

Bytes DeflateProfile(const Bytes& profile) {
    constexpr std::string_view kBegin = "iCCPICC profile\0\0"sv;
    uLongf size = compressBound(static_cast<uLong>(profile.size()));
    Bytes chunk(kBegin.begin(), kBegin.end());
    chunk.resize(kBegin.size() + size);
    compress(&chunk[kBegin.size()], &size, profile.data(), static_cast<uLong>(profile.size()));
    chunk.resize(kBegin.size() + size);
    return chunk;
}

std::string Utf8FromLatin1(std::string_view latin) {
    std::string text;
    for (const char c : latin) {
        const auto code = static_cast<unsigned char>(c);
        if (code >= 0x80) text += static_cast<char>(0xC0 | code >> 6);
        text += static_cast<char>(code < 0x80 ? code : 0x80 | (code & 0x3F));
    }
    return text;
}

void ReadMetadata(const PngFile& file, Picture& picture) {
    picture.dpiX = png_get_x_pixels_per_meter(file.png, file.info) / kInchesPerMetre;
    picture.dpiY = png_get_y_pixels_per_meter(file.png, file.info) / kInchesPerMetre;
    png_bytep exif = nullptr;
    png_uint_32 exifSize = 0;
    if (png_get_eXIf_1(file.png, file.info, &exifSize, &exif) != 0) SetExif({exif, exifSize}, picture);

    png_textp texts = nullptr;
    int count = 0;
    png_get_text(file.png, file.info, &texts, &count);
    for (const png_text& text : std::span(texts, static_cast<size_t>(count))) {
        const bool isUtf8 = text.compression >= PNG_ITXT_COMPRESSION_NONE;
        // The library can't write texts with a blank keyword.
        if (std::ranges::all_of(std::string_view(text.key), [](char c) { return c <= ' '; })) continue;
        picture.texts.push_back({text.key, isUtf8 ? text.text : Utf8FromLatin1(text.text)});
    }
    png_unknown_chunkp chunks = nullptr;
    count = png_get_unknown_chunks(file.png, file.info, &chunks);
    for (const png_unknown_chunk& chunk : std::span(chunks, static_cast<size_t>(count))) {
        const std::string_view name(reinterpret_cast<const char*>(chunk.name), 4);
        if (name == "iCCP") picture.profile = InflateProfile({chunk.data, chunk.size});
        if (name == "acTL") {
            picture.morePages = true;
        } else {
            Bytes& kept = picture.chunks.emplace_back(name.begin(), name.end());
            kept.insert(kept.end(), chunk.data, chunk.data + chunk.size);
        }
    }
}

}  // namespace

void ReadPng(std::span<const uint8_t> bytes, size_t maxSamples, Picture& picture) {
    // The library would allocate memory for a chunk before noticing that the file is shorter.
    constexpr size_t kSignature = 8, kHead = 8, kSum = 4;  // length and name before a chunk's data, checksum after it
    for (size_t at = kSignature; bytes.size() - at >= kHead && std::memcmp(&bytes[at + 4], "IEND", 4) != 0;) {
        const size_t length = GetNumber<uint32_t>(&bytes[at], true);
        if (length + kSum > bytes.size() - at - kHead) ThrowDamaged("it ends early");
        at += kHead + length + kSum;
    }
    PngFile file(bytes);
    ReadPixels(file, maxSamples, picture);
    ReadMetadata(file, picture);
}

Bytes WritePng(const Picture& picture) {
    PngFile file;
    png_structp const png = file.png;
    png_infop const info = file.info;
    // The library only reads chunks and texts, but its types aren't const.
    std::vector<Bytes> chunks = picture.chunks;
    if (chunks.empty() && !picture.profile.empty()) chunks.push_back(DeflateProfile(picture.profile));
    std::vector<png_unknown_chunk> raw;
    for (Bytes& chunk : chunks) {
        png_unknown_chunk& row = raw.emplace_back();
        std::copy_n(chunk.begin(), 4, row.name);
        row.data = chunk.data() + 4;
        row.size = chunk.size() - 4;
        row.location = PNG_HAVE_IHDR;
    }
    std::vector<Picture::Text> copies = picture.texts;
    std::vector<png_text> texts;
    for (Picture::Text& text : copies) {
        const bool isAscii = std::ranges::all_of(text.text, [](char c) { return static_cast<uint8_t>(c) < 0x80; });
        png_text& row = texts.emplace_back();
        row.key = text.keyword.data();
        row.text = text.text.data();
        row.compression =
            isAscii && text.keyword != kXmpKeyword ? PNG_TEXT_COMPRESSION_NONE : PNG_ITXT_COMPRESSION_NONE;
    }
    Bytes exif = picture.exif;
    if (exif.empty() && picture.orientation != 1) {
        const auto orientation = static_cast<uint8_t>(picture.orientation);
        exif = {'M', 'M', 0, 42,          0, 0, 0, 8, 0, 1, kOrientationTag >> 8, kOrientationTag & 0xFF, 0, 3, 0, 0,
                0,   1,   0, orientation, 0, 0, 0, 0, 0, 0};
    }
    const int colors = (picture.colors == 3 ? PNG_COLOR_MASK_COLOR : 0) | (picture.hasAlpha ? PNG_COLOR_MASK_ALPHA : 0);
    const auto perMetre = [](double dpi) { return static_cast<png_uint_32>(std::lround(dpi * kInchesPerMetre)); };
    // Higher levels take several times as long for files that are hardly smaller.
    constexpr int kCompressionLevel = 4;
    png_set_compression_level(png, kCompressionLevel);
    file.Do([&] {
        png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width), static_cast<png_uint_32>(picture.height),
                     picture.depth, colors, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        if (picture.dpiX > 0 && picture.dpiY > 0)
            png_set_pHYs(png, info, perMetre(picture.dpiX), perMetre(picture.dpiY), PNG_RESOLUTION_METER);
        if (!exif.empty()) png_set_eXIf_1(png, info, static_cast<png_uint_32>(exif.size()), exif.data());
        png_set_text(png, info, texts.data(), static_cast<int>(texts.size()));
        png_set_unknown_chunks(png, info, raw.data(), static_cast<int>(raw.size()));
        png_write_info(png, info);
        if (std::endian::native == std::endian::little) png_set_swap(png);
        for (int32_t y = 0; y < picture.height; ++y) png_write_row(png, picture.Row(static_cast<size_t>(y)));
        png_write_end(png, nullptr);
    });
    return std::move(file.output);
}

}  // namespace stairmelt
