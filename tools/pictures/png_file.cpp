// PNG files, by libpng. Chunks about colours and with texts go through as they stand, since the library would convert
// or refuse some; only what other formats need is read from them.
#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <new>
#include <string_view>

#include "tools/pictures/codecs.h"
#include "tools/text.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

using namespace std::string_view_literals;

constexpr double kInchesPerMetre = 1 / 0.0254;
constexpr std::string_view kXmpKeyword = "XML:com.adobe.xmp";
// Names of four characters and a zero, as the library takes them. The last one says that the picture is animated.
constexpr char kKeptChunks[] = "iCCP\0sRGB\0gAMA\0cHRM\0cICP\0sBIT\0tEXt\0zTXt\0iTXt\0acTL";
constexpr int kKeptCount = sizeof(kKeptChunks) / 5;

// What the library's callbacks get, and the library's records, freed at the end.
struct PngFile {
    png_structp png = nullptr;
    png_infop info = nullptr;
    bool isRead;
    std::array<char, 200> message{};  // the library's last words
    std::span<const uint8_t> left;    // of the file that is read
    Bytes written;
    bool isMemoryShort = false;

    explicit PngFile(bool reads) : isRead(reads) {
        png = reads ? png_create_read_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning)
                    : png_create_write_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning);
        info = png == nullptr ? nullptr : png_create_info_struct(png);
        if (info == nullptr) throw std::bad_alloc();
        png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_ALWAYS, reinterpret_cast<png_const_bytep>(kKeptChunks),
                                    kKeptCount);
    }
    ~PngFile() {
        if (isRead)
            png_destroy_read_struct(&png, &info, nullptr);
        else
            png_destroy_write_struct(&png, &info);
    }
    PngFile(const PngFile&) = delete;
    PngFile& operator=(const PngFile&) = delete;

    [[noreturn]] static void OnError(png_structp png, png_const_charp text) {
        auto& message = static_cast<PngFile*>(png_get_error_ptr(png))->message;
        for (size_t i = 0; i + 1 < message.size() && text[i] != '\0'; ++i) message[i] = text[i];
        png_longjmp(png, 1);
    }
    static void OnWarning(png_structp, png_const_charp) {}

    static void Read(png_structp png, png_bytep to, size_t size) {
        auto& left = static_cast<PngFile*>(png_get_io_ptr(png))->left;
        if (size > left.size()) png_error(png, "it ends early");
        std::ranges::copy(left.first(size), to);
        left = left.subspan(size);
    }
    static void Write(png_structp png, png_bytep from, size_t size) {
        auto* const file = static_cast<PngFile*>(png_get_io_ptr(png));
        try {
            file->written.insert(file->written.end(), from, from + size);
            return;
        } catch (const std::bad_alloc&) {
            file->isMemoryShort = true;
        }
        png_error(png, "no memory");
    }

    template <class Body>
    void Do(const Body& body) {
        if (Completes(png_jmpbuf(png), body)) return;
        if (isMemoryShort) throw std::bad_alloc();
        if (!isRead) throw ToolError(std::string("can't be written: ") + message.data());
        ThrowDamaged(message.data());
    }
};

bool IsGrayPalette(PngFile& file) {
    png_colorp palette = nullptr;
    int count = 0;
    if (png_get_PLTE(file.png, file.info, &palette, &count) == 0) return false;
    return std::all_of(palette, palette + count, [](png_color c) { return c.red == c.green && c.red == c.blue; });
}

// Turns three equal channels of 8 bits into one.
void DropToGray(Picture& picture) {
    const size_t before = picture.PixelBytes();
    picture.colors = 1;
    const size_t after = picture.PixelBytes();
    uint8_t* to = picture.samples.data();
    for (size_t at = 0; at < picture.samples.size(); at += before) {
        *to++ = picture.samples[at];
        if (picture.hasAlpha) *to++ = picture.samples[at + before - 1];
    }
    picture.samples.resize(picture.samples.size() / before * after);
}

