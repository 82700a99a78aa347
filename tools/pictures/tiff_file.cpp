// Reads and writes TIFF files with libtiff.
#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "tools/pictures/codecs.h"
#include "tools/pictures/exif.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

constexpr double kCentimetresPerInch = 2.54;

// The texts that have TIFF tags, and their PNG keywords. If two share a tag, the last one is used.
constexpr std::pair<uint16_t, const char*> kTextTags[] = {
    {TIFFTAG_DOCUMENTNAME, "Title"},
    {TIFFTAG_IMAGEDESCRIPTION, "Comment"},
    {TIFFTAG_IMAGEDESCRIPTION, "Description"},
    {TIFFTAG_MAKE, "Make"},
    {TIFFTAG_MODEL, "Model"},
    {TIFFTAG_SOFTWARE, "Software"},
    {TIFFTAG_DATETIME, "DateTime"},
    {TIFFTAG_ARTIST, "Author"},
    {TIFFTAG_COPYRIGHT, "Copyright"},
};

// The number of colours for each photometric interpretation. The first one with a number is used for writing.
using Kind = std::pair<uint16_t, int>;
constexpr Kind kPhotometrics[] = {
    {PHOTOMETRIC_MINISBLACK, 1}, {PHOTOMETRIC_RGB, 3},     {PHOTOMETRIC_SEPARATED, 4},
    {PHOTOMETRIC_MINISWHITE, 1}, {PHOTOMETRIC_PALETTE, 1},
};

// The library's handle, closed by the destructor.
struct TiffFile : LibraryFile {
    TIFF* tiff = nullptr;

    explicit TiffFile(std::span<const uint8_t> bytes) : LibraryFile{.input = bytes} { Open("r"); }
    // Writes after the given bytes, of which the library replaces the first eight.
    TiffFile(const char* mode, Bytes begin) : LibraryFile{.output = std::move(begin)} { Open(mode); }
    ~TiffFile() { Close(); }
    TiffFile(const TiffFile&) = delete;
    TiffFile& operator=(const TiffFile&) = delete;

    operator TIFF*() const { return tiff; }
    void Close() {
        if (tiff != nullptr) TIFFClose(std::exchange(tiff, nullptr));
    }
    void Require(bool hasSucceeded) const {
        if (!hasSucceeded) Throw();
    }
    template <class T>
    T Field(uint32_t tag, T otherwise) const {
        T value{};
        return TIFFGetFieldDefaulted(tiff, tag, &value) != 0 ? value : otherwise;
    }
    template <class Container>
    Container BytesField(uint32_t tag) const {
        uint32_t count = 0;
        const uint8_t* data = nullptr;
        return TIFFGetField(tiff, tag, &count, &data) != 0 ? Container(data, data + count) : Container();
    }

private:
    static TiffFile& Of(void* file) { return *static_cast<TiffFile*>(file); }
    static tmsize_t OnRead(thandle_t file, void* to, tmsize_t size) {
        return static_cast<tmsize_t>(Of(file).Read(static_cast<uint8_t*>(to), static_cast<size_t>(size)));
    }
    static tmsize_t OnWrite(thandle_t file, void* from, tmsize_t size) {
        return static_cast<tmsize_t>(Of(file).Write(static_cast<uint8_t*>(from), static_cast<size_t>(size)));
    }
    static toff_t OnSeek(thandle_t file, toff_t to, int from) {
        return Of(file).at = to + (from == SEEK_CUR ? Of(file).at : from == SEEK_END ? OnSize(file) : 0);
    }
    static toff_t OnSize(thandle_t file) { return Of(file).input.size() + Of(file).output.size(); }
    static int OnError(TIFF*, void* file, const char*, const char* format, va_list values) {
        char text[sizeof(message)];
        std::vsnprintf(text, sizeof(text), format, values);
        Of(file).Report(text);
        return 1;
    }

    void Open(const char* mode) {
        // A damaged file may request a huge block: allow only what is plausible for its size.
        constexpr size_t kMaxPiece = size_t{1} << 26;
        const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                                   TIFFOpenOptionsFree);
        if (options == nullptr) throw std::bad_alloc();
        TIFFOpenOptionsSetErrorHandlerExtR(options.get(), OnError, this);
        TIFFOpenOptionsSetWarningHandlerExtR(
            options.get(), [](TIFF*, void*, const char*, const char*, va_list) { return 1; }, nullptr);
        TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(),
                                            static_cast<tmsize_t>(std::max(kMaxPiece, 8 * input.size())));
        tiff = TIFFClientOpenExt(
            "picture", mode, this, OnRead, OnWrite, OnSeek, [](thandle_t) { return 0; }, OnSize, nullptr, nullptr,
            options.get());
        Require(tiff != nullptr);
    }
};

