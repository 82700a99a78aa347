#include "hostkit/script.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "hostkit/calls.h"
#include "hostkit/fake_host.h"
#include "hostkit/slots.h"

namespace stairmelt {
namespace {

// Replaces a key in the caller's list once it is found. It can't be 0, which would end the list early.
constexpr DescriptorKeyID kFoundKey = FourCharCode("null");

Handle HandleOf(const std::vector<ScriptValue>& values) {
    return CurrentHost().handles.Make(values.data(), values.size() * sizeof(ScriptValue));
}

std::vector<ScriptValue> ValuesOf(const MovableBlock& block) {
    std::vector<ScriptValue> values(block.memory.Size() / sizeof(ScriptValue));
    if (!values.empty()) std::memcpy(values.data(), block.memory.Data(), values.size() * sizeof(ScriptValue));
    return values;
}

// The open token. Reports a fault and returns null if there is none.
template <class Token>
Token* OpenToken(std::deque<Token>& tokens, Token* token, const char* caller) {
    for (Token& candidate : tokens)
        if (&candidate == token && candidate.isOpen) return token;
    ReportFault(std::string(caller) + " with a token that isn't open");
    return nullptr;
}

HostReadDescriptor* Reading(PIReadDescriptor token, const char* caller) {
    return OpenToken(CurrentHost().script.readTokens, token, caller);
}

HostWriteDescriptor* Writing(PIWriteDescriptor token, const char* caller) {
    return OpenToken(CurrentHost().script.writeTokens, token, caller);
}

// Errors are negative and outrank the code for a coerced value.
void NoteResult(HostReadDescriptor& token, OSErr result) {
    if (result != kNoErr && (token.worst == kNoErr || result < token.worst)) token.worst = result;
}

PIReadDescriptor OpenRead(PIDescriptorHandle descriptor, DescriptorKeyID* keys) {
    FakeHost& host = CurrentHost();
    if (FailureOf("openReadDescriptorProc " + host.handles.blocks.NameOf(descriptor))) {
        host.script.isUnreadable = true;
        return nullptr;
    }
    const MovableBlock* block = host.handles.blocks.Find(descriptor, "openReadDescriptorProc");
    if (!block) return nullptr;
    return &host.script.readTokens.emplace_back(HostReadDescriptor{ValuesOf(*block), keys});
}

Boolean GetKey(PIReadDescriptor token, DescriptorKeyID* key, DescriptorTypeID* type, int32_t* flags) {
    HostReadDescriptor* reading = Reading(token, "getKeyProc");
    if (!reading || reading->next == reading->values.size()) {
        FailureOf("getKeyProc end");
        return 0;
    }
    const ScriptValue& value = reading->values[reading->next];
    if (FailureOf("getKeyProc " + CodeText(value.key))) return 0;
    ++reading->next;
    *key = value.key;
    *type = value.type;
    *flags = 0;
    for (DescriptorKeyID* listed = reading->keys; listed && *listed; ++listed)
        if (*listed == value.key) *listed = kFoundKey;
    return 1;
}

OSErr GetInteger(PIReadDescriptor token, int32_t* result) {
    HostReadDescriptor* reading = Reading(token, "getIntegerProc");
    if (!reading) return kParamErr;
    if (reading->next == 0) {
        NoteCall("getIntegerProc before any key");
        return kErrMissingParameter;
    }
    const ScriptValue& value = reading->values[reading->next - 1];
    OSErr code = FailureOf("getIntegerProc " + CodeText(value.key));
    if (value.type == kTypeInteger && (code == kNoErr || code == kCoercedParamErr))
        *result = value.value;
    else
        code = kParamErr;
    NoteResult(*reading, code);
    return code;
}

OSErr CloseRead(PIReadDescriptor token) {
    const OSErr failure = FailureOf("closeReadDescriptorProc", kMemFullErr);
    HostReadDescriptor* reading = Reading(token, "closeReadDescriptorProc");
    if (!reading) return kParamErr;
    reading->isOpen = false;
    NoteResult(*reading, failure);
    return reading->worst;
}

PIWriteDescriptor OpenWrite() {
    if (FailureOf("openWriteDescriptorProc")) return nullptr;
    return &CurrentHost().script.writeTokens.emplace_back();
}

OSErr PutInteger(PIWriteDescriptor token, DescriptorKeyID key, int32_t value) {
    const bool fails = FailureOf("putIntegerProc " + CodeText(key) + " " + std::to_string(value));
    HostWriteDescriptor* writing = Writing(token, "putIntegerProc");
    if (!writing || fails) return kParamErr;
    writing->values.push_back({key, value});
    return kNoErr;
}

OSErr CloseWrite(PIWriteDescriptor token, PIDescriptorHandle* descriptor) {
    const OSErr failure = FailureOf("closeWriteDescriptorProc", kMemFullErr);
    HostWriteDescriptor* writing = Writing(token, "closeWriteDescriptorProc");
    if (!writing) return kParamErr;
    writing->isOpen = false;
    if (failure) return failure;
    try {
        *descriptor = HandleOf(writing->values);
        return kNoErr;
    } catch (const std::bad_alloc&) {
        return kMemFullErr;
    }
}

// Disposes of a handle that a run left to the host. Null is ignored; a handle disposed of before is a fault.
void DisposeOf(Handle handle) {
    BlockStore& blocks = CurrentHost().handles.blocks;
    if (MovableBlock* block = blocks.Find(handle, "taking the record")) blocks.Dispose(*block);
}

}  // namespace

FakeScript::FakeScript() {
    FillSlots(readProcs);
    readProcs.readDescriptorProcsVersion = 0;
    readProcs.numReadDescriptorProcs = 18;
    readProcs.openReadDescriptorProc = OpenRead;
    readProcs.closeReadDescriptorProc = CloseRead;
    readProcs.getKeyProc = GetKey;
    readProcs.getIntegerProc = GetInteger;

    FillSlots(writeProcs);
    writeProcs.writeDescriptorProcsVersion = 0;
    writeProcs.numWriteDescriptorProcs = 16;
    writeProcs.openWriteDescriptorProc = OpenWrite;
    writeProcs.closeWriteDescriptorProc = CloseWrite;
    writeProcs.putIntegerProc = PutInteger;
}

void FakeScript::BeginRun() {
    DisposeOf(parameters.descriptor);
    isUnreadable = false;
    handedOver_ = played.empty() && !playsWithoutValues ? nullptr : HandleOf(played);
    parameters = {};
    parameters.playInfo = playInfo;
    parameters.recordInfo = -1;  // not a valid value, so that a filter that doesn't set it is noticed
    parameters.descriptor = handedOver_;
    parameters.readDescriptorProcs = &readProcs;
    parameters.writeDescriptorProcs = &writeProcs;
    hasRecorded = false;
    recorded.clear();
}

void FakeScript::TakeRecorded() {
    recordInfo = parameters.recordInfo;
    const Handle left = std::exchange(parameters.descriptor, nullptr);
    const Handle own = std::exchange(handedOver_, nullptr);
    // The plug-in has to dispose of values that it could read.
    if (left && left == own && !isUnreadable) ReportFault("the filter left the played descriptor in its place");
    if (left != own) {
        if (const MovableBlock* block = CurrentHost().handles.blocks.Find(left, "taking the record")) {
            hasRecorded = true;
            recorded = ValuesOf(*block);
        }
        DisposeOf(left);
    }
    if (left == own || isUnreadable) DisposeOf(own);
}

int FakeScript::CountOpenTokens() const {
    const auto isOpen = [](const auto& token) { return token.isOpen; };
    return static_cast<int>(std::count_if(readTokens.begin(), readTokens.end(), isOpen) +
                            std::count_if(writeTokens.begin(), writeTokens.end(), isOpen));
}

}  // namespace stairmelt
