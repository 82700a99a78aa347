#include "tools/pictures/png_chunks.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "tools/tool_error.h"

namespace stairmelt {
namespace {

constexpr std::array<uint8_t, 8> kSignature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
// The colour type is made of these, with a bit of their own for palettes.
constexpr uint8_t kColorBit = 2, kAlphaBit = 4;
constexpr double kInchesPerMetre = 1 / 0.0254;

struct Chunk {
    std::string_view type;
    std::span<const uint8_t> data;
    std::span<const uint8_t> whole;  // length, type, data and checksum
};

std::vector<Chunk> ListChunks(std::span<const uint8_t> file) {
    std::vector<Chunk> chunks;
    size_t at = kSignature.size();
    while (chunks.empty() || chunks.back().type != "IEND") {
        if (file.size() < at + 12) throw ToolError("the PNG file is damaged: it ends early");
        const size_t length = GetNumber<uint32_t>(&file[at], true);
        if (length > file.size() - at - 12) throw ToolError("the PNG file is damaged: it ends early");
        const std::string_view type(reinterpret_cast<const char*>(&file[at + 4]), 4);
        chunks.push_back({type, file.subspan(at + 8, length), file.subspan(at, length + 12)});
        at += length + 12;
    }
    if (chunks[0].type != "IHDR" || chunks[0].data.size() != 13) throw ToolError("the PNG file has no header");
    return chunks;
}

uint32_t Crc32(std::span<const uint8_t> bytes) {
    uint32_t crc = 0xFFFFFFFF;
    for (uint8_t byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

uint32_t Adler32(std::span<const uint8_t> bytes) {
    uint32_t sum = 1, sumOfSums = 0;
    for (uint8_t byte : bytes) {
        sum = (sum + byte) % 65521;
        sumOfSums = (sumOfSums + sum) % 65521;
    }
    return sumOfSums << 16 | sum;
}

void Append(Bytes& to, std::span<const uint8_t> bytes) { to.insert(to.end(), bytes.begin(), bytes.end()); }

void AppendText(Bytes& to, std::string_view text) {
    for (char c : text) to.push_back(static_cast<uint8_t>(c));
}

void AppendChunk(Bytes& to, std::string_view type, std::span<const uint8_t> data) {
    AppendNumber(to, static_cast<uint32_t>(data.size()), true);
    const size_t checkedFrom = to.size();
    AppendText(to, type);
    Append(to, data);
    AppendNumber(to, Crc32(std::span(to).subspan(checkedFrom)), true);
}

// The format wants the profile deflated; blocks of stored bytes are deflated data too, and need no compressor.
Bytes ProfileChunkData(std::span<const uint8_t> profile) {
    constexpr size_t kLargestBlock = 65535;
    Bytes data;
    AppendText(data, "ICC profile");
    data.insert(data.end(), {0, 0, 0x78, 0x01});  // end of the name, method, header of the zlib stream
    for (size_t at = 0; at < profile.size(); at += kLargestBlock) {
        const std::span<const uint8_t> block = profile.subspan(at, std::min(kLargestBlock, profile.size() - at));
        const uint16_t length = static_cast<uint16_t>(block.size());
        data.push_back(at + kLargestBlock >= profile.size() ? 1 : 0);
        AppendNumber(data, length, false);
        AppendNumber(data, static_cast<uint16_t>(~length), false);
        Append(data, block);
    }
    AppendNumber(data, Adler32(profile), true);
    return data;
}

}  // namespace

PngFacts ReadPngFacts(std::span<const uint8_t> file) {
    constexpr std::string_view kColorChunks[] = {"iCCP", "sRGB", "gAMA", "cHRM", "cICP"};
    PngFacts facts;
    const std::vector<Chunk> chunks = ListChunks(file);
    facts.bitDepth = chunks[0].data[8];
    const uint8_t colorType = chunks[0].data[9];
    facts.isGray = (colorType & kColorBit) == 0;
    facts.hasAlpha = (colorType & kAlphaBit) != 0;
    for (const Chunk& chunk : chunks) {
        if (std::ranges::find(kColorChunks, chunk.type) != std::end(kColorChunks)) {
            Append(facts.colorChunks, chunk.whole);
        } else if (chunk.type == "pHYs" && chunk.data.size() == 9 && chunk.data[8] == 1) {
            facts.dpiX = GetNumber<uint32_t>(&chunk.data[0], true) / kInchesPerMetre;
            facts.dpiY = GetNumber<uint32_t>(&chunk.data[4], true) / kInchesPerMetre;
        } else if (chunk.type == "tRNS" && colorType == 0 && chunk.data.size() == 2) {
            const uint16_t gray = GetNumber<uint16_t>(&chunk.data[0], true);
            facts.colorKey = {gray, gray, gray};
        } else if (chunk.type == "tRNS" && colorType == 2 && chunk.data.size() == 6) {
            const uint8_t* at = chunk.data.data();
            facts.colorKey = {GetNumber<uint16_t>(at, true), GetNumber<uint16_t>(at + 2, true),
                              GetNumber<uint16_t>(at + 4, true)};
        }
    }
    return facts;
}

Bytes DressPng(std::span<const uint8_t> encoded, const Picture& picture) {
    const std::vector<Chunk> chunks = ListChunks(encoded);
    Bytes header(chunks[0].data.begin(), chunks[0].data.end());
    PutNumber(&header[0], static_cast<uint32_t>(picture.width), true);
    header[8] = static_cast<uint8_t>(picture.depth);
    header[9] = static_cast<uint8_t>((picture.colors == 3 ? kColorBit : 0) | (picture.hasAlpha ? kAlphaBit : 0));
    Bytes file(kSignature.begin(), kSignature.end());
    AppendChunk(file, "IHDR", header);
    if (!picture.pngColorChunks.empty()) {
        Append(file, picture.pngColorChunks);
    } else if (!picture.profile.empty()) {
        AppendChunk(file, "iCCP", ProfileChunkData(picture.profile));
    }
    if (picture.dpiX > 0 && picture.dpiY > 0) {
        Bytes resolution;
        AppendNumber(resolution, static_cast<uint32_t>(std::lround(picture.dpiX * kInchesPerMetre)), true);
        AppendNumber(resolution, static_cast<uint32_t>(std::lround(picture.dpiY * kInchesPerMetre)), true);
        resolution.push_back(1);  // per metre
        AppendChunk(file, "pHYs", resolution);
    }
    for (const Chunk& chunk : chunks) {
        if (chunk.type == "IDAT" || chunk.type == "IEND") Append(file, chunk.whole);
    }
    return file;
}

}  // namespace stairmelt
