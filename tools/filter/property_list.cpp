#include "tools/filter/property_list.h"

#include <algorithm>

#include "host/four_char_code.h"
#include "tools/byte_order.h"
#include "tools/tool_error.h"

namespace stairmelt {

std::string EntryPointName(std::span<const uint8_t> list) {
    constexpr uint32_t kVendor = FourCharCode("8BIM"), kKind = FourCharCode("kind"), kFilter = FourCharCode("8BFM");
    constexpr uint32_t kEntryPoint64 = FourCharCode("8664");
    constexpr size_t kListHeader = 10;      // a word, the version, the count
    constexpr size_t kPropertyHeader = 16;  // vendor, key, identifier, length
    const ToolError damaged("has a damaged property list");
    if (list.size() < kListHeader) throw damaged;
    const uint32_t count = GetNumber<uint32_t>(&list[6], false);
    bool isFilter = false;
    std::string name;
    size_t at = kListHeader;
    for (uint32_t i = 0; i < count; ++i) {
        if (list.size() - at < kPropertyHeader) throw damaged;
        const uint32_t vendor = GetNumber<uint32_t>(&list[at], false);
        const uint32_t key = GetNumber<uint32_t>(&list[at + 4], false);
        const size_t length = GetNumber<uint32_t>(&list[at + 12], false);
        at += kPropertyHeader;
        if (length > list.size() - at) throw damaged;
        const std::span<const uint8_t> data = list.subspan(at, length);
        if (vendor == kVendor && key == kKind && length >= 4)
            isFilter = GetNumber<uint32_t>(&data[0], false) == kFilter;
        if (vendor == kVendor && key == kEntryPoint64) name.assign(data.begin(), std::ranges::find(data, uint8_t{0}));
        // Lengths that aren't multiples of 4 are followed by padding; the last property may end without it.
        at = std::min((at + length - kListHeader + 3) / 4 * 4 + kListHeader, list.size());
    }
    if (!isFilter) throw ToolError("isn't a filter");
    if (name.empty()) throw ToolError("has no entry point for 64-bit Windows");
    return name;
}

}  // namespace stairmelt
