// The texts that the dialogs set at run time, in Japanese or English.
#pragma once

#include <cstdint>

namespace stairmelt {

// Numbers of the texts. The numbers in between are those of texts that this build has no place for.
constexpr uint32_t kStringCopyright = 1;
constexpr uint32_t kStringOk = 26;
constexpr uint32_t kStringCancel = 27;
constexpr uint32_t kStringReset = 28;

// The text of a number, for the ANSI functions of the system: Japanese (in code page 932) where that is the system's
// code page, English everywhere else. "-" for an unknown number. Never null; the table owns it.
const char* UiString(uint32_t id);

}  // namespace stairmelt
