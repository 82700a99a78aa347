// TIFF files, by libtiff. They lie in memory, since the EXIF directories are copied beside the library.
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "tools/pictures/codecs.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

constexpr double kCentimetresPerInch = 2.54;

// Texts that TIFF has tags for, and their keywords in PNG. Of two that share a tag the first is written.
struct TextTag {
    uint16_t tag;
    const char* keyword;
};
constexpr TextTag kTextTags[] = {
    {TIFFTAG_DOCUMENTNAME, "Title"},
    {TIFFTAG_IMAGEDESCRIPTION, "Description"},
    {TIFFTAG_IMAGEDESCRIPTION, "Comment"},
    {TIFFTAG_MAKE, "Make"},
    {TIFFTAG_MODEL, "Model"},
    {TIFFTAG_SOFTWARE, "Software"},
    {TIFFTAG_DATETIME, "DateTime"},
    {TIFFTAG_ARTIST, "Author"},
    {TIFFTAG_COPYRIGHT, "Copyright"},
};

// What the library's callbacks get, and the library's handle, which is closed at the end.
class TiffFile {
public:
    explicit TiffFile(std::span<const uint8_t> read) : read_(read) { Open("r", read.size()); }
    explicit TiffFile(const char* mode) { Open(mode, 0); }
    ~TiffFile() { Close(); }
    TiffFile(const TiffFile&) = delete;
    TiffFile& operator=(const TiffFile&) = delete;

    operator TIFF*() const { return tiff_; }
    Bytes& Written() { return written_; }
    void Close() {
        if (tiff_ != nullptr) TIFFClose(tiff_);
        tiff_ = nullptr;
    }

    // Throws what the library has said, unless the step has succeeded.
    void Require(bool hasSucceeded) const {
        if (hasSucceeded) return;
        if (isMemoryShort_) throw std::bad_alloc();
        ThrowDamaged(message_.data());
    }

    template <class T>
    T Field(uint32_t tag, T otherwise) const {
        T value{};
        return TIFFGetFieldDefaulted(tiff_, tag, &value) != 0 ? value : otherwise;
    }
    Bytes BytesField(uint32_t tag) const {
        uint32_t count = 0;
        const uint8_t* data = nullptr;
        return TIFFGetField(tiff_, tag, &count, &data) != 0 ? Bytes(data, data + count) : Bytes();
    }

private:
    static TiffFile& Of(thandle_t handle) { return *static_cast<TiffFile*>(handle); }

    static tmsize_t Read(thandle_t handle, void* to, tmsize_t size) {
        TiffFile& file = Of(handle);
        const std::span<const uint8_t> bytes = file.Contents();
        if (file.at_ > bytes.size()) return 0;
        const size_t count = std::min(static_cast<size_t>(size), bytes.size() - static_cast<size_t>(file.at_));
        if (count != 0) std::memcpy(to, &bytes[static_cast<size_t>(file.at_)], count);
        file.at_ += count;
        return static_cast<tmsize_t>(count);
    }
    static tmsize_t Write(thandle_t handle, void* from, tmsize_t size) {
        TiffFile& file = Of(handle);
        const size_t end = static_cast<size_t>(file.at_) + static_cast<size_t>(size);
        try {
            if (end > file.written_.size()) file.written_.resize(end);
        } catch (const std::bad_alloc&) {
            file.isMemoryShort_ = true;
            return -1;
        }
        std::memcpy(&file.written_[static_cast<size_t>(file.at_)], from, static_cast<size_t>(size));
        file.at_ = end;
        return size;
    }
    static toff_t Seek(thandle_t handle, toff_t to, int from) {
        TiffFile& file = Of(handle);
        const toff_t base = from == SEEK_CUR ? file.at_ : from == SEEK_END ? file.Contents().size() : 0;
        return file.at_ = base + to;
    }
    static toff_t Size(thandle_t handle) { return Of(handle).Contents().size(); }
    static int CloseNothing(thandle_t) { return 0; }
    static int Map(thandle_t handle, void** base, toff_t* size) {
        TiffFile& file = Of(handle);
        // Only read, in spite of the type. NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
        *base = const_cast<uint8_t*>(file.read_.data());
        *size = file.read_.size();
        return file.read_.empty() ? 0 : 1;
    }
    static void Unmap(thandle_t, void*, toff_t) {}

