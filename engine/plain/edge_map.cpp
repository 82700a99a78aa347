#include "engine/plain/edge_map.h"

#include <cstdlib>

namespace stairmelt {

namespace {

constexpr int64_t kLeftGuard = 4;   // cells; keeps column 0 aligned to a word
constexpr int64_t kRightGuard = 1;  // cells, at least
constexpr int64_t kGuardRows = 2;   // one above, one below

}  // namespace

bool EdgeMap::Allocate(int32_t width, int32_t height) {
    const int64_t rowCells = width + kLeftGuard + kRightGuard;
    const int64_t rowWords = (rowCells + 3) / 4;
    const int64_t rowCount = height + kGuardRows;
    if (rowWords < 0 || rowWords > INT32_MAX / 4 || rowCount < 0) return false;
    const bool hasPixels = width >= 1 && height >= 1;
    const int64_t wordCount =
        rowWords * (hasPixels ? rowCount : kGuardRows);  // below 2^61: either factor is below 2^32
    static_assert(sizeof(size_t) == sizeof wordCount);

    // calloc hands out zeroed pages as they are touched, so that flat parts of an image cost no memory traffic.
    memory = std::calloc(static_cast<size_t>(wordCount), 4);
    if (memory == nullptr) return false;
    stride = static_cast<int32_t>(rowWords * 4);
    cells = static_cast<uint8_t*>(memory) + stride + kLeftGuard;
    return true;
}

EdgeMap::~EdgeMap() { std::free(memory); }

}  // namespace stairmelt
