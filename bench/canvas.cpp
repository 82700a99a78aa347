#include "bench/canvas.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace stairmelt {

namespace {

// The columns of a row that a convex shape covers, extended part by part.
struct Extent {
    double left = std::numeric_limits<double>::max();
    double right = std::numeric_limits<double>::lowest();

    void Include(double x) {
        left = std::min(left, x);
        right = std::max(right, x);
    }
};

void IncludeDisc(Extent& extent, Point centre, double radius, double y) {
    const double squared = radius * radius - (y - centre.y) * (y - centre.y);
    if (squared < 0) return;
    extent.Include(centre.x - std::sqrt(squared));
    extent.Include(centre.x + std::sqrt(squared));
}

void IncludeEdge(Extent& extent, Point a, Point b, double y) {
    if ((a.y <= y) == (b.y <= y)) return;
    extent.Include(a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x));
}

// The rows whose centres are between two heights.
struct Rows {
    int32_t first, end;
};

Rows RowsBetween(double top, double bottom, int32_t height) {
    const double limit = height;
    return {static_cast<int32_t>(std::clamp(std::ceil(top - 0.5), 0.0, limit)),
            static_cast<int32_t>(std::clamp(std::ceil(bottom - 0.5), 0.0, limit))};
}

}  // namespace

Canvas::Canvas(int32_t canvasWidth, int32_t canvasHeight)
    : width(canvasWidth),
      height(canvasHeight),
      bytes(static_cast<size_t>(canvasWidth) * static_cast<size_t>(canvasHeight) * 3) {}

void Canvas::Put(int32_t x, int32_t y, Color color) {
    uint8_t* const at = PixelAt(x, y);
    at[0] = color.red;
    at[1] = color.green;
    at[2] = color.blue;
}

void Canvas::LayPaper(Color color) {
    paper = color;
    for (int32_t y = 0; y < height; ++y) FillSpan(y, 0, width, color);
}

void Canvas::FillSpan(int32_t y, double left, double right, Color color) {
    const double limit = width;
    const auto first = static_cast<int32_t>(std::clamp(std::ceil(left - 0.5), 0.0, limit));
    const auto end = static_cast<int32_t>(std::clamp(std::ceil(right - 0.5), 0.0, limit));
    for (int32_t x = first; x < end; ++x) Put(x, y, color);
}

void Canvas::FillPolygon(const std::vector<Point>& corners, Color color) {
    double top = height;
    double bottom = 0;
    for (const Point& corner : corners) {
        top = std::min(top, corner.y);
        bottom = std::max(bottom, corner.y);
    }
    std::vector<double> crossings;
    const Rows rows = RowsBetween(top, bottom, height);
    for (int32_t row = rows.first; row < rows.end; ++row) {
        const double y = row + 0.5;
        crossings.clear();
        for (size_t i = 0; i < corners.size(); ++i) {
            const Point a = corners[i];
            const Point b = corners[(i + 1) % corners.size()];
            if ((a.y <= y) != (b.y <= y)) crossings.push_back(a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x));
        }
        std::sort(crossings.begin(), crossings.end());
        for (size_t i = 0; i + 1 < crossings.size(); i += 2) FillSpan(row, crossings[i], crossings[i + 1], color);
    }
}

void Canvas::Stroke(const std::vector<Point>& path, double thickness, Color color) {
    for (size_t i = 0; i + 1 < path.size(); ++i) StrokePiece(path[i], path[i + 1], thickness / 2, color);
}

void Canvas::StrokePiece(Point from, Point to, double radius, Color color) {
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    // Perpendicular to the line, with the length of the radius.
    const double dx = length > 0 ? (to.y - from.y) / length * radius : 0;
    const double dy = length > 0 ? (from.x - to.x) / length * radius : 0;
    const Point corners[4] = {
        {from.x + dx, from.y + dy}, {to.x + dx, to.y + dy}, {to.x - dx, to.y - dy}, {from.x - dx, from.y - dy}};
    const Rows rows = RowsBetween(std::min(from.y, to.y) - radius, std::max(from.y, to.y) + radius, height);
    for (int32_t row = rows.first; row < rows.end; ++row) {
        const double y = row + 0.5;
        Extent extent;
        IncludeDisc(extent, from, radius, y);
        IncludeDisc(extent, to, radius, y);
        for (int i = 0; i < 4; ++i) IncludeEdge(extent, corners[i], corners[(i + 1) % 4], y);
        FillSpan(row, extent.left, extent.right, color);
    }
}

}  // namespace stairmelt
