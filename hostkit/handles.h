// The fake host's handles: the plug-in's Handle is the identity of a movable block.
#pragma once

#include "host/filter_api.h"
#include "hostkit/block_store.h"

namespace stairmelt {

struct FakeHandles {
    FakeHandles();

    HandleProcs procs{};
    BlockStore blocks{"handle", {}};  // made by the plug-in or by the host itself

    // Makes a handle for the host itself. This isn't logged, and tests can't make it fail. Throws std::bad_alloc.
    Handle Make(const void* bytes, size_t size) { return &blocks.Make(bytes, size).inner; }
};

}  // namespace stairmelt
