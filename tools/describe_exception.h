// Describes failures of any kind to the user.
#pragma once

#include <string>

namespace stairmelt {

// Call it in a catch block: describes the caught exception in one line of UTF-8.
std::string DescribeException();

}  // namespace stairmelt
