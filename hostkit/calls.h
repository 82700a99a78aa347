// What the services of the imitated host say of the calls of a plug-in.
#pragma once

#include <cstdint>
#include <string>

#include "host/filter_api.h"

namespace stairmelt {

// Announces a call of one of the current host's services: the routine's name, then its telling arguments, as in
// "disposeProc #1".
void NoteCall(const std::string& call);

// The same for a call that can report a failure. Returns kNoErr, or the code with which it has to fail: `code`, or what
// a test wants.
OSErr FailureOf(const std::string& call, OSErr code = kParamErr);

// Appends a line to the current host's faults: something that a plug-in must not do, such as disposing twice.
void ReportFault(const std::string& text);

// The four characters of a code, such as "Thsh". Unprintable ones become points.
std::string CodeText(uint32_t code);

}  // namespace stairmelt
