#include "tools/pictures/png_chunks.h"

#include <gtest/gtest.h>

#include <string_view>

#include "tools/pictures/jpeg_profile.h"
#include "tools/tool_error.h"

namespace stairmelt {
namespace {

void AppendText(Bytes& to, std::string_view text) {
    for (char c : text) to.push_back(static_cast<uint8_t>(c));
}

// Checksums aren't looked at on the way in.
void AppendChunk(Bytes& to, std::string_view type, std::string_view data) {
    AppendNumber(to, static_cast<uint32_t>(data.size()), true);
    AppendText(to, type);
    AppendText(to, data);
    AppendText(to, "CRC!");
}

// `header`: depth and colour type, as the two characters that follow the size.
Bytes MakePng(std::string_view header, const std::vector<std::pair<std::string_view, std::string_view>>& chunks = {}) {
    Bytes file;
    AppendText(file, "\x89PNG\r\n\x1A\n");
    AppendChunk(file, "IHDR", std::string("\0\0\0\4\0\0\0\1", 8) + std::string(header) + std::string(3, '\0'));
    for (const auto& [type, data] : chunks) AppendChunk(file, type, data);
    AppendChunk(file, "IDAT", "pixels");
    AppendChunk(file, "IEND", "");
    return file;
}

TEST(PngChunks, FactsOfAFile) {
    using namespace std::string_view_literals;
    const PngFacts facts = ReadPngFacts(MakePng(
        "\x10\x02",
        {{"gAMA", "abcd"}, {"tRNS", "\1\2\3\4\5\6"}, {"pHYs", "\0\0\x2E\x23\0\0\x0B\x13\1"sv}, {"tEXt", "gone"}}));
    ASSERT_TRUE(facts.colorKey.has_value());
    EXPECT_EQ(*facts.colorKey, (std::array<uint16_t, 3>{0x0102, 0x0304, 0x0506}));
    EXPECT_NEAR(facts.dpiX, 299.9994, 1e-9);
    EXPECT_NEAR(facts.dpiY, 72.009, 1e-3);
    Bytes gamma;
    AppendChunk(gamma, "gAMA", "abcd");
    EXPECT_EQ(facts.colorChunks, gamma);

    EXPECT_TRUE(ReadPngFacts(MakePng("\x08\x04")).isGray);
    EXPECT_FALSE(ReadPngFacts(MakePng("\x08\x03", {{"tRNS", "\1\2\3\4\5\6"}})).colorKey.has_value());
    EXPECT_EQ(ReadPngFacts(MakePng("\x08\x02", {{"pHYs", "\0\0\0\1\0\0\0\2\0"sv}})).dpiX, 0) << "a shape only";
}

TEST(PngChunks, CutOffAnywhereIsRefused) {
    const Bytes whole = MakePng("\x08\x02");
    for (size_t size = 8; size < whole.size(); ++size) {
        EXPECT_THROW(ReadPngFacts({whole.data(), size}), ToolError) << size;
    }
}

TEST(JpegProfile, PartsAreJoinedInTheirOrder) {
    const auto part = [](Bytes& to, char number, char count, std::string_view text) {
        using namespace std::string_view_literals;
        AppendText(to, "\xFF\xE2");
        AppendNumber(to, static_cast<uint16_t>(2 + 14 + text.size()), true);
        AppendText(to, "ICC_PROFILE\0"sv);
        to.push_back(static_cast<uint8_t>(number));
        to.push_back(static_cast<uint8_t>(count));
        AppendText(to, text);
    };
    Bytes file = {0xFF, 0xD8, 0xFF, 0xE0, 0, 4, 1, 2};
    part(file, 2, 2, "file");
    EXPECT_TRUE(ReadJpegProfile(file).empty());  // the first part is missing
    part(file, 1, 2, "pro");
    AppendText(file, "\xFF\xDAscan");
    EXPECT_EQ(ReadJpegProfile(file), (Bytes{'p', 'r', 'o', 'f', 'i', 'l', 'e'}));
    for (size_t size = 0; size < file.size(); ++size) ReadJpegProfile({file.data(), size});
}

}  // namespace
}  // namespace stairmelt
