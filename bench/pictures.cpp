#include "bench/pictures.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <numbers>

#include "bench/photo.h"
#include "bench/stroke_font.h"
#include "tests/support/seeded_random.h"

namespace stairmelt {

namespace {

constexpr Color kPaper = {250, 246, 236};
constexpr Color kInk = {28, 26, 40};
constexpr double kTurn = 2 * std::numbers::pi;

// low..high
double Between(SeededRandom& random, double low, double high) {
    return low + (high - low) * (random.Next() / 4294967296.0);
}

Point AnyPoint(SeededRandom& random, const Canvas& canvas) {
    const double x = Between(random, 0, canvas.width);
    return {x, Between(random, 0, canvas.height)};
}

Color AnyColor(SeededRandom& random) {
    const auto sample = [&] { return static_cast<uint8_t>(60 + random.Below(190)); };
    const uint8_t red = sample();
    const uint8_t green = sample();
    return {red, green, sample()};
}

// The number of details in a picture with one detail per this many pixels.
int64_t CountOf(const Canvas& canvas, int64_t pixelsForEach) {
    return static_cast<int64_t>(canvas.width) * canvas.height / pixelsForEach;
}

// A cubic Bezier curve as short straight pieces.
std::vector<Point> Curve(Point a, Point b, Point c, Point d) {
    constexpr int kPieces = 48;
    std::vector<Point> path;
    for (int i = 0; i <= kPieces; ++i) {
        const double t = static_cast<double>(i) / kPieces;
        const double u = 1 - t;
        const double wa = u * u * u, wb = 3 * u * u * t, wc = 3 * u * t * t, wd = t * t * t;
        path.push_back({wa * a.x + wb * b.x + wc * c.x + wd * d.x, wa * a.y + wb * b.y + wc * c.y + wd * d.y});
    }
    return path;
}

void DrawFlat(Canvas& canvas) { canvas.LayPaper(kPaper); }

void DrawInk(Canvas& canvas) {
    constexpr int64_t kPixelsForEachLine = 44600;
    SeededRandom random(1);
    canvas.LayPaper(kPaper);
    for (int64_t i = 0; i < CountOf(canvas, kPixelsForEachLine); ++i) {
        const Point start = AnyPoint(random, canvas);
        const double thickness = Between(random, 1.2, 4);
        const double angle = Between(random, 0, kTurn);
        const double length = Between(random, 60, 900);
        const Point end = {start.x + length * std::cos(angle), start.y + length * std::sin(angle)};
        if (random.Below(2) == 0) {
            canvas.Stroke({start, end}, thickness, kInk);
            continue;
        }
        const auto beside = [&](const Point& point) {
            const double dx = Between(random, -length, length) / 3;
            return Point{point.x + dx, point.y + Between(random, -length, length) / 3};
        };
        const Point towardEnd = beside(start);
        canvas.Stroke(Curve(start, towardEnd, beside(end), end), thickness, kInk);
    }
}

// A blob, or a polygon of 3 to 6 corners.
std::vector<Point> AnyShape(SeededRandom& random, Point centre, double radius) {
    std::vector<Point> outline;
    const double turned = Between(random, 0, kTurn);
    const bool isBlob = random.Below(3) != 0;
    const int corners = isBlob ? 64 : 3 + random.Below(4);
    const double wave = Between(random, 0, 0.35);
    const double lobe = Between(random, 0, 0.2);
    for (int i = 0; i < corners; ++i) {
        const double angle = turned + kTurn * i / corners;
        const double swell =
            isBlob ? 1 + wave * std::cos(2 * angle + turned) + lobe * std::cos(5 * angle) : Between(random, 0.6, 1.3);
        outline.push_back({centre.x + radius * swell * std::cos(angle), centre.y + radius * swell * std::sin(angle)});
    }
    return outline;
}

void DrawCartoon(Canvas& canvas) {
    constexpr int64_t kPixelsForEachShape = 4400;
    SeededRandom random(2);
    canvas.LayPaper(kPaper);
    for (int64_t i = 0; i < CountOf(canvas, kPixelsForEachShape); ++i) {
        const Point centre = AnyPoint(random, canvas);
        // Small shapes stand out against few large ones.
        const double size = Between(random, 0, 1);
        std::vector<Point> outline = AnyShape(random, centre, 14 + 90 * size * size * size);
        canvas.FillPolygon(outline, AnyColor(random));
        outline.push_back(outline.front());
        canvas.Stroke(outline, Between(random, 2, 5), kInk);
    }
}

void DrawText(Canvas& canvas) {
    SeededRandom random(3);
    canvas.LayPaper(kPaper);
    double top = 12;
    while (top < canvas.height) {
        LetterStyle style;
        const bool isHeading = random.Below(9) == 0;
        style.height = isHeading ? Between(random, 30, 72) : Between(random, 9.5, 21.3);
        style.slant = random.Below(3) == 0 ? Between(random, -0.1, 0.4) : 0;
        style.thickness = std::max(1.2, style.height * Between(random, 0.08, 0.18));
        style.color = random.Below(6) == 0 ? Color{150, 40, 46} : kInk;
        double left = 12;
        while (left < canvas.width) {
            for (int letters = 2 + random.Below(9); letters > 0; --letters) {
                DrawGlyph(canvas, random.Below(kGlyphCount), {left, top}, style);
                left += GlyphAdvance(style);
            }
            left += style.height * 0.6;
        }
        top += style.height * 1.7;
    }
}

void DrawNoise(Canvas& canvas) {
    SeededRandom random(4);
    size_t i = 0;
    for (; i + 4 <= canvas.bytes.size(); i += 4) {
        const uint32_t word = random.Next();
        std::memcpy(canvas.bytes.data() + i, &word, 4);
    }
    for (; i < canvas.bytes.size(); ++i) canvas.bytes[i] = static_cast<uint8_t>(random.Next());
}

}  // namespace

const std::vector<PictureKind> kPictures = {
    {"flat", DrawFlat}, {"ink", DrawInk},     {"cartoon", DrawCartoon},
    {"text", DrawText}, {"photo", DrawPhoto}, {"noise", DrawNoise},
};

const PictureKind& FindPicture(const std::string& name) {
    for (const PictureKind& kind : kPictures) {
        if (kind.name == name) return kind;
    }
    std::abort();
}

Canvas DrawPicture(const PictureKind& kind, int32_t width, int32_t height) {
    Canvas canvas(width, height);
    kind.draw(canvas);
    return canvas;
}

}  // namespace stairmelt
