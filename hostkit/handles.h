// The fake host's handles: the plug-in's Handle is the identity of a movable block.
#pragma once

#include "host/filter_api.h"
#include "hostkit/block_store.h"

namespace stairmelt {

struct FakeHandles {
    FakeHandles();

    HandleProcs procs{};
    BlockStore blocks{"handle", {}};  // the plug-in's and the host's own

    // A handle that the host itself makes. Not logged, and no failure switch applies. Throws std::bad_alloc.
    Handle Make(const void* bytes, size_t size) { return &blocks.Make(bytes, size).inner; }
};

}  // namespace stairmelt