    static int OnError(TIFF*, void* file, const char*, const char* format, va_list words) {
        auto& message = static_cast<TiffFile*>(file)->message_;
        if (message[0] == '\0') std::vsnprintf(message.data(), message.size(), format, words);
        return 1;
    }
    static int OnWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

    std::span<const uint8_t> Contents() const { return read_.empty() ? std::span<const uint8_t>(written_) : read_; }

    void Open(const char* mode, size_t fileSize) {
        // What a damaged file asks for in one piece has to have some relation to its size.
        constexpr size_t kLargestPiece = size_t{1} << 26;
        const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                                   TIFFOpenOptionsFree);
        if (options == nullptr) throw std::bad_alloc();
        TIFFOpenOptionsSetErrorHandlerExtR(options.get(), OnError, this);
        TIFFOpenOptionsSetWarningHandlerExtR(options.get(), OnWarning, this);
        TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(),
                                            static_cast<tmsize_t>(std::max(kLargestPiece, 8 * fileSize)));
        tiff_ =
            TIFFClientOpenExt("picture", mode, this, Read, Write, Seek, CloseNothing, Size, Map, Unmap, options.get());
        Require(tiff_ != nullptr);
    }

    TIFF* tiff_ = nullptr;
    std::span<const uint8_t> read_;
    Bytes written_;
    uint64_t at_ = 0;
    bool isMemoryShort_ = false;
    std::array<char, 200> message_{};  // the library's first words: the later ones are consequences
};

// How the file's pixels become samples.
struct TiffPixels {
    uint16_t samples = 1, bits = 1, photometric = 0;
    bool isPlanar = false;
    std::vector<std::array<uint8_t, 3>> values;  // of each pixel with up to 8 bits that isn't a sample itself
};

void RequireSupported(const TiffFile& file, TiffPixels& pixels, Picture& picture) {
    pixels.samples = file.Field<uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
    pixels.bits = file.Field<uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
    pixels.photometric = file.Field<uint16_t>(TIFFTAG_PHOTOMETRIC, 0xFFFF);
    pixels.isPlanar = file.Field<uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) != PLANARCONFIG_CONTIG;
    const auto compression = file.Field<uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    const auto format = file.Field<uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    if (pixels.photometric == PHOTOMETRIC_YCBCR && compression == COMPRESSION_JPEG) {
        TIFFSetField(file, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        pixels.photometric = PHOTOMETRIC_RGB;
    }
    const bool isGray = pixels.photometric == PHOTOMETRIC_MINISWHITE || pixels.photometric == PHOTOMETRIC_MINISBLACK;
    const bool isPalette = pixels.photometric == PHOTOMETRIC_PALETTE;
    picture.colors = isGray || isPalette                           ? 1
                     : pixels.photometric == PHOTOMETRIC_RGB       ? 3
                     : pixels.photometric == PHOTOMETRIC_SEPARATED ? 4
                                                                   : 0;
    if (picture.colors == 0) throw ToolError("the picture's pixel format isn't supported");

    const bool isFloat = pixels.bits == 32 && format == SAMPLEFORMAT_IEEEFP;
    const bool isNumber = (pixels.bits == 8 || pixels.bits == 16) && format == SAMPLEFORMAT_UINT;
    const bool isSmall = pixels.bits == 1 || pixels.bits == 2 || pixels.bits == 4;
    // Floats that count ink have no full scale to be taken from.
    const bool isKnown = isPalette ? isSmall || pixels.bits == 8
                                   : isNumber || (isFloat && pixels.photometric != PHOTOMETRIC_MINISWHITE) ||
                                         (isSmall && isGray && pixels.samples == 1);
    if (!isKnown) throw ToolError("the TIFF file's samples are of a kind that isn't supported");
    if (pixels.samples < picture.colors) ThrowDamaged("it lacks channels");
    if (pixels.samples > picture.colors + 1 || (isPalette && pixels.samples > 1))
        throw ToolError("the picture has several extra channels");
    picture.hasAlpha = pixels.samples > picture.colors;
    uint16_t extras = 0;
    const uint16_t* kinds = nullptr;
    if (TIFFGetField(file, TIFFTAG_EXTRASAMPLES, &extras, &kinds) != 0 && extras > 0 &&
        kinds[0] == EXTRASAMPLE_ASSOCALPHA)
        throw ToolError("the picture's colours are multiplied by its transparency, which can't be undone exactly");
    picture.depth = std::max<int>(8, pixels.bits);
}

