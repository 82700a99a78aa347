#include "host/image_class.h"

#include <gtest/gtest.h>

#include "host/filter_api.h"
#include "host/plugin_entry.h"

namespace stairmelt {

TEST(ImageClass, FollowsFromModePlanesAndDepth) {
    constexpr int kAll = -1;  // every plane is a colour channel
    struct Row {
        int16_t imageMode;
        int channels;
        bool isServed;
    };
    const Row rows[] = {
        {kModeBitmap, 1, false},
        {kModeGrayScale, 1, true},
        {kModeIndexedColor, 3, false},
        {kModeRGBColor, 3, true},
        {kModeCMYKColor, 4, true},
        {kModeHSLColor, 3, false},
        {kModeHSBColor, 3, false},
        {kModeMultichannel, kAll, true},
        {kModeDuotone, 1, true},
        {kModeLabColor, 3, true},
        {kModeGray16, 1, true},
        {kModeRGB48, 3, true},
        {kModeLab48, 3, true},
        {kModeCMYK64, 4, true},
        {kModeDeepMultichannel, kAll, true},
        {kModeDuotone16, 1, true},
        {kModeRGB96, 3, true},
        {kModeGray32, 1, true},
        {18, kAll, true},
        {256 + kModeRGBColor, kAll, true},
        {INT16_MIN, kAll, true},
    };
    FilterRecord record{};
    gFilterRecord = &record;
    for (const Row& row : rows) {
        for (int16_t planes = -1; planes <= 7; ++planes) {
            const int channels = row.channels == kAll ? planes : row.channels, extra = planes - channels;
            const bool hasChannels = channels >= 1 && channels <= 4 && (extra == 0 || extra == 1);
            EXPECT_EQ(ColorChannelCount(row.imageMode, planes), channels) << row.imageMode << " planes " << planes;
            for (const int32_t depth : {-8, 0, 1, 7, 8, 9, 12, 15, 16, 24, 32, 64, 256 + 8, 65536 + 16}) {
                const bool isServed = row.isServed && hasChannels && (depth == 8 || depth == 16 || depth == 32);
                record.imageMode = row.imageMode;
                record.planes = planes;
                record.depth = depth;
                EXPECT_EQ(ClassifyImage(),
                          isServed ? static_cast<KernelKey>(channels * 0x1000000 + depth * 0x10000 + extra * 0x100)
                                   : 0x66646162u)
                    << "mode " << row.imageMode << " planes " << planes << " depth " << depth;
            }
        }
    }
    gFilterRecord = nullptr;
}

}  // namespace stairmelt
