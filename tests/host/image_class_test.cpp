#include "host/image_class.h"

#include <gtest/gtest.h>

#include <set>

#include "host/filter_api.h"
#include "host/plugin_entry.h"

namespace stairmelt {

TEST(ImageClass, FollowsFromModePlanesAndDepth) {
    constexpr int kAll = -1;  // every plane is a colour channel
    constexpr int kChannels[] = {1, 1, 3, 3, 4, 3, 3, kAll, 1, 3, 1, 3, 3, 4, kAll, 1, 3, 1};  // by mode
    const std::set<int> unsupported = {kModeBitmap, kModeIndexedColor, kModeHSLColor, kModeHSBColor};
    FilterRecord record{};
    gFilterRecord = &record;
    for (const int mode : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 256 + 3, INT16_MIN}) {
        for (int16_t planes = -1; planes <= 7; ++planes) {
            const bool isKnown = mode >= 0 && mode <= kModeGray32;
            const int channels = isKnown && kChannels[mode] != kAll ? kChannels[mode] : planes;
            const int extra = planes - channels;
            const bool hasChannels = channels >= 1 && channels <= 4 && (extra == 0 || extra == 1);
            EXPECT_EQ(ColorChannelCount(static_cast<int16_t>(mode), planes), channels) << mode << " planes " << planes;
            for (const int32_t depth : {-8, 0, 1, 7, 8, 9, 12, 15, 16, 24, 32, 64, 256 + 8, 65536 + 16}) {
                const bool isSupported =
                    hasChannels && unsupported.count(mode) == 0 && (depth == 8 || depth == 16 || depth == 32);
                record.imageMode = static_cast<int16_t>(mode);
                record.planes = planes;
                record.depth = depth;
                EXPECT_EQ(ClassifyImage(),
                          isSupported ? static_cast<KernelKey>(channels * 0x1000000 + depth * 0x10000 + extra * 0x100)
                                      : 0x66646162u)
                    << "mode " << mode << " planes " << planes << " depth " << depth;
            }
        }
    }
    gFilterRecord = nullptr;
}

}  // namespace stairmelt