void ReadPixels(PngFile& file, size_t maxSamples, Picture& picture) {
    const size_t fileSize = file.left.size();
    png_structp const png = file.png;
    png_infop const info = file.info;
    png_set_read_fn(png, &file, PngFile::Read);
    int passes = 0;
    file.Do([&] {
        png_read_info(png, info);
        png_set_expand(png);
        if (std::endian::native == std::endian::little) png_set_swap(png);
        passes = png_set_interlace_handling(png);
        png_read_update_info(png, info);
    });
    picture.width = static_cast<int32_t>(png_get_image_width(png, info));
    picture.height = static_cast<int32_t>(png_get_image_height(png, info));
    picture.depth = png_get_bit_depth(png, info);
    picture.colors = (png_get_color_type(png, info) & PNG_COLOR_MASK_COLOR) != 0 ? 3 : 1;
    picture.hasAlpha = (png_get_color_type(png, info) & PNG_COLOR_MASK_ALPHA) != 0;
    const bool isGray = IsGrayPalette(file);
    AllocateSamples(fileSize, maxSamples, picture);
    const size_t rowBytes = picture.RowBytes();
    file.Do([&] {
        for (int pass = 0; pass < passes; ++pass) {
            for (size_t y = 0; y < static_cast<size_t>(picture.height); ++y)
                png_read_row(png, &picture.samples[y * rowBytes], nullptr);
        }
        png_read_end(png, info);
    });
    if (isGray) DropToGray(picture);
}

// The profile behind its name, a zero and the method. It begins with its own size.
Bytes InflateProfile(std::span<const uint8_t> data) {
    const auto zero = std::ranges::find(data, uint8_t{0});
    if (data.end() - zero < 2) return {};
    const std::span<const uint8_t> packed(zero + 2, data.end());
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

std::string Utf8FromLatin1(std::string_view latin) {
    std::string text;
    for (const char c : latin) {
        const auto code = static_cast<unsigned char>(c);
        if (code >= 0x80) text += static_cast<char>(0xC0 | code >> 6);
        text += static_cast<char>(code < 0x80 ? code : 0x80 | (code & 0x3F));
    }
    return text;
}

// Compressed texts go into other PNG files only.
void ReadText(std::string_view name, std::string_view text, Picture& picture) {
    const std::string keyword(TakeUntil(text, '\0'));
    if (name == "tEXt") picture.texts.push_back({keyword, Utf8FromLatin1(text)});
    if (name != "iTXt" || !text.starts_with("\0\0"sv)) return;
    text.remove_prefix(2);
    TakeUntil(text, '\0');  // the language
    TakeUntil(text, '\0');  // the keyword in it
    if (keyword == kXmpKeyword)
        picture.xmp.assign(text.begin(), text.end());
    else
        picture.texts.push_back({keyword, std::string(text)});
}

void ReadSurroundings(PngFile& file, Picture& picture) {
    png_uint_32 x = 0, y = 0;
    int unit = PNG_RESOLUTION_UNKNOWN;
    png_get_pHYs(file.png, file.info, &x, &y, &unit);
    if (unit == PNG_RESOLUTION_METER) {
        picture.dpiX = x / kInchesPerMetre;
        picture.dpiY = y / kInchesPerMetre;
    }
    png_bytep exif = nullptr;
    png_uint_32 exifSize = 0;
    if (png_get_eXIf_1(file.png, file.info, &exifSize, &exif) != 0) picture.exif = ReadExif({exif, exifSize});
    picture.orientation = TakeOrientation(picture.exif);

    png_unknown_chunkp unknown = nullptr;
    const int count = png_get_unknown_chunks(file.png, file.info, &unknown);
    for (const png_unknown_chunk& chunk : std::span(unknown, static_cast<size_t>(count))) {
        const std::string_view name(reinterpret_cast<const char*>(chunk.name), 4);
        const std::span<const uint8_t> data(chunk.data, chunk.size);
        if (name == "acTL") {
            picture.morePages = true;
            continue;
        }
        if (name == "iCCP") picture.profile = InflateProfile(data);
        ReadText(name, {reinterpret_cast<const char*>(data.data()), data.size()}, picture);
        Bytes kept(name.begin(), name.end());
        kept.insert(kept.end(), data.begin(), data.end());
        picture.chunks.push_back(std::move(kept));
    }
}

Bytes Chunk(std::string_view nameAndBegin, std::span<const uint8_t> rest) {
    Bytes chunk(nameAndBegin.begin(), nameAndBegin.end());
    chunk.insert(chunk.end(), rest.begin(), rest.end());
    return chunk;
}

Bytes ProfileChunk(const Bytes& profile) {
    uLongf size = compressBound(static_cast<uLong>(profile.size()));
    Bytes packed(size);
    compress(packed.data(), &size, profile.data(), static_cast<uLong>(profile.size()));
    return Chunk("iCCPICC profile\0\0"sv, std::span(packed).first(size));
}

Bytes TextChunk(const std::string& keyword, std::span<const uint8_t> text) {
    const bool isPlain = std::ranges::all_of(text, [](uint8_t c) { return c < 0x80; }) && keyword != kXmpKeyword;
    const std::string begin = (isPlain ? "tEXt" : "iTXt") + keyword;
    return Chunk(begin + std::string(isPlain ? "\0"sv : "\0\0\0\0\0"sv), text);
}

// What another format's file says, as chunks of this one.
std::vector<Bytes> ChunksOf(const Picture& picture) {
    if (!picture.chunks.empty()) return picture.chunks;
    std::vector<Bytes> chunks;
    if (!picture.profile.empty()) chunks.push_back(ProfileChunk(picture.profile));
    if (!picture.xmp.empty()) chunks.push_back(TextChunk(std::string(kXmpKeyword), picture.xmp));
    for (const Picture::Text& text : picture.texts)
        chunks.push_back(
            TextChunk(text.keyword, {reinterpret_cast<const uint8_t*>(text.text.data()), text.text.size()}));
    return chunks;
}

}  // namespace

