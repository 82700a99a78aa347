#include "host/image_class.h"

#include <iterator>

#include "host/filter_api.h"
#include "host/plugin_entry.h"

namespace stairmelt {

namespace {

constexpr int32_t kAllPlanes = 0;

struct ImageMode {
    int32_t channels;  // or kAllPlanes
    bool isSupported;
};

// Indexed by imageMode.
constexpr ImageMode kModes[] = {
    {1, false},          // bitmap
    {1, true},           // gray
    {3, false},          // indexed colour
    {3, true},           // RGB
    {4, true},           // CMYK
    {3, false},          // HSL
    {3, false},          // HSB
    {kAllPlanes, true},  // multichannel
    {1, true},           // duotone
    {3, true},           // Lab
    {1, true},           // gray, 16 bits
    {3, true},           // RGB, 16 bits
    {3, true},           // Lab, 16 bits
    {4, true},           // CMYK, 16 bits
    {kAllPlanes, true},  // multichannel, 16 bits
    {1, true},           // duotone, 16 bits
    {3, true},           // RGB, 32 bits
    {1, true},           // gray, 32 bits
};
constexpr ImageMode kUnknownMode = {kAllPlanes, true};  // treated as multichannel
static_assert(std::size(kModes) == kModeGray32 + 1);

const ImageMode& ModeOf(int16_t imageMode) {
    const uint16_t number = static_cast<uint16_t>(imageMode);
    return number < std::size(kModes) ? kModes[number] : kUnknownMode;
}

}  // namespace

int32_t ColorChannelCount(int16_t imageMode, int16_t planes) {
    const int32_t channels = ModeOf(imageMode).channels;
    return channels == kAllPlanes ? planes : channels;
}

KernelKey ClassifyImage() {
    const int16_t imageMode = gFilterRecord->imageMode;
    const int16_t planes = gFilterRecord->planes;
    const int32_t depth = gFilterRecord->depth;
    const int32_t channels = ColorChannelCount(imageMode, planes);
    const int32_t extra = planes - channels;  // the transparency plane

    if (!ModeOf(imageMode).isSupported) return kUnsupportedImage;
    if (channels < 1 || channels > 4) return kUnsupportedImage;
    if (extra < 0 || extra > 1) return kUnsupportedImage;
    if (depth != 8 && depth != 16 && depth != 32) return kUnsupportedImage;
    return MakeKernelKey(static_cast<uint32_t>(channels), static_cast<uint32_t>(depth), static_cast<uint32_t>(extra));
}

}  // namespace stairmelt
