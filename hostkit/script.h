// The fake host's script descriptors: what a script plays into a filter, and what a filter records.
#pragma once

#include <deque>
#include <vector>

#include "host/filter_api.h"

namespace stairmelt {

// One key of a script descriptor, in the descriptor's order.
struct ScriptValue {
    DescriptorKeyID key;
    int32_t value;
    DescriptorTypeID type = kTypeInteger;  // getIntegerProc refuses any other
    bool operator==(const ScriptValue&) const = default;
};

// What the two token types point at. Closed tokens stay, so that a later use is told.
struct HostReadDescriptor {
    std::vector<ScriptValue> values;
    DescriptorKeyID* keys;  // the caller's list; entries are overwritten as their keys turn up
    size_t next = 0;        // index of the value that getKeyProc gives next
    OSErr worst = kNoErr;
    bool isOpen = true;
};

struct HostWriteDescriptor {
    std::vector<ScriptValue> values;
    bool isOpen = true;
};

struct FakeScript {
    FakeScript();

    PIDescriptorParameters parameters{};  // what the record points at
    ReadDescriptorProcs readProcs{};
    WriteDescriptorProcs writeProcs{};
    std::deque<HostReadDescriptor> readTokens;
    std::deque<HostWriteDescriptor> writeTokens;

    // Set by the user of the host, and put before the filter when each run begins.
    std::vector<ScriptValue> played;  // empty: no descriptor, but for
    bool playsWithoutValues = false;  // a script that sets none
    int16_t playInfo = kPlugInDialogDisplay;

    // What the last finished run recorded.
    bool hasRecorded = false;
    std::vector<ScriptValue> recorded;
    int16_t recordInfo = 0;

    // The plug-in was given no way to read the played values in this run. Their handle then stays the host's.
    bool isUnreadable = false;

    // Fills `parameters` for a run: the played values go into a new handle, which from then on is the plug-in's.
    // Disposes of what a run that wasn't finished left there.
    void BeginRun();

    // Takes what the plug-in left in the descriptor field and disposes of the handle.
    void TakeRecorded();

    int CountOpenTokens() const;

private:
    Handle handedOver_ = nullptr;  // the handle of the played values
};

}  // namespace stairmelt
