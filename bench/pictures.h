// The pictures for measuring the kernels, drawn by code. A picture depends on its name and size alone, and its details
// have a fixed size in pixels: a larger picture has more of them, and the same share of flagged pixels.
#pragma once

#include <string>
#include <vector>

#include "bench/canvas.h"

namespace stairmelt {

struct PictureKind {
    const char* name;
    void (*draw)(Canvas& canvas);
};

// Sorted by the number of edges:
//   flat     one colour
//   ink      thin lines and curves of all slopes
//   cartoon  overlapping areas of one colour each, with dark outlines
//   text     lettering of several sizes and slants
//   photo    soft gradients, surfaces with and without texture, and grain
//   noise    random bytes
extern const std::vector<PictureKind> kPictures;

// The kind with this name, which has to exist.
const PictureKind& FindPicture(const std::string& name);

Canvas DrawPicture(const PictureKind& kind, int32_t width, int32_t height);

}  // namespace stairmelt