void ReadPng(std::span<const uint8_t> bytes, size_t maxSamples, Picture& picture) {
    PngFile file(true);
    file.left = bytes;
    ReadPixels(file, maxSamples, picture);
    ReadSurroundings(file, picture);
}

Bytes WritePng(const Picture& picture) {
    PngFile file(false);
    png_structp const png = file.png;
    png_infop const info = file.info;
    png_set_write_fn(png, &file, PngFile::Write, nullptr);
    std::vector<Bytes> chunks = ChunksOf(picture);
    std::vector<png_unknown_chunk> raw;
    for (Bytes& chunk : chunks) {
        png_unknown_chunk& entry = raw.emplace_back();
        std::copy_n(chunk.begin(), 4, entry.name);
        entry.data = chunk.data() + 4;
        entry.size = chunk.size() - 4;
        entry.location = PNG_HAVE_IHDR;
    }
    Bytes exif = ExifBlock(picture.exif, picture.orientation);
    const int colors = (picture.colors == 3 ? PNG_COLOR_MASK_COLOR : 0) | (picture.hasAlpha ? PNG_COLOR_MASK_ALPHA : 0);
    const auto perMetre = [](double dpi) { return static_cast<png_uint_32>(std::lround(dpi * kInchesPerMetre)); };
    // Levels above take several times as long for files that are hardly smaller.
    constexpr int kCompressionLevel = 4;
    png_set_compression_level(png, kCompressionLevel);
    file.Do([&] {
        png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width), static_cast<png_uint_32>(picture.height),
                     picture.depth, colors, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        if (picture.dpiX > 0 && picture.dpiY > 0)
            png_set_pHYs(png, info, perMetre(picture.dpiX), perMetre(picture.dpiY), PNG_RESOLUTION_METER);
        if (!exif.empty()) png_set_eXIf_1(png, info, static_cast<png_uint_32>(exif.size()), exif.data());
        png_set_unknown_chunks(png, info, raw.data(), static_cast<int>(raw.size()));
        png_write_info(png, info);
        if (std::endian::native == std::endian::little) png_set_swap(png);
        const size_t rowBytes = picture.RowBytes();
        for (size_t y = 0; y < static_cast<size_t>(picture.height); ++y)
            png_write_row(png, &picture.samples[y * rowBytes]);
        png_write_end(png, nullptr);
    });
    return std::move(file.written);
}

}  // namespace stairmelt
