#include "tools/pictures/pixel_layout.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "tools/tool_error.h"

namespace stairmelt {
namespace {

struct LayoutFacts {
    PixelLayout layout;
    size_t bits;     // from one pixel to the next
    int colors;      // 0: indexed
    bool hasAlpha;   //
    int depth;       // bits of an unpacked sample
    bool blueFirst;  //
};

constexpr LayoutFacts kLayouts[] = {
    {PixelLayout::kGray1, 1, 1, false, 8, false},    {PixelLayout::kGray2, 2, 1, false, 8, false},
    {PixelLayout::kGray4, 4, 1, false, 8, false},    {PixelLayout::kGray8, 8, 1, false, 8, false},
    {PixelLayout::kGray16, 16, 1, false, 16, false}, {PixelLayout::kBgr24, 24, 3, false, 8, true},
    {PixelLayout::kRgb24, 24, 3, false, 8, false},   {PixelLayout::kBgrx32, 32, 3, false, 8, true},
    {PixelLayout::kBgra32, 32, 3, true, 8, true},    {PixelLayout::kRgba32, 32, 3, true, 8, false},
    {PixelLayout::kRgb48, 48, 3, false, 16, false},  {PixelLayout::kRgba64, 64, 3, true, 16, false},
    {PixelLayout::kIndexed1, 1, 0, false, 8, false}, {PixelLayout::kIndexed2, 2, 0, false, 8, false},
    {PixelLayout::kIndexed4, 4, 0, false, 8, false}, {PixelLayout::kIndexed8, 8, 0, false, 8, false},
};
static_assert(std::size(kLayouts) == static_cast<size_t>(PixelLayout::kIndexed8) + 1);

const LayoutFacts& FactsOf(PixelLayout layout) { return kLayouts[static_cast<size_t>(layout)]; }

// The value of pixel x in a row of 1, 2, 4 or 8 bits each.
uint32_t BitsAt(const uint8_t* row, size_t x, size_t bits) {
    const size_t firstBit = x * bits;
    return static_cast<uint32_t>(row[firstBit / 8]) >> (8 - bits - firstBit % 8) & ((1U << bits) - 1);
}

bool IsGrayEntry(uint32_t entry) {
    return (entry >> 16 & 0xFF) == (entry & 0xFF) && (entry >> 8 & 0xFF) == (entry & 0xFF);
}

bool IsOpaqueEntry(uint32_t entry) { return entry >> 24 == 0xFF; }

void UnpackPalette(const CodecImage& image, size_t bits, Picture& picture) {
    picture.colors = std::ranges::all_of(image.palette, IsGrayEntry) ? 1 : 3;
    picture.hasAlpha = !std::ranges::all_of(image.palette, IsOpaqueEntry);
    constexpr uint32_t kOpaqueBlack = 0xFF000000;
    std::vector<uint32_t> palette = image.palette;
    palette.resize(size_t{1} << bits, kOpaqueBlack);
    const size_t rowBytes = RowBytes(image.layout, image.width);
    picture.samples.reserve(picture.RowBytes() * static_cast<size_t>(picture.height));
    for (size_t y = 0; y < static_cast<size_t>(image.height); ++y) {
        for (size_t x = 0; x < static_cast<size_t>(image.width); ++x) {
            const uint32_t entry = palette[BitsAt(&image.rows[y * rowBytes], x, bits)];
            picture.samples.push_back(static_cast<uint8_t>(entry >> 16));
            if (picture.colors == 3) {
                picture.samples.push_back(static_cast<uint8_t>(entry >> 8));
                picture.samples.push_back(static_cast<uint8_t>(entry));
            }
            if (picture.hasAlpha) picture.samples.push_back(static_cast<uint8_t>(entry >> 24));
        }
    }
}

void SpreadGray(const CodecImage& image, size_t bits, Picture& picture) {
    const uint32_t step = 255 / ((1U << bits) - 1);
    const size_t rowBytes = RowBytes(image.layout, image.width);
    picture.samples.reserve(picture.RowBytes() * static_cast<size_t>(picture.height));
    for (size_t y = 0; y < static_cast<size_t>(image.height); ++y) {
        for (size_t x = 0; x < static_cast<size_t>(image.width); ++x) {
            picture.samples.push_back(static_cast<uint8_t>(BitsAt(&image.rows[y * rowBytes], x, bits) * step));
        }
    }
}

void SwapRedAndBlue(Bytes& samples, size_t pixelBytes) {
    for (size_t at = 0; at + pixelBytes <= samples.size(); at += pixelBytes) std::swap(samples[at], samples[at + 2]);
}

// Where some bytes of each pixel stand: from one pixel to the next, and from the pixel's beginning.
struct Place {
    size_t step, at;
};

// Copies `size` bytes of each pixel to their new place.
void Move(const Bytes& from, Place source, Bytes& to, Place destination, size_t size) {
    const size_t pixels = from.size() / source.step;
    for (size_t i = 0; i < pixels; ++i) {
        std::memcpy(&to[i * destination.step + destination.at], &from[i * source.step + source.at], size);
    }
}

// Turns three equal channels into one.
void DropToGray(Picture& picture) {
    const size_t sampleBytes = static_cast<size_t>(picture.depth / 8);
    const size_t before = picture.PixelBytes();
    const size_t pixels = picture.samples.size() / before;
    picture.colors = 1;
    const size_t after = picture.PixelBytes();
    Bytes gray(pixels * after);
    Move(picture.samples, {before, 0}, gray, {after, 0}, sampleBytes);
    if (picture.hasAlpha) {
        Move(picture.samples, {before, before - sampleBytes}, gray, {after, after - sampleBytes}, sampleBytes);
    }
    picture.samples = std::move(gray);
}

// Gives the picture an alpha sample: 0 where the colours are the key's, full elsewhere.
void ApplyColorKey(const PngFacts& facts, Picture& picture) {
    // The key has the file's depth; gray of less than 8 bits has been spread over 0..255.
    const uint32_t spread = facts.bitDepth < 8 ? 255U / ((1U << facts.bitDepth) - 1) : 1;
    const size_t sampleBytes = static_cast<size_t>(picture.depth / 8);
    uint8_t key[6];
    for (size_t i = 0; i < 3; ++i) {
        const uint16_t value = static_cast<uint16_t>((*facts.colorKey)[i] * spread);
        if (sampleBytes == 2) {
            std::memcpy(key + 2 * i, &value, 2);
        } else {
            key[i] = static_cast<uint8_t>(value);
        }
    }
    const size_t before = picture.PixelBytes();
    const size_t pixels = picture.samples.size() / before;
    picture.hasAlpha = true;
    const size_t after = picture.PixelBytes();
    Bytes opaque(pixels * after, 0xFF);
    Move(picture.samples, {before, 0}, opaque, {after, 0}, before);
    for (size_t at = 0; at < opaque.size(); at += after) {
        if (std::memcmp(&opaque[at], key, before) == 0) std::memset(&opaque[at + before], 0, sampleBytes);
    }
    picture.samples = std::move(opaque);
}

}  // namespace

size_t BitsPerPixel(PixelLayout layout) { return FactsOf(layout).bits; }

size_t RowBytes(PixelLayout layout, int32_t width) {
    return (static_cast<size_t>(width) * BitsPerPixel(layout) + 7) / 8;
}

void UnpackPixels(const CodecImage& image, Picture& picture) {
    const LayoutFacts& facts = FactsOf(image.layout);
    picture.width = image.width;
    picture.height = image.height;
    picture.colors = facts.colors;
    picture.hasAlpha = facts.hasAlpha;
    picture.depth = facts.depth;
    picture.samples.clear();
    if (facts.colors == 0) {
        UnpackPalette(image, facts.bits, picture);
    } else if (facts.bits < 8) {
        SpreadGray(image, facts.bits, picture);
    } else {
        const size_t from = facts.bits / 8;
        const size_t pixelBytes = picture.PixelBytes();
        picture.samples.resize(image.rows.size() / from * pixelBytes);
        Move(image.rows, {from, 0}, picture.samples, {pixelBytes, 0}, pixelBytes);
        if (facts.blueFirst) SwapRedAndBlue(picture.samples, pixelBytes);
    }
}

void RestorePngChannels(const PngFacts& facts, Picture& picture) {
    if (facts.bitDepth == 16 && picture.depth != 16) throw ToolError("this system reads only 8 of the PNG's 16 bits");
    if (facts.hasAlpha && !picture.hasAlpha) throw ToolError("this system reads the PNG without its transparency");
    if (facts.isGray && picture.colors == 3) DropToGray(picture);
    if (facts.colorKey && !picture.hasAlpha) ApplyColorKey(facts, picture);
}

Bytes PackPixels(const Picture& picture, PixelLayout layout) {
    Bytes rows = picture.samples;
    if (FactsOf(layout).blueFirst) SwapRedAndBlue(rows, picture.PixelBytes());
    return rows;
}

}  // namespace stairmelt
