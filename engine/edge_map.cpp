#include "engine/edge_map.h"

#include <cstdlib>

namespace stairmelt {

namespace {

constexpr int64_t kLeftGuard = 4;   // cells; keeps column 0 aligned to a word
constexpr int64_t kRightGuard = 1;  // cells, at least

}  // namespace

bool EdgeMap::Allocate(int32_t width, int32_t height) {
    const int64_t rowCells = width + kLeftGuard + kRightGuard;
    const int64_t rowWords = (rowCells + 3) / 4;
    const int64_t rowCount = static_cast<int64_t>(height) + 2;
    if (rowWords > INT32_MAX / 4) return false;
    const int64_t wordCount = rowWords * rowCount;  // below 2^61, as either factor is below 2^32
    if (wordCount < 0) return false;

    // calloc hands out zeroed pages as they are touched, so that flat parts of an image cost no memory traffic.
    memory = std::calloc(static_cast<size_t>(wordCount), 4);
    if (memory == nullptr) return false;
    stride = static_cast<int32_t>(rowWords * 4);
    cells = static_cast<uint8_t*>(memory) + stride + kLeftGuard;
    return true;
}

EdgeMap::~EdgeMap() { std::free(memory); }

}  // namespace stairmelt
