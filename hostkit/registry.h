// The fake host's action descriptors, and the registry that stores copies of them.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/filter_api.h"

namespace stairmelt {

// Integers by key, in the order of their first put.
using StoredValues = std::vector<std::pair<DescriptorKeyID, int32_t>>;

// What a PIActionDescriptor points at. Freed ones are kept, so that a later use is detected.
struct HostActionDescriptor {
    StoredValues values;
    bool isLive = true;
};

struct FakeRegistry {
    FakeRegistry();

    PSDescriptorRegistryProcs registryProcs{};
    PSActionDescriptorProcs descriptorProcs{};
    std::deque<HostActionDescriptor> descriptors;

    std::map<std::string, StoredValues> persistent;  // by the key under which they were registered

    int CountLiveDescriptors() const;
};

}  // namespace stairmelt
