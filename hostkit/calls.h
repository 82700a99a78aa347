// How the fake host's services log a plug-in's calls and report its faults.
#pragma once

#include <cstdint>
#include <string>

#include "host/filter_api.h"

namespace stairmelt {

// Logs a call to one of the current host's services: the routine's name, then the arguments that matter, as in
// "disposeProc #1".
void NoteCall(const std::string& call);

// The same for a call that can report a failure. Returns kNoErr, or the code with which the call has to fail: `code`,
// unless a test sets another.
OSErr FailureOf(const std::string& call, OSErr code = kParamErr);

// Appends a line to the current host's faults: something that a plug-in must not do, such as disposing twice.
void ReportFault(const std::string& text);

// The four characters of a code, such as "Thsh". Unprintable ones become dots.
std::string CodeText(uint32_t code);

}  // namespace stairmelt
