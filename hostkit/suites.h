// The fake host's basic suite: acquiring and releasing suites.
#pragma once

#include <map>
#include <string>

#include "host/filter_api.h"

namespace stairmelt {

struct FakeSuites {
    FakeSuites();

    SPBasicSuite basic{};
    std::map<std::string, int> held;  // acquired and not yet released, by name; only suites that were ever acquired

    // Reports a fault if the suite isn't held; `caller` is the member that was called.
    void RequireAcquired(const char* name, const std::string& caller);
};

}  // namespace stairmelt
