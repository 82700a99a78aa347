#include "fuzz/drawn_picture.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "tests/support/scenes.h"

namespace stairmelt {

namespace {

constexpr int kColours = 8;
constexpr int kMaxShapes = 40;

constexpr uint32_t kSpecial8[] = {0, 1, 127, 128, 254, 255};
constexpr uint32_t kSpecial16[] = {0, 1, 16384, 32767, 32768, 32769, 40000, 65535};
constexpr uint32_t kSpecial32[] = {
    0x80000000, 0x3F800000, 0xBF800000, 0x3F800001, 0x3F7FFFFF,  // -0, 1, -1, next to 1
    0x7FC00000, 0xFFC00000, 0x7F800001, 0x7F800000, 0xFF800000,  // not numbers, infinities
    0x00000001, 0x807FFFFF, 0x7F7FFFFF, 0xFF7FFFFF, 0x4F000000,  // denormals, the largest, 2^31
};

template <size_t Count>
uint32_t Pick(const uint32_t (&samples)[Count], ByteSource& bytes) {
    return samples[bytes.Byte() % Count];
}

void AppendBits(std::vector<uint8_t>& pixel, int depth, uint32_t bits) {
    for (int shift = 0; shift < depth; shift += 8) pixel.push_back(static_cast<uint8_t>(bits >> shift));
}

void AppendSpecial(std::vector<uint8_t>& pixel, int depth, ByteSource& bytes) {
    AppendBits(pixel, depth,
               depth == 8    ? Pick(kSpecial8, bytes)
               : depth == 16 ? Pick(kSpecial16, bytes)
                             : Pick(kSpecial32, bytes));
}

// One pixel value of the format. `previous` has the same size or is empty.
std::vector<uint8_t> ReadColour(const KernelCase& format, const std::vector<uint8_t>& previous, ByteSource& bytes) {
    std::vector<uint8_t> pixel;
    const int kind = bytes.Below(8);
    if (kind == 7 && !previous.empty()) {  // nearly the colour before
        pixel = previous;
        uint8_t& changed = pixel[static_cast<size_t>(bytes.Byte()) % pixel.size()];
        changed = static_cast<uint8_t>(changed ^ bytes.Byte());
        return pixel;
    }
    const int level = bytes.Byte();
    for (int c = 0; c < format.channels; ++c) {
        if (kind <= 2) {
            AppendSample(pixel, format.depth, level);
        } else if (kind == 3) {
            AppendSample(pixel, format.depth, (level + c * 31) % 256);
        } else if (kind == 4) {
            AppendSample(pixel, format.depth, bytes.Byte());
        } else if (kind == 5) {
            AppendBits(pixel, format.depth, bytes.Word());
        } else {
            AppendSpecial(pixel, format.depth, bytes);
        }
    }
    if (format.extra == 0) return pixel;
    switch (bytes.Below(6)) {
        case 0: AppendSample(pixel, format.depth, 0); break;
        case 1: AppendSample(pixel, format.depth, bytes.Byte()); break;
        case 2: AppendSpecial(pixel, format.depth, bytes); break;
        default: AppendSample(pixel, format.depth, 255);
    }
    return pixel;
}

// The number of each pixel's colour, and the shapes that set it, clipped to the picture.
struct Canvas {
    int width, height;
    std::vector<uint8_t> colours;

    void Set(int x, int y, int colour) {
        if (x < 0 || y < 0 || x >= width || y >= height) return;
        colours[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)] =
            static_cast<uint8_t>(colour);
    }
};

// A slanted patch.
void DrawPatch(Canvas& canvas, ByteSource& bytes) {
    const int colour = bytes.Below(kColours);
    const int left = bytes.Between(-1, canvas.width), top = bytes.Between(-1, canvas.height);
    const int width = bytes.Between(1, 40), height = bytes.Between(1, 40), slope = bytes.Between(-4, 4);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) canvas.Set(left + x + y * slope / 2, top + y, colour);
}

// Parallel lines of any slope all over the picture.
void DrawHatching(Canvas& canvas, ByteSource& bytes) {
    const int colour = bytes.Below(kColours);
    const int dx = bytes.Between(-9, 9), dy = bytes.Between(-9, 9), period = bytes.Between(2, 60);
    const int ink = bytes.Below(period), phase = bytes.Below(period);
    for (int y = 0; y < canvas.height; ++y)
        for (int x = 0; x < canvas.width; ++x)
            if (std::abs(x * dx + y * dy + phase) % period <= ink) canvas.Set(x, y, colour);
}

// Everything on one side of a stair. The input determines the lengths of the treads.
void DrawStair(Canvas& canvas, ByteSource& bytes) {
    const int colour = bytes.Below(kColours), form = bytes.Below(8);
    const bool isUpright = form % 2 != 0, goesBack = form / 2 % 2 != 0;
    const int length = isUpright ? canvas.height : canvas.width, depth = isUpright ? canvas.width : canvas.height;
    int edge = bytes.Below(depth + 1), tread = bytes.Between(1, 64);
    const bool isEven = form / 4 != 0;  // all treads equally long
    for (int i = 0, left = tread; i < length; ++i) {
        for (int j = edge; j < depth; ++j) canvas.Set(isUpright ? j : i, isUpright ? i : j, colour);
        if (--left > 0) continue;
        edge = std::max(0, edge + (goesBack ? -1 : 1));
        if (!isEven) tread = bytes.Between(1, 32);
        left = tread;
    }
}

// A small field in two colours, with one bit of input per pixel.
void DrawStamp(Canvas& canvas, ByteSource& bytes) {
    const int paper = bytes.Below(kColours), ink = bytes.Below(kColours);
    const int left = bytes.Below(canvas.width), top = bytes.Below(canvas.height);
    const int width = bytes.Between(1, 32), height = bytes.Between(1, 16);
    int bits = 0;
    for (int i = 0; i < width * height; ++i) {
        bits = i % 8 == 0 ? bytes.Byte() : bits >> 1;
        canvas.Set(left + i % width, top + i / width, (bits & 1) != 0 ? ink : paper);
    }
}

constexpr void (*kShapes[])(Canvas& canvas, ByteSource& bytes) = {DrawPatch, DrawHatching, DrawStair, DrawStamp};

}  // namespace

std::vector<uint8_t> DrawPicture(const KernelCase& format, int32_t width, int32_t height, ByteSource& bytes) {
    if (width <= 0 || height <= 0) return {};
    std::vector<uint8_t> palette[kColours];
    const int colours = bytes.Between(2, kColours);
    for (int i = 0; i < kColours; ++i)
        palette[i] =
            i < colours ? ReadColour(format, i > 0 ? palette[i - 1] : palette[0], bytes) : palette[i % colours];

    Canvas canvas{width, height, {}};
    canvas.colours.resize(static_cast<size_t>(width) * static_cast<size_t>(height));
    const int noise = bytes.Below(16);  // one picture in 16 ends with raw samples
    for (int i = 0; i < kMaxShapes && !bytes.IsEmpty(); ++i) kShapes[bytes.Byte() % std::size(kShapes)](canvas, bytes);

    std::vector<uint8_t> pixels;
    pixels.reserve(canvas.colours.size() * static_cast<size_t>(format.PixelBytes()));
    for (const uint8_t colour : canvas.colours)
        pixels.insert(pixels.end(), palette[colour].begin(), palette[colour].end());
    if (noise == 15) {
        for (size_t i = bytes.Byte(); i < pixels.size() && !bytes.IsEmpty(); ++i) pixels[i] = bytes.Byte();
    }
    return pixels;
}

}  // namespace stairmelt
