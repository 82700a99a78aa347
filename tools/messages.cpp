#include "tools/messages.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <stdexcept>

namespace stairmelt {
namespace {

void Print(FILE* stream, const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

}  // namespace

std::string ProgramName() {
    const char* const command = std::getenv("STAIRMELT_COMMAND");
    return command != nullptr ? command : "runfilter";
}

void PrintLine(const std::string& text) { Print(stdout, text + '\n'); }

void PrintError(const std::string& text) {
    std::fflush(stdout);
    Print(stderr, ProgramName() + ": " + text + '\n');
}

std::string DescribeException() {
    constexpr char kNoMemory[] = "there isn't enough memory for the picture";
    try {
        std::rethrow_exception(std::current_exception());
    } catch (const std::bad_alloc&) {
        return kNoMemory;
    } catch (const std::length_error&) {
        return kNoMemory;  // a size that no vector can have
    } catch (const std::exception& error) {
        return error.what();
    }
}

}  // namespace stairmelt
