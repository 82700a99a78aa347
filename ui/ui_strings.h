// The texts that the dialogs set at run time, in Japanese or English.
#pragma once

#include <cstdint>

namespace stairmelt {

// Numbers of the texts. Those in between are reserved.
constexpr uint32_t kStringCopyright = 1;
constexpr uint32_t kStringOk = 26;
constexpr uint32_t kStringCancel = 27;
constexpr uint32_t kStringReset = 28;

// The text with a number, for the system's ANSI functions: Japanese, in code page 932, if that is the system's code
// page, otherwise English. "-" for an unknown number. Never null; the table owns the text.
const char* UiString(uint32_t id);

}  // namespace stairmelt
