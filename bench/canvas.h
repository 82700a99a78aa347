// An 8-bit RGB picture and hard-edged primitives for drawing the benchmark's pictures: a pixel belongs to a shape if
// its centre does. Coordinates are in pixels and grow right and down; pixel (x, y) covers the square from (x, y) to
// (x + 1, y + 1). Everything is clipped to the canvas.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace stairmelt {

struct Color {
    uint8_t red, green, blue;

    bool operator==(const Color&) const = default;
};

struct Point {
    double x, y;
};

struct Canvas {
    Canvas(int32_t canvasWidth, int32_t canvasHeight);

    uint8_t* PixelAt(int32_t x, int32_t y) { return bytes.data() + (static_cast<size_t>(y) * Width() + Index(x)) * 3; }
    void Put(int32_t x, int32_t y, Color color);

    // Fills the canvas with paper of this colour. In formats with opacity, pixels that keep it are transparent.
    void LayPaper(Color color);

    // The pixels of row y whose centres are between `left`, inclusive, and `right`, exclusive.
    void FillSpan(int32_t y, double left, double right, Color color);

    // A closed polygon, by the even-odd rule.
    void FillPolygon(const std::vector<Point>& corners, Color color);

    // A line through all the points, with round ends and joints.
    void Stroke(const std::vector<Point>& path, double thickness, Color color);

    int32_t width, height;
    std::vector<uint8_t> bytes;  // rows without padding
    std::optional<Color> paper;

private:
    size_t Width() const { return static_cast<size_t>(width); }
    static size_t Index(int32_t x) { return static_cast<size_t>(x); }
    void StrokePiece(Point from, Point to, double radius, Color color);
};

}  // namespace stairmelt
