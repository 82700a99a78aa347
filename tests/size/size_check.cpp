// Filters a picture whose size doesn't fit into 32 bits, and the same picture as small pieces that overlap: the results
// have to be equal. size_check FORMAT WIDTH HEIGHT, with a format's name as in C3D16. Exit status 0 means that they
// are.
//
// The picture is made of small tiles with flat margins, so that no run is longer than a tile and what is done at a
// pixel depends on the tile around it alone. The pieces overlap by more than that, and only what lies well inside them
// counts. They begin at columns that are multiples of 4, since flags depend on a column's place among four, and they
// are filtered by the plain kernel, which shares neither its flags nor its scan with the one that is checked.
#include <sys/mman.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
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

double Seconds() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

double PeakGigabytes() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) * 1024 / 1e9;
}

// Slanting strips and lone pixels on one background.
std::vector<uint8_t> DrawTile(const KernelCase& format, SeededRandom& random) {
    std::vector<int> levels(kTile * kTile, 30);
    constexpr int kInner = kTile - 2 * kMargin;
    for (int patch = 0; patch < 6; ++patch) {
        const int level = 60 + random.Below(190), slope = random.Below(13) - 6;
        const int left = random.Below(kInner), top = random.Below(kInner);
        const int width = 1 + random.Below(24), height = 1 + random.Below(24);
        const bool isSteep = random.Below(2) == 0;
        for (int i = 0; i < height; ++i) {
            for (int k = 0; k < width; ++k) {
                int x = left + k + i * slope / 4, y = top + i;
                if (isSteep) std::swap(x, y);
                if (x < 0 || x >= kInner || y < 0 || y >= kInner) continue;
                levels[static_cast<size_t>((y + kMargin) * kTile + x + kMargin)] = level;
            }
        }
    }
    std::vector<uint8_t> bytes;
    for (const int level : levels) {
        for (int c = 0; c < format.channels; ++c) AppendSample(bytes, format.depth, (level + 31 * c) % 256);
        if (format.extra != 0) AppendSample(bytes, format.depth, 255);
    }
    return bytes;
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
    int pieces = 0;
    int64_t differing = 0;    // pixels of the pieces that aren't those of the whole
    int64_t changed = 0;      // pixels that the filter changed
    int64_t changedLate = 0;  // of them, those beyond a given byte
    int32_t firstX = -1, firstY = -1;
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
    ++comparison.pieces;
    for (int32_t y = top; y < bottom; ++y) {
        const ptrdiff_t rowStart = static_cast<ptrdiff_t>(y) * whole.rowStride;
        for (int32_t x = left; x < right; ++x) {
            const ptrdiff_t at = rowStart + static_cast<ptrdiff_t>(x) * pixelBytes;
            const uint8_t* const small = rowOf(piece, y - fromY) + static_cast<ptrdiff_t>(x - fromX) * pixelBytes;
            if (std::memcmp(whole.base + at, source.base + at, static_cast<size_t>(pixelBytes)) != 0) {
                ++comparison.changed;
                comparison.changedLate += at >= late;
            }
            if (std::memcmp(whole.base + at, small, static_cast<size_t>(pixelBytes)) == 0) continue;
            if (comparison.differing++ == 0) {
                comparison.firstX = x;
                comparison.firstY = y;
            }
        }
    }
}

int CheckSize(const KernelCase& format, int32_t width, int32_t height) {
    const int32_t rowBytes = width * format.PixelBytes();
    const size_t bytes = static_cast<size_t>(rowBytes) * static_cast<size_t>(height);
    std::printf("%s, %d x %d: %.3f * 2^31 pixels, %.3f * 2^32 bytes\n", format.name, width, height,
                static_cast<double>(width) * height / 2147483648.0, static_cast<double>(bytes) / 4294967296.0);
    std::fflush(stdout);

    Pages sourcePages(bytes), destinationPages(bytes);
    const ImageView source = {width, height, sourcePages.first, rowBytes};
    const ImageView destination = {width, height, destinationPages.first, rowBytes};
    double start = Seconds();
    DrawPicture(format, source);
    std::memcpy(destination.base, source.base, bytes);
    sourcePages.Seal();
    std::printf("  drawn in %.1f s; two images of %.2f GB\n", Seconds() - start, static_cast<double>(bytes) / 1e9);
    std::fflush(stdout);

    start = Seconds();
    const int32_t result = Filter(format.kernel, format, source, destination);
    const double seconds = Seconds() - start;
    if (result != kKernelDone) Fail("the kernel returned " + std::to_string(result));
    std::printf("  filtered in %.1f s, %.0f megapixels per second; peak memory %.2f GB\n", seconds,
                static_cast<double>(width) * height / seconds / 1e6, PeakGigabytes());
    std::fflush(stdout);

    start = Seconds();
    Comparison comparison;
    const int64_t late = format.depth == 8 ? int64_t{1} << 31 : int64_t{1} << 32;
    for (int32_t top = 0; top < height; top += kPiece) {
        for (int32_t left = 0; left < width; left += kPiece) {
            ComparePiece(format, source, destination, left, top, late, comparison);
        }
    }
    std::printf("  %d pieces filtered and compared in %.1f s: %lld pixels changed, %lld of them beyond byte 2^%d\n",
                comparison.pieces, Seconds() - start, static_cast<long long>(comparison.changed),
                static_cast<long long>(comparison.changedLate), format.depth == 8 ? 31 : 32);
    if (comparison.differing != 0) {
        std::printf("  %lld pixels DIFFER, the first at %d, %d\n", static_cast<long long>(comparison.differing),
                    comparison.firstX, comparison.firstY);
        return 1;
    }
    std::printf("  all pixels are equal\n");
    return comparison.changed != 0 ? 0 : 1;
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
