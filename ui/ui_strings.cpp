#include "ui/ui_strings.h"

#include <mbctype.h>

namespace stairmelt {

namespace {

struct UiStringRow {
    uint32_t id;
    const char* primaryText;    // Japanese, in code page 932, or the only text
    const char* alternateText;  // English; null if both languages share one text
};

constexpr UiStringRow kStrings[] = {
    {kStringCopyright, "Copyright (C) 2026 N-ORVAWORKS", nullptr},
    {kStringOk, "OK", nullptr},
    {kStringCancel, "\x83\x4C\x83\x83\x83\x93\x83\x5A\x83\x8B", "Cancel"},  // キャンセル
    {kStringReset, "\x8F\x89\x8A\xFA\x89\xBB", "Reset"},                    // 初期化
};

constexpr int kJapaneseCodePage = 932;

}  // namespace

const char* UiString(uint32_t id) {
    for (const UiStringRow& row : kStrings) {
        if (row.id != id) continue;
        // The runtime's code page is the system's; it is 0 for any single-byte one.
        return row.alternateText == nullptr || _getmbcp() == kJapaneseCodePage ? row.primaryText : row.alternateText;
    }
    return "-";
}

}  // namespace stairmelt
