// The fake host's basic suite: the list of suites, and who holds them.
#pragma once

#include <map>
#include <string>

#include "host/filter_api.h"

namespace stairmelt {

struct FakeSuites {
    FakeSuites();

    SPBasicSuite basic{};
    std::map<std::string, int> held;  // acquired and not yet released, by name; only suites that were ever acquired

    // Reports a call of a member of a suite that isn't held.
    void RequireAcquired(const char* name, const std::string& caller);
};

}  // namespace stairmelt
