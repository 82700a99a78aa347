// The fake host's script descriptors: the values that a script plays, and those that a filter records.
#pragma once

#include <deque>
#include <vector>

#include "host/filter_api.h"

namespace stairmelt {

// One key of a script descriptor, in the descriptor's order.
struct ScriptValue {
    DescriptorKeyID key;
    int32_t value;
    DescriptorTypeID type = kTypeInteger;  // the only type that getIntegerProc accepts
    bool operator==(const ScriptValue&) const = default;
};

// What the two token types point at. Closed tokens are kept, so that a later use is detected.
struct HostReadDescriptor {
    std::vector<ScriptValue> values;
    DescriptorKeyID* keys;  // the caller's list; entries are overwritten as their keys are found
    size_t next = 0;        // index of the next value for getKeyProc
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

    // Set by the caller, and offered to the filter when a run begins.
    std::vector<ScriptValue> played;  // if empty, there is no descriptor, unless the next field is set
    bool playsWithoutValues = false;  // a descriptor without values
    int16_t playInfo = kPlugInDialogDisplay;

    // Recorded by the last finished run.
    bool hasRecorded = false;
    std::vector<ScriptValue> recorded;
    int16_t recordInfo = 0;

    // The plug-in has no way to read the played values in this run, so their handle still belongs to the host.
    bool isUnreadable = false;

    // Fills `parameters` for a run: the played values go into a new handle, which belongs to the plug-in from then on.
    // Disposes of the handle that an unfinished run left there.
    void BeginRun();

    // Reads the recorded values from the descriptor field and disposes of the handle.
    void TakeRecorded();

    int CountOpenTokens() const;

private:
    Handle handedOver_ = nullptr;  // the handle of the played values
};

}  // namespace stairmelt
