#include "tools/describe_exception.h"

#include <exception>
#include <new>
#include <stdexcept>

namespace stairmelt {

std::string DescribeException() {
    constexpr char kNoMemory[] = "there isn't enough memory for the picture";
    try {
        std::rethrow_exception(std::current_exception());
    } catch (const std::bad_alloc&) {
        return kNoMemory;
    } catch (const std::length_error&) {
        return kNoMemory;  // beyond what a vector could ever hold
    } catch (const std::exception& error) {
        return error.what();
    }
}

}  // namespace stairmelt
