#include "tools/filter/host_samples.h"

#include <cstring>

namespace stairmelt {
namespace {

// Calls visit(at) for the offset of each ink sample.
template <class Visit>
void VisitInks(const Picture& picture, size_t size, Visit visit) {
    if (picture.colors != 4) return;
    const size_t sampleBytes = static_cast<size_t>(picture.depth / 8), inks = 4 * sampleBytes;
    for (size_t pixel = 0; pixel < size; pixel += picture.PixelBytes())
        for (size_t at = pixel; at < pixel + inks; at += sampleBytes) visit(at);
}

void InvertInks8(const Picture& picture, Bytes& samples) {
    VisitInks(picture, samples.size(), [&](size_t at) { samples[at] = static_cast<uint8_t>(255 - samples[at]); });
}

uint16_t SampleAt(const Bytes& samples, size_t at) {
    uint16_t sample;
    std::memcpy(&sample, &samples[at], 2);
    return sample;
}

void PutSample(Bytes& samples, size_t at, uint16_t sample) { std::memcpy(&samples[at], &sample, 2); }

// Inverts within the host's range; values above it become 0.
void InvertInks16(const Picture& picture, Bytes& samples) {
    VisitInks(picture, samples.size(), [&](size_t at) {
        const uint16_t sample = SampleAt(samples, at);
        PutSample(samples, at, sample > 32768 ? uint16_t{0} : static_cast<uint16_t>(32768 - sample));
    });
}

}  // namespace

Bytes GiveSamples(Picture& picture) {
    if (picture.depth != 16) {
        Bytes samples;
        samples.swap(picture.samples);
        InvertInks8(picture, samples);
        return samples;
    }
    Bytes samples = picture.samples;
    for (size_t at = 0; at < samples.size(); at += 2) PutSample(samples, at, ToHostSample(SampleAt(samples, at)));
    InvertInks16(picture, samples);
    return samples;
}

size_t TakeSamples(const Bytes& given, Bytes& returned, Picture& picture) {
    const size_t pixelBytes = picture.PixelBytes();
    size_t changed = 0;
    for (size_t pixel = 0; pixel < given.size(); pixel += pixelBytes)
        changed += std::memcmp(&given[pixel], &returned[pixel], pixelBytes) != 0 ? 1 : 0;
    if (picture.depth != 16) {
        picture.samples = std::move(returned);
        InvertInks8(picture, picture.samples);
        return changed;
    }
    std::vector<bool> isKept(given.size() / 2);
    for (size_t at = 0; at < given.size(); at += 2) isKept[at / 2] = SampleAt(given, at) == SampleAt(returned, at);
    InvertInks16(picture, returned);
    for (size_t at = 0; at < returned.size(); at += 2)
        if (!isKept[at / 2]) PutSample(picture.samples, at, FromHostSample(SampleAt(returned, at)));
    return changed;
}

}  // namespace stairmelt
