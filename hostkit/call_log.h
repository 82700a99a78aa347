// What a fake host writes down while a plug-in runs: every call of one of its services, in order, and every breach of
// the host's rules.
#pragma once

#include <cstdint>
#include <string>

#include "hostkit/failures.h"

namespace stairmelt {

// Appends a line to the current host's log: the routine's name, then its telling arguments, as in "newProc 20".
void LogCall(const std::string& line);

// The same for a call that can report a failure. Returns whether it has to: by the switch of its own, if it has one, or
// by that for any call, which also puts kFailedMark behind the line.
bool LogFallible(const std::string& line, Countdown* own = nullptr);
constexpr char kFailedMark[] = " !";

// Appends a line to the current host's faults: something that a plug-in must not do, such as disposing twice.
void ReportFault(const std::string& text);

// The four characters of a code, such as "Thsh". Unprintable ones become points.
std::string CodeText(uint32_t code);

}  // namespace stairmelt