// How the file's pixels are converted to samples.
struct TiffPixels {
    uint16_t samples = 1, bits = 1, photometric = 0;
    bool isPlanar = false;
    bool isIndexed = false;  // has a palette or fewer than 8 bits
};

void RequireSupported(const TiffFile& file, TiffPixels& pixels, Picture& picture) {
    pixels.samples = file.Field<uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
    pixels.bits = file.Field<uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
    pixels.photometric = file.Field<uint16_t>(TIFFTAG_PHOTOMETRIC, 0xFFFF);
    pixels.isPlanar = file.Field<uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) != PLANARCONFIG_CONTIG;
    if (pixels.photometric == PHOTOMETRIC_YCBCR &&
        file.Field<uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE) == COMPRESSION_JPEG) {
        TIFFSetField(file, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        pixels.photometric = PHOTOMETRIC_RGB;
    }
    const auto kind = std::ranges::find(kPhotometrics, pixels.photometric, &Kind::first);
    if (kind == std::end(kPhotometrics)) throw ToolError("the picture's pixel format isn't supported");
    picture.colors = kind->second;

    const auto format = file.Field<uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    const bool isPalette = pixels.photometric == PHOTOMETRIC_PALETTE;
    const bool isFew = pixels.bits == 1 || pixels.bits == 2 || pixels.bits == 4;
    const bool isWhole = (pixels.bits == 8 || pixels.bits == 16) && format == SAMPLEFORMAT_UINT;
    // Float inks have no full scale to invert them by.
    const bool isFloat = pixels.bits == 32 && format == SAMPLEFORMAT_IEEEFP;
    const bool isKnown = isPalette ? isFew || pixels.bits == 8
                                   : isWhole || (isFloat && pixels.photometric != PHOTOMETRIC_MINISWHITE) ||
                                         (isFew && picture.colors == 1 && pixels.samples == 1);
    if (!isKnown) throw ToolError("this sample format of TIFF isn't supported");
    if (pixels.samples < picture.colors) ThrowDamaged("channels are missing");
    if (pixels.samples > picture.colors + (isPalette ? 0 : 1))
        throw ToolError("the picture has several extra channels");
    picture.hasAlpha = pixels.samples > picture.colors;
    uint16_t extras = 0;
    const uint16_t* kinds = nullptr;
    if (TIFFGetField(file, TIFFTAG_EXTRASAMPLES, &extras, &kinds) != 0 && extras > 0 &&
        kinds[0] == EXTRASAMPLE_ASSOCALPHA)
        throw ToolError("the picture has premultiplied transparency, which can't be undone exactly");
    picture.depth = std::max<int>(8, pixels.bits);
    pixels.isIndexed = isPalette || isFew;

    constexpr uint32_t kMaxSide = 1 << 28;
    const auto width = file.Field<uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
    const auto height = file.Field<uint32_t>(TIFFTAG_IMAGELENGTH, 0);
    if (width == 0 || height == 0 || width > kMaxSide || height > kMaxSide) ThrowDamaged("its size is invalid");
    picture.width = static_cast<int32_t>(width);
    picture.height = static_cast<int32_t>(height);
}

