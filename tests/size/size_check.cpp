// Filters a picture whose size doesn't fit into 32 bits, and the same picture as small pieces that overlap. Exit status
// 0 means that the results are equal: size_check FORMAT WIDTH HEIGHT, with a format's name as in C3D16.
//
// The picture is made of small tiles with flat margins. No run is longer than a tile, so that the result at a pixel
// depends on the tile around it alone. The pieces overlap by more than that, and only their inner parts are compared.
// They begin at columns that are multiples of 4, because flags depend on a column's place in its group of four. The
// plain kernel filters them: it shares neither its flags nor its scan with the kernel that is checked.
#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "engine/kernel_sets.h"
#include "tests/support/kernel_list.h"
#include "tests/support/scenes.h"

namespace stairmelt {

namespace {

constexpr int kTile = 64;                // pixels in a row and a column of a tile
constexpr int kMargin = 4;               // of them, left flat at each side
constexpr int32_t kPiece = 4096;         // what counts of a piece
constexpr int32_t kOverlap = 2 * kTile;  // and what is filtered around it

[[noreturn]] void Fail(const std::string& text) {
    std::fprintf(stderr, "size_check: %s\n", text.c_str());
    std::exit(2);
}

// The pixels of an image, whose last byte is followed by a page that can't be touched.
class Pages {
public:
    explicit Pages(size_t bytes) : size((bytes + kPage - 1) / kPage * kPage) {
        memory =
            mmap(nullptr, size + kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (memory == MAP_FAILED) Fail("there isn't enough memory");
        mprotect(static_cast<uint8_t*>(memory) + size, kPage, PROT_NONE);
        first = static_cast<uint8_t*>(memory) + size - bytes;
    }
    ~Pages() { munmap(memory, size + kPage); }
    Pages(const Pages&) = delete;
    Pages& operator=(const Pages&) = delete;

    // From here on a write ends the program.
    void Seal() { mprotect(memory, size, PROT_READ); }

    uint8_t* first = nullptr;

private:
    static constexpr size_t kPage = 4096;
    size_t size;
    void* memory;
};

// A patchwork on a flat ground.
std::vector<uint8_t> DrawTile(const KernelCase& format, SeededRandom& random) {
    constexpr int kInner = kTile - 2 * kMargin;
    const std::vector<uint8_t> inner = Patchwork(format, kInner, kInner, random);
    const size_t rowBytes = static_cast<size_t>(kInner * format.PixelBytes());
    std::vector<uint8_t> tile;
    for (int i = 0; i < kTile * kTile * (format.channels + format.extra); ++i) AppendSample(tile, format.depth, 30);
    for (int y = 0; y < kInner; ++y) {
        const int pixel = (y + kMargin) * kTile + kMargin;
        std::memcpy(&tile[static_cast<size_t>(pixel * format.PixelBytes())], &inner[static_cast<size_t>(y) * rowBytes],
                    rowBytes);
    }
    return tile;
}

void DrawPicture(const KernelCase& format, const ImageView& picture) {
    SeededRandom random(7);
    std::vector<std::vector<uint8_t>> tiles;
    for (int i = 0; i < 61; ++i) tiles.push_back(DrawTile(format, random));
    const int pixelBytes = format.PixelBytes();
    std::vector<const uint8_t*> row;  // of tiles
    for (int32_t y = 0; y < picture.height; ++y) {
        if (y % kTile == 0) {
            row.clear();
            for (int32_t x = 0; x < picture.width; x += kTile) {
                row.push_back(tiles[static_cast<size_t>(random.Below(static_cast<int>(tiles.size())))].data());
            }
        }
        uint8_t* at = picture.base + static_cast<ptrdiff_t>(y) * picture.rowStride;
        int32_t left = picture.width;
        for (const uint8_t* const tile : row) {
            const size_t bytes = static_cast<size_t>(std::min(left, kTile) * pixelBytes);
            std::memcpy(at, tile + (y % kTile) * kTile * pixelBytes, bytes);
            at += bytes;
            left -= kTile;
        }
    }
}

int32_t Filter(Kernel kernel, const KernelCase& format, const ImageView& source, const ImageView& destination) {
    return kernel({10, 70, 0, nullptr, format.Key(), &source, &destination, 0, 0, source.height, source.width});
}

// A part of an image as an image of its own.
ImageView PartOf(const ImageView& image, const KernelCase& format, int32_t left, int32_t top, int32_t right,
                 int32_t bottom) {
    uint8_t* const base =
        image.base + static_cast<ptrdiff_t>(top) * image.rowStride + static_cast<ptrdiff_t>(left) * format.PixelBytes();
    return {right - left, bottom - top, base, image.rowStride};
}

struct Comparison {
    int64_t differing = 0;    // pixels of the pieces that aren't those of the whole
    int64_t changedLate = 0;  // pixels that the filter changed, beyond a given byte
};

// Filters the piece whose inner part begins at (left, top) and compares that part.
void ComparePiece(const KernelCase& format, const ImageView& source, const ImageView& whole, int32_t left, int32_t top,
                  int64_t late, Comparison& comparison) {
    const int32_t fromX = std::max(left - kOverlap, 0), fromY = std::max(top - kOverlap, 0);
    const int32_t right = std::min(left + kPiece, source.width), bottom = std::min(top + kPiece, source.height);
    const int32_t toX = std::min(right + kOverlap, source.width), toY = std::min(bottom + kOverlap, source.height);
    const ImageView from = PartOf(source, format, fromX, fromY, toX, toY);
    const int pixelBytes = format.PixelBytes();
    const int32_t rowBytes = from.width * pixelBytes;
    std::vector<uint8_t> pixels(static_cast<size_t>(rowBytes) * static_cast<size_t>(from.height));
    const ImageView piece = {from.width, from.height, pixels.data(), rowBytes};
    const auto rowOf = [](const ImageView& view, int32_t y) {
        return view.base + static_cast<ptrdiff_t>(y) * view.rowStride;
    };
    for (int32_t y = 0; y < from.height; ++y) {
        std::memcpy(rowOf(piece, y), rowOf(from, y), static_cast<size_t>(rowBytes));
    }
    if (Filter(kPlainKernels.Get(format.channels, format.depth, format.extra), format, from, piece) != kKernelDone) {
        Fail("a piece could not be filtered");
    }
    for (int32_t y = top; y < bottom; ++y) {
        const ptrdiff_t rowStart = static_cast<ptrdiff_t>(y) * whole.rowStride;
        for (int32_t x = left; x < right; ++x) {
            const ptrdiff_t at = rowStart + static_cast<ptrdiff_t>(x) * pixelBytes;
            const uint8_t* const small = rowOf(piece, y - fromY) + static_cast<ptrdiff_t>(x - fromX) * pixelBytes;
            const size_t size = static_cast<size_t>(pixelBytes);
            if (at >= late) comparison.changedLate += std::memcmp(whole.base + at, source.base + at, size) != 0;
            if (std::memcmp(whole.base + at, small, size) == 0) continue;
            if (comparison.differing++ == 0) std::printf("pixel (%d, %d) differs\n", x, y);
        }
    }
}

int CheckSize(const KernelCase& format, int32_t width, int32_t height) {
    const int32_t rowBytes = width * format.PixelBytes();
    const size_t bytes = static_cast<size_t>(rowBytes) * static_cast<size_t>(height);
    Pages sourcePages(bytes), destinationPages(bytes);
    const ImageView source = {width, height, sourcePages.first, rowBytes};
    const ImageView destination = {width, height, destinationPages.first, rowBytes};
    DrawPicture(format, source);
    std::memcpy(destination.base, source.base, bytes);
    sourcePages.Seal();
    if (Filter(format.kernel, format, source, destination) != kKernelDone) Fail("the picture could not be filtered");

    Comparison comparison;
    const int64_t late = format.depth == 8 ? int64_t{1} << 31 : int64_t{1} << 32;
    for (int32_t top = 0; top < height; top += kPiece) {
        for (int32_t left = 0; left < width; left += kPiece) {
            ComparePiece(format, source, destination, left, top, late, comparison);
        }
    }
    std::printf("%s, %d x %d: %lld pixels changed beyond byte 2^%d, %lld differ\n", format.name, width, height,
                static_cast<long long>(comparison.changedLate), format.depth == 8 ? 31 : 32,
                static_cast<long long>(comparison.differing));
    return comparison.changedLate != 0 && comparison.differing == 0 ? 0 : 1;
}

}  // namespace

}  // namespace stairmelt

int main(int argc, char** argv) {
    if (argc == 4) {
        for (const stairmelt::KernelCase& format : stairmelt::kAllKernels) {
            if (std::strcmp(argv[1], format.name) == 0) {
                return stairmelt::CheckSize(format, std::atoi(argv[2]), std::atoi(argv[3]));
            }
        }
    }
    std::fputs("usage: size_check FORMAT WIDTH HEIGHT\n", stderr);
    return 2;
}
