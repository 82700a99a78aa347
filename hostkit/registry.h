// The fake host's action descriptors, and the registry that keeps copies of them.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/filter_api.h"

namespace stairmelt {

// Integers by key, in the order in which they were first put.
using StoredValues = std::vector<std::pair<DescriptorKeyID, int32_t>>;

// What a PIActionDescriptor points at. Freed ones stay, so that a later use is told.
struct HostActionDescriptor {
    StoredValues values;
    bool isLive = true;
};

struct FakeRegistry {
    FakeRegistry();

    PSDescriptorRegistryProcs registryProcs{};
    PSActionDescriptorProcs descriptorProcs{};
    std::deque<HostActionDescriptor> descriptors;

    // What is stored, by the string under which it was registered. Only the persistent part outlives the host.
    std::map<std::string, StoredValues> persistent;
    std::map<std::string, StoredValues> passing;

    int CountLiveDescriptors() const;
};

}  // namespace stairmelt
