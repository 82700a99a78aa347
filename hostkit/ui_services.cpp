#include "hostkit/ui_services.h"

#include <cstddef>
#include <cstring>

#include "hostkit/calls.h"
#include "hostkit/fake_host.h"
#include "hostkit/map_colors.h"
#include "hostkit/pixels.h"
#include "hostkit/screen.h"
#include "hostkit/slots.h"

namespace stairmelt {
namespace {

std::vector<uint8_t> CopySamples(const PSPixelMap& map, const VRect& part) {
    std::vector<uint8_t> samples;
    for (int plane = 0; plane < MapPlanes(map.imageMode); ++plane)
        for (int32_t y = part.top; y < part.bottom; ++y)
            for (int32_t x = part.left; x < part.right; ++x)
                samples.push_back(static_cast<const uint8_t*>(
                    map.baseAddr)[ptrdiff_t{plane} * map.planeBytes + ptrdiff_t{y - map.bounds.top} * map.rowBytes +
                                  ptrdiff_t{x - map.bounds.left} * map.colBytes]);
    return samples;
}

SPErr SetCursorByName(const char* name) {
    const bool fails = FailureOf(std::string("SetCursor ") + (name ? name : "none"));
    static const char* const kKnown[] = {kCursorArrow, kCursorHand};
    bool isKnown = !name;
    for (const char* known : kKnown) isKnown = isKnown || std::string(known) == name;
    if (!isKnown || fails) return kSPUnknownCursor;
    CurrentHost().ui.cursors.push_back(name ? name : "");
    ShowCursorOnScreen(name);
    return kSPNoError;
}

}  // namespace

FakeUi::FakeUi() {
    FillSlots(hooks);
    hooks.displayPixels = DisplayPixels;
    hooks.SetCursor = SetCursorByName;
}

OSErr DisplayPixels(const PSPixelMap* map, const VRect* part, int32_t row, int32_t column, void* context) {
    FakeHost& host = CurrentHost();
    const std::string line = "displayPixels " + std::to_string(row) + " " + std::to_string(column);
    if (const OSErr failure = FailureOf(line, kMemFullErr)) return failure;
    if (!map || !part || !map->baseAddr || MapPlanes(map->imageMode) == 0 || !IsWithin(*part, map->bounds) ||
        part->top > part->bottom || part->left > part->right)
        return kParamErr;

    DisplayedMap display;
    // A version 1 map ends before the overlays: read nothing from there on.
    std::memcpy(&display.map, map, offsetof(PSPixelMap, pixelOverlays));
    for (const PSPixelMask* mask = map->masks; mask; mask = mask->next) display.masks.push_back(*mask);
    display.part = *part;
    display.row = row;
    display.column = column;
    display.context = context;
    display.samples = CopySamples(*map, *part);
    display.screen = ScreenPixels(*map, *part);
    DrawOnScreen(context, column, row, part->right - part->left, part->bottom - part->top, display.screen.data());
    host.ui.display = std::move(display);
    ++host.ui.displays;
    return kNoErr;
}

void ShowProgress(int32_t done, int32_t total) {
    NoteCall("progressProc " + std::to_string(done) + " " + std::to_string(total));
}

}  // namespace stairmelt
