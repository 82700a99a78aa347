// Codes named by their characters, and the result codes that pass between the host and the plug-in.
#pragma once

#include <cstdint>

namespace stairmelt {

// The 32-bit number of a four-character code, with the first character in the top byte: FourCharCode("8BIM") is
// 0x3842494D. In little-endian memory, the characters are therefore in reverse order.
constexpr uint32_t FourCharCode(const char (&text)[5]) {
    uint32_t code = 0;
    for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<uint8_t>(text[i]);
    return code;
}

// Results of callbacks, suite members and selectors. A selector's negative result makes the host show its own message,
// except kUserCanceledErr, which ends the run silently. A positive one also ends it silently: the host assumes that the
// plug-in has shown a message.
constexpr int16_t kNoErr = 0;
constexpr int16_t kCoercedParamErr = 2;  // a script's value was converted and is still good
constexpr int16_t kReadErr = -19;
constexpr int16_t kParamErr = -50;
constexpr int16_t kMemFullErr = -108;
constexpr int16_t kNilHandleErr = -109;
constexpr int16_t kUserCanceledErr = -128;
constexpr int16_t kErrMissingParameter = -1715;  // a key is missing
constexpr int16_t kFilterBadParameters = -30100;
constexpr int16_t kFilterBadMode = -30101;
constexpr int16_t kErrPlugInHostInsufficient = -30900;
constexpr int16_t kErrPlugInPropertyUndefined = -30901;
constexpr int16_t kErrReportString = -30904;  // the message is in FilterRecord::errorString

// Results of suites, which have 32 bits.
constexpr int32_t kSPNoError = 0;
constexpr int32_t kSPSuiteNotFound = FourCharCode("S!Fd");
constexpr int32_t kSPBadParameter = FourCharCode("Parm");
constexpr int32_t kSPNotImplemented = FourCharCode("!IMP");
constexpr int32_t kSPOutOfMemory = -108;
constexpr int32_t kSPUnknownCursor = FourCharCode("!cur");

}  // namespace stairmelt