// The values of pixels with few bits, spread over 0..255.
void MakeValues(const TiffFile& file, TiffPixels& pixels, Picture& picture) {
    if (pixels.photometric != PHOTOMETRIC_PALETTE && pixels.bits >= 8) return;
    const size_t count = size_t{1} << pixels.bits;
    if (pixels.photometric != PHOTOMETRIC_PALETTE) {
        for (size_t i = 0; i < count; ++i) pixels.values.push_back({static_cast<uint8_t>(i * 255 / (count - 1))});
        return;
    }
    const uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
    file.Require(TIFFGetField(file, TIFFTAG_COLORMAP, &red, &green, &blue) != 0);
    // Some programs write 0..255 where the format wants 0..65535.
    const auto isShort = [&](const uint16_t* map) {
        return std::all_of(map, map + count, [](uint16_t v) { return v < 256; });
    };
    const int shift = isShort(red) && isShort(green) && isShort(blue) ? 0 : 8;
    const auto byte = [&](uint16_t value) { return static_cast<uint8_t>(value >> shift); };
    for (size_t i = 0; i < count; ++i) pixels.values.push_back({byte(red[i]), byte(green[i]), byte(blue[i])});
    const auto isGray = [](const std::array<uint8_t, 3>& v) { return v[0] == v[1] && v[0] == v[2]; };
    picture.colors = std::ranges::all_of(pixels.values, isGray) ? 1 : 3;
}

// Puts `count` pixels of the file to their place. `plane` is the sample that they are of, where planes are apart.
void Place(const TiffPixels& pixels, const uint8_t* from, size_t x, size_t y, size_t count, size_t plane,
           Picture& picture) {
    const size_t pixelBytes = picture.PixelBytes();
    uint8_t* to = &picture.samples[y * picture.RowBytes() + x * pixelBytes];
    if (!pixels.values.empty()) {
        for (size_t i = 0; i < count; ++i, to += pixelBytes) {
            const size_t bit = i * pixels.bits;
            const unsigned value = static_cast<unsigned>(from[bit / 8]) >> (8 - pixels.bits - bit % 8);
            std::copy_n(pixels.values[value & ((1U << pixels.bits) - 1)].data(), picture.colors, to);
        }
    } else if (pixels.isPlanar) {
        const size_t sampleBytes = pixels.bits / 8U;
        for (size_t i = 0; i < count; ++i)
            std::memcpy(to + i * pixelBytes + plane * sampleBytes, from + i * sampleBytes, sampleBytes);
    } else {
        std::memcpy(to, from, count * pixelBytes);
    }
}

void ReadStrips(const TiffFile& file, const TiffPixels& pixels, Picture& picture) {
    Bytes row(static_cast<size_t>(TIFFScanlineSize(file)));
    const uint16_t planes = pixels.isPlanar ? pixels.samples : uint16_t{1};
    for (uint16_t plane = 0; plane < planes; ++plane) {
        for (uint32_t y = 0; y < static_cast<uint32_t>(picture.height); ++y) {
            file.Require(TIFFReadScanline(file, row.data(), y, plane) == 1);
            Place(pixels, row.data(), 0, y, static_cast<size_t>(picture.width), plane, picture);
        }
    }
}

void ReadTiles(const TiffFile& file, const TiffPixels& pixels, Picture& picture) {
    const auto width = file.Field<uint32_t>(TIFFTAG_TILEWIDTH, 0), height = file.Field<uint32_t>(TIFFTAG_TILELENGTH, 0);
    const tmsize_t size = TIFFTileSize(file), rowSize = TIFFTileRowSize(file);
    constexpr tmsize_t kLargest = 1 << 28;
    if (width == 0 || height == 0 || size <= 0 || size > kLargest) ThrowDamaged("its tiles make no sense");
    Bytes tile(static_cast<size_t>(size));
    const auto right = static_cast<uint32_t>(picture.width), bottom = static_cast<uint32_t>(picture.height);
    const uint16_t planes = pixels.isPlanar ? pixels.samples : uint16_t{1};
    for (uint16_t plane = 0; plane < planes; ++plane) {
        for (uint32_t top = 0; top < bottom; top += std::min(height, bottom - top)) {
            for (uint32_t left = 0; left < right; left += std::min(width, right - left)) {
                file.Require(TIFFReadTile(file, tile.data(), left, top, 0, plane) >= 0);
                for (uint32_t y = 0; y < std::min(height, bottom - top); ++y)
                    Place(pixels, &tile[y * static_cast<size_t>(rowSize)], left, top + y, std::min(width, right - left),
                          plane, picture);
            }
        }
    }
}

