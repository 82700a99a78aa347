#include "tools/pictures/jpeg_profile.h"

#include <algorithm>
#include <map>
#include <string_view>

namespace stairmelt {

Bytes ReadJpegProfile(std::span<const uint8_t> file) {
    constexpr uint8_t kApp2 = 0xE2, kStartOfScan = 0xDA;
    constexpr std::string_view kLabel("ICC_PROFILE\0", 12);
    // Label, number of this part from 1, count of parts. A part holds at most 65533 bytes together with these.
    constexpr size_t kHeader = kLabel.size() + 2;
    std::map<uint8_t, std::span<const uint8_t>> parts;
    size_t count = 0;
    for (size_t at = 2; at + 4 <= file.size() && file[at] == 0xFF && file[at + 1] != kStartOfScan;) {
        const size_t length = GetNumber<uint16_t>(&file[at + 2], true);
        if (length < 2 || length > file.size() - at - 2) break;
        const std::span<const uint8_t> data = file.subspan(at + 4, length - 2);
        if (file[at + 1] == kApp2 && data.size() > kHeader && std::ranges::equal(data.first(kLabel.size()), kLabel)) {
            parts[data[kLabel.size()]] = data.subspan(kHeader);
            count = data[kLabel.size() + 1];
        }
        at += 2 + length;
    }
    Bytes profile;
    if (parts.size() != count) return profile;
    for (const auto& [number, part] : parts) profile.insert(profile.end(), part.begin(), part.end());
    return profile;
}

}  // namespace stairmelt
