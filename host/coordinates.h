// The record's coordinates in the form in use: 32 bits wide where the host offers them, 16 bits otherwise. One run uses
// one form throughout.
#pragma once

#include "host/filter_api.h"

namespace stairmelt {

// Pixels; v is the height, h the width.
VPoint ImageSize();

// The bounds of the selection, or of the whole image.
VRect FilterRect();

// Request areas for the next advance. The caller sets the planes.
void SetInputRect(const VRect& rect);
void SetOutputRect(const VRect& rect);

}  // namespace stairmelt
