#include "tools/messages.h"

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <cstdlib>

namespace stairmelt {
namespace {

constexpr char kCommand[] = "STAIRMELT_COMMAND";

void Print(FILE* stream, const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

}  // namespace

void PrepareMessages() {
    for (FILE* const stream : {stdout, stderr}) {
        std::setvbuf(stream, nullptr, _IOFBF, 1 << 12);
        // Scripts on Linux expect lines to end with a line feed alone.
        if (std::getenv(kCommand) != nullptr) _setmode(_fileno(stream), _O_BINARY);
    }
}

std::string ProgramName() {
    const char* const command = std::getenv(kCommand);
    return command != nullptr ? command : "runfilter";
}

void PrintLine(const std::string& text) { Print(stdout, text + '\n'); }

void PrintError(const std::string& text) {
    std::fflush(stdout);
    Print(stderr, ProgramName() + ": " + text + '\n');
}

}  // namespace stairmelt
