#include "hostkit/calls.h"

#include "hostkit/fake_host.h"

namespace stairmelt {

void NoteCall(const std::string& call) { CurrentHost().OnCall(call, kNoErr); }

OSErr FailureOf(const std::string& call, OSErr code) { return CurrentHost().OnCall(call, code); }

void ReportFault(const std::string& text) { CurrentHost().faults.push_back(text); }

std::string CodeText(uint32_t code) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char c = static_cast<char>(code >> shift & 0xFF);
        text += c >= ' ' && c <= '~' ? c : '.';
    }
    return text;
}

}  // namespace stairmelt
