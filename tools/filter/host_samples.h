// Samples as files have them and as the host has them. They differ at 16 bits, 0..65535 in files and 0..32768 in the
// host, and in CMYK: files count ink, and the host what is left of white, 0 for full ink.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tools/pictures/picture.h"

namespace stairmelt {

constexpr uint16_t ToHostSample(uint16_t sample) { return static_cast<uint16_t>((sample * 32768U + 32767) / 65535); }

// A plug-in that oversteps the host's white gets white.
constexpr uint16_t FromHostSample(uint16_t sample) {
    return sample >= 32768 ? 65535 : static_cast<uint16_t>((sample * 65535U + 16384) / 32768);
}

// Hands the samples over to the host, laid out as in the picture. The picture keeps its own at 16 bits only; elsewhere
// there is one copy of them, which is the host's until TakeSamples.
Bytes GiveSamples(Picture& picture);

// Takes the samples back. The host's range has half as many values, so two of a file's values meet in one of the
// host's; a sample that the plug-in left alone therefore keeps what the file had. `given` is what GiveSamples gave, and
// `returned`, of its size, is what has become of it, and is used up. The result is the number of pixels with a changed
// sample.
size_t TakeSamples(const Bytes& given, Bytes& returned, Picture& picture);

}  // namespace stairmelt
