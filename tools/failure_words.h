// Failures of any kind in words, for the user.
#pragma once

#include <string>

namespace stairmelt {

// Called in a catch block: what the caught exception tells, in one line of UTF-8.
std::string FailureWords();

}  // namespace stairmelt
