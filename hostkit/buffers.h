// The fake host's buffer service: the plug-in's BufferID is the identity of a movable block.
#pragma once

#include "host/filter_api.h"
#include "hostkit/block_store.h"

namespace stairmelt {

struct FakeBuffers {
    FakeBuffers();

    BufferProcs procs{};
    BlockStore blocks{"buffer", {}};
};

}  // namespace stairmelt
