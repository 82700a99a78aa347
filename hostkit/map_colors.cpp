#include "hostkit/map_colors.h"

#include <algorithm>
#include <cmath>

namespace stairmelt {
namespace {

struct Color {
    int red, green, blue;  // 0..255
};

int ToByte(double value) { return static_cast<int>(std::lround(std::clamp(value, 0.0, 1.0) * 255.0)); }

double SrgbCurve(double linear) {
    return linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}

// The inverse of Lab's cube-root curve.
double LabCube(double t) { return t > 6.0 / 29 ? t * t * t : (t - 4.0 / 29) * (108.0 / 841); }

// Lightness 0..255 stands for 0..100; a and b are offset by 128. The screen's white serves as the reference white,
// which avoids a chromatic adaptation and is close enough to the eye.
Color FromLab(int lightness, int a, int b) {
    const double fy = (lightness * 100.0 / 255 + 16) / 116;
    const double x = 0.9505 * LabCube(fy + (a - 128) / 500.0);
    const double y = LabCube(fy);
    const double z = 1.089 * LabCube(fy - (b - 128) / 200.0);
    return {ToByte(SrgbCurve(3.2406 * x - 1.5372 * y - 0.4986 * z)),
            ToByte(SrgbCurve(-0.9689 * x + 1.8758 * y + 0.0415 * z)),
            ToByte(SrgbCurve(0.0557 * x - 0.2040 * y + 1.0570 * z))};
}

// The host inverts inks: 0 is full ink.
Color FromCmyk(int cyan, int magenta, int yellow, int black) {
    return {cyan * black / 255, magenta * black / 255, yellow * black / 255};
}

Color ColorAt(const PSPixelMap& map, const uint8_t* pixel) {
    const ptrdiff_t step = map.planeBytes;
    switch (map.imageMode) {
        case kModeRGBColor: return {pixel[0], pixel[step], pixel[2 * step]};
        case kModeCMYKColor: return FromCmyk(pixel[0], pixel[step], pixel[2 * step], pixel[3 * step]);
        case kModeLabColor: return FromLab(pixel[0], pixel[step], pixel[2 * step]);
        default: return {pixel[0], pixel[0], pixel[0]};
    }
}

// Opacity 0..255 at a position relative to the map's top left corner.
int MaskAt(const PSPixelMap& map, int32_t row, int32_t column) {
    const PSPixelMask* mask = map.masks;
    if (!mask || !mask->maskData) return 255;
    const int value =
        static_cast<const uint8_t*>(mask->maskData)[ptrdiff_t{row + map.maskPhaseRow} * mask->rowBytes +
                                                    ptrdiff_t{column + map.maskPhaseCol} * mask->colBytes];
    return mask->maskDescription == kInvertPSMask ? 255 - value : value;
}

// White and light gray squares of 8 pixels.
int CheckerboardAt(int32_t row, int32_t column) { return ((row ^ column) & 8) ? 204 : 255; }

uint32_t Blend(Color color, int opacity, int ground) {
    const auto mix = [=](int value) {
        return static_cast<uint32_t>((value * opacity + ground * (255 - opacity)) / 255);
    };
    return mix(color.red) << 16 | mix(color.green) << 8 | mix(color.blue);
}

}  // namespace

int MapPlanes(int32_t imageMode) {
    switch (imageMode) {
        case kModeGrayScale:
        case kModeDuotone:
        case kModeMultichannel: return 1;
        case kModeRGBColor:
        case kModeLabColor: return 3;
        case kModeCMYKColor: return 4;
        default: return 0;
    }
}

std::vector<uint32_t> ScreenPixels(const PSPixelMap& map, const VRect& part) {
    std::vector<uint32_t> pixels;
    for (int32_t y = part.top; y < part.bottom; ++y) {
        for (int32_t x = part.left; x < part.right; ++x) {
            const int32_t row = y - map.bounds.top, column = x - map.bounds.left;
            const uint8_t* pixel = static_cast<const uint8_t*>(map.baseAddr) + ptrdiff_t{row} * map.rowBytes +
                                   ptrdiff_t{column} * map.colBytes;
            pixels.push_back(Blend(ColorAt(map, pixel), MaskAt(map, row, column), CheckerboardAt(y, x)));
        }
    }
    return pixels;
}

}  // namespace stairmelt
