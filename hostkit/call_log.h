// What a fake host writes down while a plug-in runs: every call of one of its services, in order, and every breach of
// the host's rules.
#pragma once

#include <cstdint>
#include <string>

namespace stairmelt {

// Appends a line to the current host's log: the routine's name, then its telling arguments, as in "newProc 20".
void LogCall(const std::string& line);

// Appends a line to the current host's faults: something that a plug-in must not do, such as disposing twice.
void ReportFault(const std::string& text);

// The four characters of a code, such as "Thsh". Unprintable ones become points.
std::string CodeText(uint32_t code);

}  // namespace stairmelt
