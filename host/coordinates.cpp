#include "host/coordinates.h"

#include "host/plugin_entry.h"

namespace stairmelt {

namespace {

// The 32-bit form, or null while the 16-bit form is in use.
BigDocumentStruct* WideForm() {
    BigDocumentStruct* const bigDocument = gFilterRecord->bigDocumentData;
    return bigDocument != nullptr && bigDocument->PluginUsing32BitCoordinates != 0 ? bigDocument : nullptr;
}

// All values come from the 16-bit form and fit.
Rect Narrow(const VRect& rect) {
    return {static_cast<int16_t>(rect.top), static_cast<int16_t>(rect.left), static_cast<int16_t>(rect.bottom),
            static_cast<int16_t>(rect.right)};
}

}  // namespace

VPoint ImageSize() {
    if (const BigDocumentStruct* const wide = WideForm()) return wide->imageSize32;
    const Point size = gFilterRecord->imageSize;
    return {size.v, size.h};
}

VRect FilterRect() {
    if (const BigDocumentStruct* const wide = WideForm()) return wide->filterRect32;
    const Rect rect = gFilterRecord->filterRect;
    return {rect.top, rect.left, rect.bottom, rect.right};
}

void SetInputRect(const VRect& rect) {
    if (BigDocumentStruct* const wide = WideForm()) {
        wide->inRect32 = rect;
    } else {
        gFilterRecord->inRect = Narrow(rect);
    }
}

void SetOutputRect(const VRect& rect) {
    if (BigDocumentStruct* const wide = WideForm()) {
        wide->outRect32 = rect;
    } else {
        gFilterRecord->outRect = Narrow(rect);
    }
}

}  // namespace stairmelt
