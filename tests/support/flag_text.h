// Edge maps from text rows and back: one hexadecimal digit a cell (R 1, D 2, X 4, A 8), a dot for no flag.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/edge_map.h"
#include "engine/flag_planes.h"

namespace stairmelt {

using FlagRows = std::vector<std::string>;

// Fills a fresh map. Rows are of one length.
inline void FillMap(EdgeMap& map, const FlagRows& rows) {
    const int32_t width = static_cast<int32_t>(rows[0].size());
    const int32_t height = static_cast<int32_t>(rows.size());
    map.Allocate(width, height);
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            const char digit = rows[static_cast<size_t>(y)][static_cast<size_t>(x)];
            *map.CellAt(x, y) = static_cast<uint8_t>(digit == '.' ? 0 : digit <= '9' ? digit - '0' : digit - 'a' + 10);
        }
    }
}

inline FlagRows RowsOf(const EdgeMap& map, int32_t width, int32_t height) {
    FlagRows rows;
    for (int32_t y = 0; y < height; ++y) {
        std::string row;
        for (int32_t x = 0; x < width; ++x) row += ".123456789abcdef"[*map.CellAt(x, y) & 15];
        rows.push_back(row);
    }
    return rows;
}

// The same of flag planes.
inline FlagRows RowsOf(const FlagPlanes& planes, int32_t width, int32_t height) {
    FlagRows rows;
    for (int32_t y = 0; y < height; ++y) {
        std::string row;
        for (int32_t x = 0; x < width; ++x) {
            int cell = 0;
            for (const uint8_t flag : {kFlagR, kFlagD, kFlagX, kFlagA}) {
                if (CursorAt(planes, x, y).Holds({0, 0, flag, true})) cell |= flag;
            }
            row += ".123456789abcdef"[cell];
        }
        rows.push_back(row);
    }
    return rows;
}

}  // namespace stairmelt
