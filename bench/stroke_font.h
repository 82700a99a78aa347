// Letters made of straight strokes, for the benchmark's page of lettering.
#pragma once

#include "bench/canvas.h"

namespace stairmelt {

constexpr int kGlyphCount = 36;  // A to Z, 0 to 9

struct LetterStyle {
    double height;     // of a letter, in pixels
    double slant;      // columns to the right per row of height
    double thickness;  // of the strokes, in pixels
    Color color;
};

// Draws a glyph with its top left corner at `at`.
void DrawGlyph(Canvas& canvas, int glyph, Point at, const LetterStyle& style);

// The distance from one letter to the next.
inline double GlyphAdvance(const LetterStyle& style) { return style.height * 0.92; }

}  // namespace stairmelt
