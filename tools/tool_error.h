// An error that ends the run: one line of UTF-8 for the user, without the program's name and without a full stop.
#pragma once

#include <stdexcept>

namespace stairmelt {

struct ToolError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace stairmelt