// Reads indexed pixels, which the library expands exactly. The result is gray if no pixel has a colour.
void ReadIndexed(const TiffFile& file, size_t fileSize, size_t maxSamples, Picture& picture) {
    constexpr size_t kRasterBytes = 4;  // of a pixel: red, green, blue, opacity
    picture.colors = kRasterBytes;
    AllocateSamples(fileSize, maxSamples, picture);
    // Keeps the file's orientation, so that nothing is rotated.
    const auto orientation = file.Field<uint16_t>(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    auto* const raster = reinterpret_cast<uint32_t*>(picture.samples.data());
    file.Require(TIFFReadRGBAImageOriented(file, static_cast<uint32_t>(picture.width),
                                           static_cast<uint32_t>(picture.height), raster, orientation, 1) != 0);
    const auto isGray = [](uint32_t pixel) {
        return TIFFGetR(pixel) == TIFFGetG(pixel) && TIFFGetR(pixel) == TIFFGetB(pixel);
    };
    const size_t count = picture.samples.size() / kRasterBytes;
    picture.colors = std::all_of(raster, raster + count, isGray) ? 1 : 3;
    uint8_t* to = picture.samples.data();
    for (const uint8_t* from = to; from != picture.samples.data() + count * kRasterBytes; from += kRasterBytes)
        to = std::copy_n(from, picture.colors, to);
    picture.samples.resize(picture.RowBytes() * static_cast<size_t>(picture.height));
}

// If there are no tiles, a row is read like a tile of the picture's width.
void ReadTiles(const TiffFile& file, const TiffPixels& pixels, Picture& picture) {
    const auto right = static_cast<uint32_t>(picture.width), bottom = static_cast<uint32_t>(picture.height);
    const bool isTiled = TIFFIsTiled(file) != 0;
    const uint32_t width = isTiled ? file.Field<uint32_t>(TIFFTAG_TILEWIDTH, 0) : right;
    const uint32_t height = isTiled ? file.Field<uint32_t>(TIFFTAG_TILELENGTH, 0) : 1;
    const tmsize_t size = isTiled ? TIFFTileSize(file) : TIFFScanlineSize(file);
    const size_t pixelBytes = picture.PixelBytes(), sampleBytes = static_cast<size_t>(picture.depth / 8);
    const size_t step = pixels.isPlanar ? sampleBytes : pixelBytes;  // in the file
    const size_t rowBytes = step * width;
    constexpr size_t kMaxTile = 1 << 28;
    if (width == 0 || height == 0 || size <= 0 || static_cast<size_t>(size) / height != rowBytes ||
        static_cast<size_t>(size) > std::max(kMaxTile, picture.samples.size()))
        ThrowDamaged("its strips or tiles are invalid");
    Bytes tile(static_cast<size_t>(size));
    const uint16_t planes = pixels.isPlanar ? pixels.samples : 1;
    for (uint16_t plane = 0; plane < planes; ++plane) {
        for (uint32_t top = 0; top < bottom; top += std::min(height, bottom - top)) {
            for (uint32_t left = 0; left < right; left += std::min(width, right - left)) {
                file.Require(isTiled ? TIFFReadTile(file, tile.data(), left, top, 0, plane) == size
                                     : TIFFReadScanline(file, tile.data(), top, plane) == 1);
                const size_t columns = std::min(width, right - left), rows = std::min(height, bottom - top);
                const size_t run = pixels.isPlanar ? 1 : columns;  // pixels copied at once
                for (size_t y = 0; y < rows; ++y) {
                    const uint8_t* const from = &tile[y * rowBytes];
                    uint8_t* const to = picture.Row(top + y) + left * pixelBytes + plane * sampleBytes;
                    for (size_t x = 0; x < columns; x += run)
                        std::memcpy(to + x * pixelBytes, from + x * step, run * step);
                }
            }
        }
    }
    if (pixels.photometric != PHOTOMETRIC_MINISWHITE) return;
    for (size_t at = 0; at < picture.samples.size(); at += pixelBytes)
        for (size_t i = 0; i < sampleBytes; ++i) picture.samples[at + i] ^= 0xFF;
}

void ReadMetadata(const TiffFile& file, std::span<const uint8_t> bytes, Picture& picture) {
    const auto unit = file.Field<uint16_t>(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    const double scale = unit == RESUNIT_INCH ? 1 : unit == RESUNIT_CENTIMETER ? kCentimetresPerInch : 0;
    picture.dpiX = file.Field<float>(TIFFTAG_XRESOLUTION, 0) * scale;
    picture.dpiY = file.Field<float>(TIFFTAG_YRESOLUTION, 0) * scale;
    SetExif(ExifReader(bytes).MakeBlock(), picture);
    const uint16_t ofBlock = picture.orientation;
    SetOrientation(file.Field<uint16_t>(TIFFTAG_ORIENTATION, 1), picture);
    if (picture.orientation != ofBlock) picture.exif.clear();  // they contradict each other: the visible one wins
    picture.profile = file.BytesField<Bytes>(TIFFTAG_ICCPROFILE);
    if (const auto xmp = file.BytesField<std::string>(TIFFTAG_XMLPACKET); !xmp.empty())
        picture.texts.push_back({kXmpKeyword, xmp});
    for (const auto& [tag, keyword] : kTextTags) {
        const char* text = nullptr;
        if (keyword != std::string("Comment") && TIFFGetField(file, tag, &text) != 0)
            picture.texts.push_back({keyword, text});
    }
    picture.morePages = TIFFLastDirectory(file) == 0;

    picture.compression = file.Field<uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    if (picture.compression == COMPRESSION_DEFLATE) picture.compression = COMPRESSION_ADOBE_DEFLATE;
    constexpr uint16_t kKept[] = {COMPRESSION_NONE, COMPRESSION_PACKBITS, COMPRESSION_ADOBE_DEFLATE};
    if (std::ranges::find(kKept, picture.compression) == std::end(kKept))
        picture.compression = COMPRESSION_LZW;  // lossless, and supported everywhere
    const auto predictor = file.Field<uint16_t>(TIFFTAG_PREDICTOR, PREDICTOR_NONE);
    if (predictor == PREDICTOR_HORIZONTAL || (predictor == PREDICTOR_FLOATINGPOINT && picture.depth == 32))
        picture.predictor = predictor;
}

void WriteTags(const TiffFile& file, const Picture& picture, const ExifReader& exif) {
    const auto set = [&](uint32_t tag, auto... values) { file.Require(TIFFSetField(file, tag, values...) != 0); };
    set(TIFFTAG_IMAGEWIDTH, picture.width);
    set(TIFFTAG_IMAGELENGTH, picture.height);
    set(TIFFTAG_BITSPERSAMPLE, picture.depth);
    set(TIFFTAG_SAMPLESPERPIXEL, static_cast<int>(picture.SamplesPerPixel()));
    set(TIFFTAG_PHOTOMETRIC, int{std::ranges::find(kPhotometrics, picture.colors, &Kind::second)->first});
    set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    set(TIFFTAG_SAMPLEFORMAT, picture.depth == 32 ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
    set(TIFFTAG_COMPRESSION, int{picture.compression});
    if (picture.predictor != PREDICTOR_NONE) set(TIFFTAG_PREDICTOR, int{picture.predictor});
    const uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
    if (picture.hasAlpha) set(TIFFTAG_EXTRASAMPLES, 1, &alpha);
    constexpr size_t kStripBytes = 1 << 18;
    set(TIFFTAG_ROWSPERSTRIP, static_cast<int>(std::max<size_t>(1, kStripBytes / picture.RowBytes())));
    set(TIFFTAG_ORIENTATION, int{picture.orientation});
    if (picture.dpiX > 0 && picture.dpiY > 0) {
        set(TIFFTAG_XRESOLUTION, picture.dpiX);
        set(TIFFTAG_YRESOLUTION, picture.dpiY);
        set(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    }
    const auto setBytes = [&](uint32_t tag, const auto& bytes) {
        if (!bytes.empty()) set(tag, static_cast<int>(bytes.size()), bytes.data());
    };
    const auto textOf = [&](const char* keyword) {
        const auto text = std::ranges::find(picture.texts, keyword, &Picture::Text::keyword);
        return text == picture.texts.end() ? std::string() : text->text;
    };
    setBytes(TIFFTAG_ICCPROFILE, picture.profile);
    setBytes(TIFFTAG_XMLPACKET, textOf(kXmpKeyword));
    for (const auto& [tag, keyword] : kTextTags) {
        std::string text = textOf(keyword);
        if (text.empty()) text = exif.Text(tag);
        if (!text.empty()) set(tag, text.c_str());
    }
    for (const uint16_t tag : {kExifTag, kGpsTag})
        if (const uint64_t place = exif.Number(tag); place != 0) set(tag, place);
}

}  // namespace

void ReadTiff(std::span<const uint8_t> bytes, size_t maxSamples, Picture& picture) {
    const TiffFile file(bytes);
    TiffPixels pixels;
    RequireSupported(file, pixels, picture);
    // Without a complete palette, the library would treat the indices as grays.
    if (ExifReader(bytes).Number(TIFFTAG_PHOTOMETRIC) == PHOTOMETRIC_PALETTE &&
        pixels.photometric != PHOTOMETRIC_PALETTE)
        ThrowDamaged("its palette is missing or too short");
    if (pixels.isIndexed) {
        ReadIndexed(file, bytes.size(), maxSamples, picture);
    } else {
        AllocateSamples(bytes.size(), maxSamples, picture);
        ReadTiles(file, pixels, picture);
    }
    ReadMetadata(file, bytes, picture);
}

Bytes WriteTiff(const Picture& picture) {
    // Files beyond 4 GB are BigTIFF, whose offsets are wider than those in an EXIF block.
    constexpr size_t kMaxSize = 0xF0000000;
    const bool isLarge = picture.samples.size() > kMaxSize;
    // A block begins like the file, so its offsets are valid in the file, too.
    const ExifReader exif(isLarge ? std::span<const uint8_t>() : picture.exif);
    TiffFile file(isLarge ? "w8" : exif.IsBigEndian() ? "wb" : "wl", isLarge ? Bytes() : picture.exif);
    WriteTags(file, picture, exif);
    Bytes row(picture.RowBytes());  // a copy, since the library changes it
    for (uint32_t y = 0; y < static_cast<uint32_t>(picture.height); ++y) {
        std::memcpy(row.data(), picture.Row(y), row.size());
        file.Require(TIFFWriteScanline(file, row.data(), y, 0) == 1);
    }
    file.Require(TIFFWriteDirectory(file) != 0);
    file.Close();
    return std::move(file.output);
}

}  // namespace stairmelt
