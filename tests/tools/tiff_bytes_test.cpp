#include "tools/pictures/tiff_bytes.h"

#include <gtest/gtest.h>

#include "tools/tool_error.h"

namespace stairmelt {
namespace {

// A stored TIFF of one strip that begins at byte 8. Tags in `others` come on top of or instead of the usual ones.
Bytes MakeTiff(bool bigEndian, uint32_t width, uint32_t height, uint32_t photometric, uint32_t depth, uint32_t samples,
               const Bytes& pixels, const std::vector<std::pair<TiffTag, uint32_t>>& others = {}) {
    Bytes file(8);
    file[0] = file[1] = bigEndian ? 'M' : 'I';
    PutNumber(&file[2], uint16_t{42}, bigEndian);
    for (uint8_t byte : pixels) file.push_back(byte);
    TiffDirectory tags;
    tags.bigEndian = bigEndian;
    tags.SetNumbers(TiffTag::kBitsPerSample, TiffType::kShort, std::vector<uint32_t>(samples, depth));
    std::vector<std::pair<TiffTag, uint32_t>> numbers = {
        {TiffTag::kWidth, width},
        {TiffTag::kHeight, height},
        {TiffTag::kPhotometric, photometric},
        {TiffTag::kStripOffsets, 8},
        {TiffTag::kSamplesPerPixel, samples},
        {TiffTag::kRowsPerStrip, height},
        {TiffTag::kStripByteCounts, static_cast<uint32_t>(pixels.size())}};
    for (const auto& [tag, value] : others) {
        std::erase_if(numbers, [&](const auto& number) { return number.first == tag; });
        numbers.emplace_back(tag, value);
    }
    for (const auto& [tag, value] : numbers) tags.SetNumbers(tag, TiffType::kLong, {value});
    AppendTiffDirectory(file, tags);
    return file;
}

TEST(TiffBytes, ACodecIsShownBytesAndTheSamplesComeBack) {
    const struct {
        const char* name;
        bool bigEndian;
        uint32_t photometric, depth, samples;
        Bytes pixels;
        std::vector<std::pair<TiffTag, uint32_t>> others;
        Bytes expected;
    } cases[] = {
        {"ink, but not in the alpha", false, 0, 8, 2, {0, 7, 255, 8}, {{TiffTag::kExtraSamples, 0}}, {255, 7, 0, 8}},
        {"differences", false, 2, 8, 3, {1, 2, 3, 255, 1, 2}, {{TiffTag::kPredictor, 2}}, {1, 2, 3, 0, 3, 5}},
        {"floats", true, 1, 32, 1, {1, 2, 3, 4, 5, 6, 7, 8}, {{TiffTag::kSampleFormat, 3}}, {4, 3, 2, 1, 8, 7, 6, 5}},
    };
    for (const auto& c : cases) {
        Bytes file = MakeTiff(c.bigEndian, 2, 1, c.photometric, c.depth, c.samples, c.pixels, c.others);
        Picture picture;
        TiffByteLayout layout;
        ASSERT_TRUE(PresentTiffAsBytes(file, picture, layout)) << c.name;
        const uint32_t shown = ReadTiffDirectory(file).Number(TiffTag::kWidth, 0);
        EXPECT_EQ(shown, c.pixels.size()) << c.name;
        picture.samples = c.pixels;
        FinishTiffSamples(picture, layout);
        EXPECT_EQ(picture.samples, c.expected) << c.name;
    }
}

TEST(TiffBytes, DifferencesStartAfreshInEachTile) {
    Picture picture;
    picture.width = 4;
    picture.colors = 1;
    picture.depth = 8;
    picture.samples = {1, 1, 5, 1, 2, 1, 6, 1};
    TiffByteLayout layout;
    layout.differences = true;
    layout.segmentPixels = 2;
    FinishTiffSamples(picture, layout);
    EXPECT_EQ(picture.samples, (Bytes{1, 2, 5, 6, 2, 3, 6, 7}));
}

TEST(TiffBytes, LeavesToTheCodecWhatIsNotBytesAndRefusesWhatIsLost) {
    const struct {
        const char* name;
        bool isRefused;
        Bytes file;
    } cases[] = {
        {"palette", false, MakeTiff(false, 2, 1, 3, 8, 1, Bytes(2))},
        {"nibbles", false, MakeTiff(false, 2, 1, 1, 4, 1, Bytes(1))},
        {"JPEG", false, MakeTiff(false, 2, 1, 2, 8, 3, Bytes(6), {{TiffTag::kCompression, 7}})},
        {"signed", true, MakeTiff(false, 2, 1, 1, 16, 1, Bytes(4), {{TiffTag::kSampleFormat, 2}})},
        {"whole numbers, but of 32 bits", true, MakeTiff(false, 1, 1, 1, 32, 1, Bytes(4))},
        {"planar", true, MakeTiff(false, 2, 1, 2, 8, 3, Bytes(6), {{TiffTag::kPlanarConfiguration, 2}})},
        {"two extra channels", true, MakeTiff(false, 1, 1, 2, 8, 5, Bytes(6))},
        {"cut off", true, MakeTiff(false, 2, 1, 2, 8, 3, Bytes(6), {{TiffTag::kStripByteCounts, 0x7FFFFFFF}})},
        {"too wide", true, MakeTiff(false, 0x7FFFFFFF, 1, 2, 8, 3, Bytes(6))},
    };
    for (const auto& c : cases) {
        Bytes file = c.file;
        Picture picture;
        TiffByteLayout layout;
        if (c.isRefused) {
            EXPECT_THROW(PresentTiffAsBytes(file, picture, layout), ToolError) << c.name;
        } else {
            EXPECT_FALSE(PresentTiffAsBytes(file, picture, layout)) << c.name;
            EXPECT_EQ(file, c.file) << c.name;
        }
    }
}

// Damage of every byte: refused or read, but never beyond the file. The sanitizers watch.
TEST(TiffBytes, DamagedTagsAreNoWayOutOfTheFile) {
    const Bytes sound = MakeTiff(false, 2, 1, 2, 16, 4, Bytes(16), {{TiffTag::kOrientation, 6}});
    for (size_t at = 4; at < sound.size(); ++at) {
        for (uint8_t value : Bytes{0x00, 0x01, 0x7F, 0xFF}) {
            Bytes file = sound;
            file[at] = value;
            Picture picture;
            TiffByteLayout layout;
            try {
                PresentTiffAsBytes(file, picture, layout);
            } catch (const ToolError&) {
            }
        }
    }
}

}  // namespace
}  // namespace stairmelt
