#include "hostkit/call_log.h"

#include "hostkit/fake_host.h"

namespace stairmelt {

void LogCall(const std::string& line) { CurrentHost().log.push_back(line); }

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
