// The fake host's services for dialogs: previews, cursors, progress.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/filter_api.h"

namespace stairmelt {

// The arguments of one call of displayPixels. The pointers inside `map` and `masks` may only be compared: their targets
// belong to the plug-in and may be gone.
struct DisplayedMap {
    PSPixelMap map{};
    std::vector<PSPixelMask> masks;
    VRect part{};
    int32_t row = 0, column = 0;
    const void* context = nullptr;
    std::vector<uint8_t> samples;  // copy of the part, plane after plane; multichannel has only its first plane
    std::vector<uint32_t> screen;  // the pixels drawn, as 0x00RRGGBB
};

struct FakeUi {
    FakeUi();

    PSUIHooksSuite1 hooks{};
    int displays = 0;                     // accepted calls of displayPixels
    std::optional<DisplayedMap> display;  // the last one
    std::vector<std::string> cursors;     // names set so far; a null name is ""
};

// The routines in the record and the suite. On Windows, DisplayPixels draws into the device context.
OSErr DisplayPixels(const PSPixelMap* map, const VRect* part, int32_t row, int32_t column, void* context);
void ShowProgress(int32_t done, int32_t total);

}  // namespace stairmelt
