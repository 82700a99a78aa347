#include "bench/stroke_font.h"

namespace stairmelt {

namespace {

// The strokes of each glyph on a grid of 5 columns and 7 rows: a column and a row for each point, a blank between
// strokes.
constexpr const char* kGlyphs[kGlyphCount] = {
    "062046 1434",                          // A
    "003041423303 334445360600",            // B
    "4130100105163645",                     // C
    "00204244260600",                       // D
    "40000646 0333",                        // E
    "400006 0333",                          // F
    "41301001051636454323",                 // G
    "0006 4046 0343",                       // H
    "2026 1030 1636",                       // I
    "4045361605",                           // J
    "0006 400346",                          // K
    "000646",                               // L
    "0600234046",                           // M
    "06004640",                             // N
    "103041453616050110",                   // O
    "06003041423303",                       // P
    "103041453616050110 2446",              // Q
    "06003041423303 2346",                  // R
    "413010010213334445361605",             // S
    "0040 2026",                            // T
    "000516364540",                         // U
    "002640",                               // V
    "0016233640",                           // W
    "0046 4006",                            // X
    "002340 2326",                          // Y
    "00400646",                             // Z
    "103041453616050110 0541",              // 0
    "112026 1636",                          // 1
    "01103041420646",                       // 2
    "01103041423313 334445361605",          // 3
    "36300444",                             // 4
    "400003334445361605",                   // 5
    "413010010516364544331304",             // 6
    "004016",                               // 7
    "103041423313020110 1304051636454433",  // 8
    "051636454130100102133342",             // 9
};

}  // namespace

void DrawGlyph(Canvas& canvas, int glyph, Point at, const LetterStyle& style) {
    const double unit = style.height / 6;
    std::vector<Point> stroke;
    for (const char* text = kGlyphs[glyph];; text += 2) {
        if (*text == ' ' || *text == '\0') {
            canvas.Stroke(stroke, style.thickness, style.color);
            stroke.clear();
            if (*text == '\0') return;
            ++text;
        }
        const double row = (text[1] - '0') * unit;
        stroke.push_back({at.x + (text[0] - '0') * unit + (style.height - row) * style.slant, at.y + row});
    }
}

}  // namespace stairmelt
