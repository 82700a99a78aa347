#include "tools/filter/host_samples.h"

#include <cstring>

namespace stairmelt {

Bytes SamplesForHost(const Picture& picture) {
    Bytes samples = picture.samples;
    if (picture.depth != 16) return samples;
    for (size_t at = 0; at < samples.size(); at += 2) {
        uint16_t sample;
        std::memcpy(&sample, &samples[at], 2);
        sample = ToHostSample(sample);
        std::memcpy(&samples[at], &sample, 2);
    }
    return samples;
}

size_t TakeHostSamples(const Bytes& given, const Bytes& returned, Picture& picture) {
    const size_t pixelBytes = picture.PixelBytes();
    const size_t sampleBytes = static_cast<size_t>(picture.depth / 8);
    size_t changed = 0;
    for (size_t pixel = 0; pixel < given.size(); pixel += pixelBytes) {
        if (std::memcmp(&given[pixel], &returned[pixel], pixelBytes) == 0) continue;
        ++changed;
        for (size_t at = pixel; at < pixel + pixelBytes; at += sampleBytes) {
            if (std::memcmp(&given[at], &returned[at], sampleBytes) == 0) continue;
            std::memcpy(&picture.samples[at], &returned[at], sampleBytes);
            if (picture.depth != 16) continue;
            uint16_t sample;
            std::memcpy(&sample, &returned[at], 2);
            sample = FromHostSample(sample);
            std::memcpy(&picture.samples[at], &sample, 2);
        }
    }
    return changed;
}

}  // namespace stairmelt