void TurnInkToLight(Picture& picture) {
    const size_t pixelBytes = picture.PixelBytes(), sampleBytes = static_cast<size_t>(picture.depth / 8);
    for (size_t at = 0; at < picture.samples.size(); at += pixelBytes)
        for (size_t i = 0; i < sampleBytes; ++i) picture.samples[at + i] ^= 0xFF;
}

void ReadSurroundings(const TiffFile& file, std::span<const uint8_t> bytes, Picture& picture) {
    const auto unit = file.Field<uint16_t>(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    const double scale = unit == RESUNIT_INCH ? 1 : unit == RESUNIT_CENTIMETER ? kCentimetresPerInch : 0;
    picture.dpiX = file.Field<float>(TIFFTAG_XRESOLUTION, 0) * scale;
    picture.dpiY = file.Field<float>(TIFFTAG_YRESOLUTION, 0) * scale;
    const auto orientation = file.Field<uint16_t>(TIFFTAG_ORIENTATION, 1);
    picture.orientation = orientation >= 1 && orientation <= 8 ? orientation : uint16_t{1};
    picture.profile = file.BytesField(TIFFTAG_ICCPROFILE);
    picture.xmp = file.BytesField(TIFFTAG_XMLPACKET);
    for (const TextTag& row : kTextTags) {
        const char* text = nullptr;
        const bool isFirst = picture.texts.empty() || row.keyword != std::string("Comment");
        if (isFirst && TIFFGetField(file, row.tag, &text) != 0) picture.texts.push_back({row.keyword, text});
    }
    picture.exif = ReadExif(bytes);
    std::erase_if(picture.exif.entries, [](const ExifEntry& entry) { return entry.directory.empty(); });

    const auto compression = file.Field<uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    const auto predictor = file.Field<uint16_t>(TIFFTAG_PREDICTOR, PREDICTOR_NONE);
    switch (compression) {
        case COMPRESSION_NONE:
        case COMPRESSION_PACKBITS:
        case COMPRESSION_LZW: picture.compression = compression; break;
        case COMPRESSION_DEFLATE:
        case COMPRESSION_ADOBE_DEFLATE: picture.compression = COMPRESSION_ADOBE_DEFLATE; break;
        default: picture.compression = COMPRESSION_LZW; break;  // without loss, and everybody reads it
    }
    const bool takesPredictor =
        picture.compression == COMPRESSION_LZW || picture.compression == COMPRESSION_ADOBE_DEFLATE;
    const bool isKnown =
        predictor == PREDICTOR_HORIZONTAL || (predictor == PREDICTOR_FLOATINGPOINT && picture.depth == 32);
    if (takesPredictor && isKnown) picture.predictor = predictor;
    picture.morePages = TIFFLastDirectory(file) == 0;
}

void WriteTags(const TiffFile& file, const Picture& picture) {
    const auto set = [&](uint32_t tag, auto... values) { file.Require(TIFFSetField(file, tag, values...) != 0); };
    set(TIFFTAG_IMAGEWIDTH, picture.width);
    set(TIFFTAG_IMAGELENGTH, picture.height);
    set(TIFFTAG_BITSPERSAMPLE, picture.depth);
    set(TIFFTAG_SAMPLESPERPIXEL, static_cast<int>(picture.SamplesPerPixel()));
    set(TIFFTAG_PHOTOMETRIC, picture.colors == 1   ? PHOTOMETRIC_MINISBLACK
                             : picture.colors == 3 ? PHOTOMETRIC_RGB
                                                   : PHOTOMETRIC_SEPARATED);
    set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    set(TIFFTAG_SAMPLEFORMAT, picture.depth == 32 ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
    set(TIFFTAG_COMPRESSION, static_cast<int>(picture.compression));
    if (picture.predictor != PREDICTOR_NONE) set(TIFFTAG_PREDICTOR, static_cast<int>(picture.predictor));
    const uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
    if (picture.hasAlpha) set(TIFFTAG_EXTRASAMPLES, 1, &alpha);
    constexpr size_t kStripBytes = 1 << 18;
    set(TIFFTAG_ROWSPERSTRIP, static_cast<int>(std::max<size_t>(1, kStripBytes / picture.RowBytes())));
    set(TIFFTAG_ORIENTATION, static_cast<int>(picture.orientation));
    if (picture.dpiX > 0 && picture.dpiY > 0) {
        set(TIFFTAG_XRESOLUTION, picture.dpiX);
        set(TIFFTAG_YRESOLUTION, picture.dpiY);
        set(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    }
    const auto setBytes = [&](uint32_t tag, const Bytes& bytes) {
        if (!bytes.empty()) set(tag, static_cast<int>(bytes.size()), bytes.data());
    };
    setBytes(TIFFTAG_ICCPROFILE, picture.profile);
    setBytes(TIFFTAG_XMLPACKET, picture.xmp);
    for (const TextTag& row : kTextTags) {
        const auto text = std::ranges::find(picture.texts, row.keyword, &Picture::Text::keyword);
        const std::string value = text != picture.texts.end() ? text->text : ExifText(picture.exif, row.tag);
        const char* earlier = nullptr;
        if (!value.empty() && TIFFGetField(file, row.tag, &earlier) == 0) set(row.tag, value.c_str());
    }
}

// The EXIF directories go where the library has come to.
void WriteExif(TiffFile& file, const Exif& exif) {
    for (const ExifEntry& entry : exif.entries) {
        if (entry.directory.empty() || (entry.tag != kExifTag && entry.tag != kGpsTag)) continue;
        const uint64_t place = AppendDirectory(file.Written(), entry.directory, exif.bigEndian);
        file.Require(TIFFSetField(file, entry.tag, place) != 0);
    }
}

}  // namespace

void ReadTiff(std::span<const uint8_t> bytes, size_t maxSamples, Picture& picture) {
    const TiffFile file(bytes);
    TiffPixels pixels;
    RequireSupported(file, pixels, picture);
    MakeValues(file, pixels, picture);
    constexpr uint32_t kMaxSide = 1 << 28;
    const auto width = file.Field<uint32_t>(TIFFTAG_IMAGEWIDTH, 0),
               height = file.Field<uint32_t>(TIFFTAG_IMAGELENGTH, 0);
    if (width == 0 || height == 0 || width > kMaxSide || height > kMaxSide) ThrowDamaged("its size makes no sense");
    picture.width = static_cast<int32_t>(width);
    picture.height = static_cast<int32_t>(height);
    AllocateSamples(bytes.size(), maxSamples, picture);
    if (TIFFIsTiled(file) != 0)
        ReadTiles(file, pixels, picture);
    else
        ReadStrips(file, pixels, picture);
    if (pixels.photometric == PHOTOMETRIC_MINISWHITE) TurnInkToLight(picture);
    ReadSurroundings(file, bytes, picture);
}

Bytes WriteTiff(const Picture& picture) {
    // Beyond 4 GB the format has another form, and the directories of EXIF have none there.
    constexpr size_t kLargest = 0xF0000000;
    const bool isLarge = picture.samples.size() > kLargest;
    TiffFile file(isLarge ? "w8" : picture.exif.entries.empty() ? "w" : picture.exif.bigEndian ? "wb" : "wl");
    WriteTags(file, picture);
    Bytes row(picture.RowBytes());  // the library changes it
    for (uint32_t y = 0; y < static_cast<uint32_t>(picture.height); ++y) {
        std::memcpy(row.data(), &picture.samples[y * row.size()], row.size());
        file.Require(TIFFWriteScanline(file, row.data(), y, 0) == 1);
    }
    if (!isLarge) WriteExif(file, picture.exif);
    file.Require(TIFFWriteDirectory(file) != 0);
    file.Close();
    return std::move(file.Written());
}

}  // namespace stairmelt
