#include "hostkit/document.h"

#include <algorithm>

namespace stairmelt {
namespace {

int16_t Clamped(int32_t length) { return static_cast<int16_t>(std::min(length, 32767)); }

Rect ShortRect(const VRect& rect) {
    return {static_cast<int16_t>(rect.top), static_cast<int16_t>(rect.left), static_cast<int16_t>(rect.bottom),
            static_cast<int16_t>(rect.right)};
}

int16_t FilterCase(const FakeDocument& document) {
    if (document.isFloating) return kFilterCaseFloatingSelection;
    if (document.hasTransparency)
        return document.selection ? kFilterCaseEditableTransparencyWithSelection
                                  : kFilterCaseEditableTransparencyNoSelection;
    return document.selection ? kFilterCaseFlatImageWithSelection : kFilterCaseFlatImageNoSelection;
}

void DescribePlanes(const FakeDocument& document, FilterRecord& record) {
    const auto colors = static_cast<int16_t>(document.planes - 1);
    const int16_t layerPlanes = document.hasTransparency ? colors : int16_t{0};
    const int16_t transparency = document.hasTransparency;
    const int16_t otherPlanes = document.hasTransparency ? int16_t{0} : document.planes;
    record.inLayerPlanes = record.outLayerPlanes = record.absLayerPlanes = layerPlanes;
    record.inTransparencyMask = record.outTransparencyMask = record.absTransparencyMask = transparency;
    record.inNonLayerPlanes = record.outNonLayerPlanes = record.absNonLayerPlanes = otherPlanes;
}

}  // namespace

void DescribeDocument(const FakeDocument& document, FilterRecord& record, BigDocumentStruct& big) {
    const VRect filterRect = document.selection.value_or(document.Bounds());

    record.imageSize = {Clamped(document.height), Clamped(document.width)};
    record.wholeSize = record.imageSize;
    record.planes = document.planes;
    record.imageMode = document.imageMode;
    record.depth = document.depth;
    record.filterRect = document.IsBig() ? Rect{} : ShortRect(filterRect);
    record.filterCase = FilterCase(document);
    record.isFloating = document.isFloating;
    record.haveMask = document.selection.has_value();
    record.autoMask = document.selection.has_value();
    DescribePlanes(document, record);

    big = {};
    big.imageSize32 = {document.height, document.width};
    big.wholeSize32 = big.imageSize32;
    big.filterRect32 = filterRect;
}

}  // namespace stairmelt
