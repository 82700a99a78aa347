#include "hostkit/call_log.h"

#include "hostkit/fake_host.h"

namespace stairmelt {

void LogCall(const std::string& line) { CurrentHost().log.push_back(line); }

bool LogFallible(const std::string& line, Countdown* own) {
    Failures& failures = CurrentHost().failures;
    const bool isNumbered = failures.failingCalls.contains(++CurrentHost().fallibleCalls);
    bool fails = Fires(failures.anyCall);
    if (fails && failures.failureLasts) failures.anyCall = kEveryCall;
    fails = fails || isNumbered;
    LogCall(fails ? line + kFailedMark : line);
    return (own && Fires(*own)) || fails;
}

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
