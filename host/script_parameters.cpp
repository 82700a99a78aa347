// The values of a script: three integers in, three integers out.
#include <iterator>

#include "host/parameters.h"
#include "host/plugin_entry.h"
#include "host/usable_table.h"

namespace stairmelt {

namespace {

// The key list, which the host overwrites as it reads: all five keys and a terminating zero. It contains the dialog's
// position, although the reader ignores it.
struct KeyList {
    DescriptorKeyID keys[std::size(kParameters) + 1];

    KeyList() {
        DescriptorKeyID* next = keys;
        for (const Parameter& parameter : kParameters) *next++ = parameter.key;
        *next = 0;
    }
};

// Reads one key. A key that scripts don't set ends the reading.
int16_t ReadKey(const ReadDescriptorProcs& procs, PIReadDescriptor token, DescriptorKeyID key) {
    for (const Parameter& parameter : kParameters) {
        // The value is kept even if the host reports an error with it.
        if (parameter.isScripted && parameter.key == key) {
            return procs.getIntegerProc(token, &(gParameterBlock->*parameter.field));
        }
    }
    return kReadErr;
}

// Returns the result of closing the token, and ignores earlier ones.
int16_t ReadKeys(const ReadDescriptorProcs& procs, PIReadDescriptor token) {
    DescriptorKeyID key = 0;
    DescriptorTypeID type = 0;
    int32_t flags = 0;
    int16_t error = kNoErr;
    Boolean isThere = procs.getKeyProc(token, &key, &type, &flags);
    while (isThere && error == kNoErr) {
        error = ReadKey(procs, token, key);
        isThere = procs.getKeyProc(token, &key, &type, &flags);
    }
    return procs.closeReadDescriptorProc(token);
}

}  // namespace

int16_t ReadScriptParameters() {
    PIDescriptorParameters* const script = gFilterRecord->descriptorParameters;
    if (script == nullptr) return kNoErr;  // some hosts have no scripting at all
    const ReadDescriptorProcs* const procs = UsableOrNull(script->readDescriptorProcs);
    if (script->descriptor == nullptr || procs == nullptr) return kNoErr;

    int16_t error = kNoErr;
    KeyList list;
    const PIReadDescriptor token = procs->openReadDescriptorProc(script->descriptor, list.keys);
    if (token != nullptr) {
        error = ReadKeys(*procs, token);
        if (gFilterRecord->handleProcs != nullptr) gFilterRecord->handleProcs->disposeProc(script->descriptor);
        script->descriptor = nullptr;
    }
    *gShowDialog = script->playInfo == kPlugInDialogDisplay ? 1 : 0;
    return error;
}

void WriteScriptParameters() {
    PIDescriptorParameters* const script = gFilterRecord->descriptorParameters;
    if (script == nullptr) return;
    const WriteDescriptorProcs* const procs = UsableOrNull(script->writeDescriptorProcs);
    if (procs == nullptr) return;
    const PIWriteDescriptor token = procs->openWriteDescriptorProc();
    if (token == nullptr) return;

    for (const Parameter& parameter : kParameters) {
        if (parameter.isScripted) procs->putIntegerProc(token, parameter.key, gParameterBlock->*parameter.field);
    }
    PIDescriptorHandle recorded = nullptr;
    procs->closeWriteDescriptorProc(token, &recorded);
    script->recordInfo = kPlugInDialogOptional;
    script->descriptor = recorded;
}

}  // namespace stairmelt
