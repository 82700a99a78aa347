#include "bench/photo.h"

#include <algorithm>
#include <array>
#include <vector>

namespace stairmelt {

namespace {

// A pseudo-random value for a point of the lattice, -1..1.
float LatticeValue(uint32_t x, uint32_t y, uint32_t seed) {
    uint32_t h = x * 0x9E3779B1u ^ y * 0x85EBCA77u ^ seed * 0xC2B2AE3Du;
    h = (h ^ h >> 15) * 0x2C1B3C6Du;
    h = (h ^ h >> 12) * 0x297A2D39u;
    h ^= h >> 15;
    return static_cast<float>(h >> 8) / 8388608.0f - 1.0f;
}

// A curve that is level at both ends, so that the lattice doesn't show.
float Smoothed(float t) { return t * t * (3.0f - 2.0f * t); }

// One octave of value noise: random values on a lattice, with smooth transitions.
class Octave {
public:
    // The wavelength is 1 << shift pixels.
    Octave(int32_t width, int shift, float amplitude, uint32_t seed)
        : shift_(shift), amplitude_(amplitude), seed_(seed), line_(static_cast<size_t>(width >> shift) + 2) {
        const int32_t wavelength = 1 << shift;
        for (int32_t i = 0; i < wavelength; ++i) {
            fade_.push_back(Smoothed(static_cast<float>(i) / static_cast<float>(wavelength)));
        }
    }

    // Adds row y of this octave.
    void AddTo(std::vector<float>& row, int32_t y) {
        const uint32_t latticeRow = static_cast<uint32_t>(y) >> shift_;
        const float down = fade_[static_cast<size_t>(y) & (fade_.size() - 1)];
        for (size_t i = 0; i < line_.size(); ++i) {
            const float above = LatticeValue(static_cast<uint32_t>(i), latticeRow, seed_);
            const float below = down > 0 ? LatticeValue(static_cast<uint32_t>(i), latticeRow + 1, seed_) : 0.0f;
            line_[i] = amplitude_ * (above + (below - above) * down);
        }
        const size_t wavelength = fade_.size();
        for (size_t left = 0, i = 0; left < row.size(); left += wavelength, ++i) {
            const float start = line_[i];
            const float rise = line_[i + 1] - start;
            const size_t columns = std::min(wavelength, row.size() - left);
            for (size_t x = 0; x < columns; ++x) row[left + x] += start + rise * fade_[x];
        }
    }

private:
    int shift_;
    float amplitude_;
    uint32_t seed_;
    std::vector<float> fade_;  // for each pixel between two points of the lattice, the weight of the second one
    std::vector<float> line_;  // the lattice at the height of the row
};

// Several octaves, row by row.
class Noise {
public:
    // Wavelengths from 1 << longest down to 1 << shortest. The amplitude shrinks by the factor `fall` each time.
    Noise(int32_t width, int longest, int shortest, float amplitude, float fall, uint32_t seed)
        : row_(static_cast<size_t>(width)) {
        for (int shift = longest; shift >= shortest; --shift) {
            octaves_.emplace_back(width, shift, amplitude, seed + static_cast<uint32_t>(shift));
            amplitude *= fall;
        }
    }

    const std::vector<float>& Row(int32_t y) {
        std::fill(row_.begin(), row_.end(), 0.0f);
        for (Octave& octave : octaves_) octave.AddTo(row_, y);
        return row_;
    }

private:
    std::vector<Octave> octaves_;
    std::vector<float> row_;
};

uint8_t Sample(float value) { return static_cast<uint8_t>(std::clamp(value, 0.0f, 255.0f)); }

}  // namespace

void DrawPhoto(Canvas& canvas) {
    const int32_t width = canvas.width;
    Noise light(width, 10, 5, 50, 0.5f, 100);    // in 1/255 of white
    Noise relief(width, 9, 4, 1, 0.5f, 200);     // its sign selects one of two kinds of area
    Noise roughness(width, 8, 7, 1, 0.5f, 300);  // the strength of the texture
    Noise texture(width, 4, 2, 14, 0.8f, 400);
    Noise hue(width, 9, 8, 24, 0.5f, 500);
    Noise grain(width, 1, 0, 1, 0.8f, 600);
    for (int32_t y = 0; y < canvas.height; ++y) {
        const float* const lights = light.Row(y).data();
        const float* const reliefs = relief.Row(y).data();
        const float* const roughnesses = roughness.Row(y).data();
        const float* const textures = texture.Row(y).data();
        const float* const hues = hue.Row(y).data();
        const float* const grains = grain.Row(y).data();
        uint8_t* at = canvas.PixelAt(0, y);
        for (int32_t x = 0; x < width; ++x, at += 3) {
            constexpr float kSharpness = 40;  // about two pixels from one area to the other
            const float area = std::clamp(reliefs[x] * kSharpness, -1.0f, 1.0f);
            const float rough = std::clamp(roughnesses[x] * 2.0f, 0.0f, 1.0f);
            const float brightness = 128 + lights[x] + area * 30 + rough * textures[x] + grains[x] * 2.81f;
            const float tint = hues[x] + area * 12;
            at[0] = Sample(brightness + tint);
            at[1] = Sample(brightness);
            at[2] = Sample(brightness - tint);
        }
    }
}

}  // namespace stairmelt
