// Converts samples between files and the host. They differ at 16 bits (0..65535 in files, 0..32768 in the host) and in
// CMYK, which the host inverts: 0 is full ink.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tools/pictures/picture.h"

namespace stairmelt {

constexpr uint16_t ToHostSample(uint16_t sample) { return static_cast<uint16_t>((sample * 32768U + 32767) / 65535); }

// Values above the host's white become white.
constexpr uint16_t FromHostSample(uint16_t sample) {
    return sample >= 32768 ? 65535 : static_cast<uint16_t>((sample * 65535U + 16384) / 32768);
}

// Moves the samples to the host, laid out as in the picture. To save memory, the picture keeps its own samples only at
// 16 bits; otherwise there is a single copy, which belongs to the host until TakeSamples.
Bytes GiveSamples(Picture& picture);

// Takes the samples back. The host's range has half as many values as the file's, so samples that the plug-in didn't
// change keep the file's values. `given` is the result of GiveSamples; `returned`, of the same size, holds the filtered
// samples and is consumed. Returns the number of pixels with a changed sample.
size_t TakeSamples(const Bytes& given, Bytes& returned, Picture& picture);

}  // namespace stairmelt
