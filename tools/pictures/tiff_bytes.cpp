#include "tools/pictures/tiff_bytes.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "tools/tool_error.h"

namespace stairmelt {
namespace {

enum Compression : uint32_t { kStored = 1, kLzw = 5, kDeflate = 8, kPackBits = 32773, kOldDeflate = 32946 };
enum Photometric : uint32_t { kWhiteIsZero = 0, kBlackIsZero = 1, kRgb = 2, kSeparated = 5 };
enum ExtraSample : uint32_t { kUnspecified = 0, kPremultiplied = 1, kTransparency = 2 };
enum SampleFormat : uint32_t { kUnsigned = 1, kFloat = 3 };
constexpr uint32_t kInch = 2, kCentimetre = 3;
constexpr double kCentimetresPerInch = 2.54;

int ColorsOf(uint32_t photometric) {
    switch (photometric) {
        case kWhiteIsZero:
        case kBlackIsZero: return 1;
        case kRgb: return 3;
        case kSeparated: return 4;
        default: return 0;
    }
}

bool IsByteCompression(uint32_t compression) {
    return compression == kStored || compression == kLzw || compression == kDeflate || compression == kPackBits ||
           compression == kOldDeflate;
}

void ReadSurroundings(const TiffDirectory& tags, Picture& picture) {
    const uint32_t unit = tags.Number(TiffTag::kResolutionUnit, kInch);
    const double scale = unit == kInch ? 1 : unit == kCentimetre ? kCentimetresPerInch : 0;
    picture.dpiX = tags.Rational(TiffTag::kXResolution) * scale;
    picture.dpiY = tags.Rational(TiffTag::kYResolution) * scale;
    if (const TiffDirectory::Entry* profile = tags.Find(TiffTag::kProfile)) picture.profile = profile->data;
    const uint32_t rotation = tags.Number(TiffTag::kOrientation, 1);
    picture.rotation = rotation >= 1 && rotation <= 8 ? static_cast<uint16_t>(rotation) : 1;
    picture.morePages = tags.hasNext;
}

void RequireWithinFile(const std::vector<uint32_t>& offsets, const std::vector<uint32_t>& sizes, size_t fileSize) {
    bool whole = !offsets.empty() && offsets.size() == sizes.size();
    for (size_t i = 0; whole && i < offsets.size(); ++i) {
        whole = offsets[i] <= fileSize && sizes[i] <= fileSize - offsets[i];
    }
    if (!whole) throw ToolError("the TIFF file is damaged: its pixels don't lie within it");
}

template <class Sample>
void AddUpRow(uint8_t* row, size_t samples, size_t perPixel, size_t segmentSamples) {
    for (size_t i = perPixel; i < samples; ++i) {
        if (i % segmentSamples < perPixel) continue;  // the first pixel of a tile stands for itself
        Sample value, before;
        std::memcpy(&value, row + i * sizeof(Sample), sizeof(Sample));
        std::memcpy(&before, row + (i - perPixel) * sizeof(Sample), sizeof(Sample));
        value = static_cast<Sample>(value + before);
        std::memcpy(row + i * sizeof(Sample), &value, sizeof(Sample));
    }
}

}  // namespace

bool PresentTiffAsBytes(Bytes& file, Picture& picture, TiffByteLayout& layout) {
    const TiffDirectory tags = ReadTiffDirectory(file);
    ReadSurroundings(tags, picture);

    const uint32_t photometric = tags.Number(TiffTag::kPhotometric, 0xFFFF);
    const uint32_t samples = tags.Number(TiffTag::kSamplesPerPixel, 1);
    const std::vector<uint32_t> bits = tags.Numbers(TiffTag::kBitsPerSample, {1});
    const std::vector<uint32_t> formats = tags.Numbers(TiffTag::kSampleFormat, {kUnsigned});
    const uint32_t predictor = tags.Number(TiffTag::kPredictor, 1);
    const uint32_t compression = tags.Number(TiffTag::kCompression, kStored);
    const int colors = ColorsOf(photometric);
    if (bits.empty() || formats.empty()) throw ToolError("the TIFF file is damaged: a tag is empty");
    const uint32_t depth = bits[0];
    const uint32_t format = formats[0];

    if (colors == 0 || depth < 8 || !IsByteCompression(compression)) return false;

    const bool areNumbers = (depth == 8 || depth == 16) ? format == kUnsigned : depth == 32 && format == kFloat;
    const bool areAlike = std::ranges::count(bits, depth) == static_cast<ptrdiff_t>(bits.size());
    const bool hasKnownPredictor = predictor == 1 || (predictor == 2 && depth != 32);
    // Floats that count ink have no full scale to be taken from.
    const bool countsKnownInk = photometric != kWhiteIsZero || depth != 32;
    if (!areNumbers || !areAlike || !hasKnownPredictor || !countsKnownInk || tags.Number(TiffTag::kFillOrder, 1) != 1) {
        throw ToolError("the TIFF file's samples are of a kind that isn't supported");
    }
    if (tags.Number(TiffTag::kPlanarConfiguration, 1) != 1 && samples != 1) {
        throw ToolError("the TIFF file keeps its channels apart (planar), which isn't supported");
    }
    if (samples < static_cast<uint32_t>(colors)) throw ToolError("the TIFF file is damaged: it lacks channels");
    if (samples > static_cast<uint32_t>(colors) + 1) throw ToolError("the picture has several extra channels");
    picture.colors = colors;
    picture.hasAlpha = samples > static_cast<uint32_t>(colors);
    if (picture.hasAlpha && tags.Number(TiffTag::kExtraSamples, kUnspecified) == kPremultiplied) {
        throw ToolError("the picture's colours are multiplied by its transparency, which can't be undone exactly");
    }

    constexpr uint32_t kMost = std::numeric_limits<int32_t>::max();
    const uint32_t width = tags.Number(TiffTag::kWidth, 0);
    const uint32_t height = tags.Number(TiffTag::kHeight, 0);
    const uint32_t pixelBytes = samples * (depth / 8);
    if (width == 0 || height == 0 || width > kMost / pixelBytes || height > kMost) {
        throw ToolError("the TIFF file is damaged: its size makes no sense");
    }
    picture.width = static_cast<int32_t>(width);
    picture.height = static_cast<int32_t>(height);
    picture.depth = static_cast<int>(depth);

    TiffDirectory bytes;
    bytes.bigEndian = tags.bigEndian;
    bytes.SetNumbers(TiffTag::kWidth, TiffType::kLong, {width * pixelBytes});
    bytes.SetNumbers(TiffTag::kHeight, TiffType::kLong, {height});
    bytes.SetNumbers(TiffTag::kBitsPerSample, TiffType::kShort, {8});
    bytes.SetNumbers(TiffTag::kCompression, TiffType::kShort, {compression == kOldDeflate ? kDeflate : compression});
    bytes.SetNumbers(TiffTag::kPhotometric, TiffType::kShort, {kBlackIsZero});
    bytes.SetNumbers(TiffTag::kSamplesPerPixel, TiffType::kShort, {1});
    bytes.SetNumbers(TiffTag::kPlanarConfiguration, TiffType::kShort, {1});
    const uint32_t tileWidth = tags.Number(TiffTag::kTileWidth, 0);
    if (tileWidth != 0) {
        if (tileWidth > kMost / pixelBytes) throw ToolError("the TIFF file is damaged: its tiles make no sense");
        RequireWithinFile(tags.Numbers(TiffTag::kTileOffsets), tags.Numbers(TiffTag::kTileByteCounts), file.size());
        bytes.SetNumbers(TiffTag::kTileWidth, TiffType::kLong, {tileWidth * pixelBytes});
        for (TiffTag tag : {TiffTag::kTileHeight, TiffTag::kTileOffsets, TiffTag::kTileByteCounts}) {
            bytes.CopyFrom(tags, tag);
        }
    } else {
        RequireWithinFile(tags.Numbers(TiffTag::kStripOffsets), tags.Numbers(TiffTag::kStripByteCounts), file.size());
        for (TiffTag tag : {TiffTag::kRowsPerStrip, TiffTag::kStripOffsets, TiffTag::kStripByteCounts}) {
            bytes.CopyFrom(tags, tag);
        }
    }
    AppendTiffDirectory(file, std::move(bytes));
    layout = {tags.bigEndian, photometric == kWhiteIsZero, predictor == 2, tileWidth != 0 ? tileWidth : width};
    return true;
}

void FinishTiffSamples(Picture& picture, const TiffByteLayout& layout) {
    const size_t sampleBytes = static_cast<size_t>(picture.depth / 8);
    const size_t rowBytes = picture.RowBytes();
    const size_t perPixel = picture.SamplesPerPixel();
    if (layout.bigEndian && sampleBytes > 1) {
        for (size_t at = 0; at < picture.samples.size(); at += sampleBytes) {
            std::reverse(&picture.samples[at], &picture.samples[at] + sampleBytes);
        }
    }
    if (layout.differences) {
        for (size_t at = 0; at < picture.samples.size(); at += rowBytes) {
            const auto addUpRow = sampleBytes == 1 ? AddUpRow<uint8_t> : AddUpRow<uint16_t>;
            addUpRow(&picture.samples[at], rowBytes / sampleBytes, perPixel, layout.segmentPixels * perPixel);
        }
    }
    if (layout.whiteIsZero) {
        // Turning every bit over is full scale minus the value. The alpha sample doesn't count ink.
        const size_t pixelBytes = picture.PixelBytes();
        for (size_t at = 0; at < picture.samples.size(); at += pixelBytes) {
            for (size_t i = 0; i < sampleBytes; ++i) picture.samples[at + i] ^= 0xFF;
        }
    }
}

void DescribeTiff(Bytes& encoded, const Picture& picture) {
    const TiffDirectory written = ReadTiffDirectory(encoded);
    if (written.bigEndian) throw ToolError("the system's TIFF encoder writes another byte order than the machine's");
    TiffDirectory tags;
    const uint32_t samples = static_cast<uint32_t>(picture.SamplesPerPixel());
    const uint32_t photometric = picture.colors == 1 ? kBlackIsZero : picture.colors == 3 ? kRgb : kSeparated;
    const std::vector<uint32_t> bits(samples, static_cast<uint32_t>(picture.depth));
    const std::vector<uint32_t> formats(samples, picture.depth == 32 ? kFloat : kUnsigned);
    tags.SetNumbers(TiffTag::kWidth, TiffType::kLong, {static_cast<uint32_t>(picture.width)});
    tags.SetNumbers(TiffTag::kBitsPerSample, TiffType::kShort, bits);
    tags.SetNumbers(TiffTag::kPhotometric, TiffType::kShort, {photometric});
    tags.SetNumbers(TiffTag::kOrientation, TiffType::kShort, {picture.rotation});
    tags.SetNumbers(TiffTag::kSamplesPerPixel, TiffType::kShort, {samples});
    tags.SetNumbers(TiffTag::kSampleFormat, TiffType::kShort, formats);
    if (picture.hasAlpha) tags.SetNumbers(TiffTag::kExtraSamples, TiffType::kShort, {kTransparency});
    if (picture.dpiX > 0 && picture.dpiY > 0) {
        tags.SetRational(TiffTag::kXResolution, picture.dpiX);
        tags.SetRational(TiffTag::kYResolution, picture.dpiY);
        tags.SetNumbers(TiffTag::kResolutionUnit, TiffType::kShort, {kInch});
    }
    if (!picture.profile.empty()) tags.SetBytes(TiffTag::kProfile, picture.profile);
    for (TiffTag tag : {TiffTag::kHeight, TiffTag::kCompression, TiffTag::kStripOffsets, TiffTag::kRowsPerStrip,
                        TiffTag::kStripByteCounts, TiffTag::kPlanarConfiguration}) {
        tags.CopyFrom(written, tag);
    }
    AppendTiffDirectory(encoded, std::move(tags));
}

}  // namespace stairmelt
