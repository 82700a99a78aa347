#include "hostkit/registry.h"

#include <algorithm>

#include "hostkit/calls.h"
#include "hostkit/fake_host.h"
#include "hostkit/slots.h"

namespace stairmelt {
namespace {

FakeRegistry& Registry() { return CurrentHost().registry; }

// The live descriptor. Reports a fault and returns null if there is none.
HostActionDescriptor* Live(PIActionDescriptor descriptor, const std::string& caller) {
    CurrentHost().suites.RequireAcquired(kActionDescriptorSuite, caller);
    for (HostActionDescriptor& candidate : Registry().descriptors)
        if (&candidate == descriptor && candidate.isLive) return descriptor;
    ReportFault(caller + " of a descriptor that isn't live");
    return nullptr;
}

StoredValues::iterator FindKey(StoredValues& values, DescriptorKeyID key) {
    return std::find_if(values.begin(), values.end(), [key](const auto& value) { return value.first == key; });
}

OSErr Make(PIActionDescriptor* descriptor) {
    const OSErr failure = FailureOf("Make", kMemFullErr);
    CurrentHost().suites.RequireAcquired(kActionDescriptorSuite, "Make");
    if (!descriptor) return kParamErr;
    if (failure) return failure;
    *descriptor = &Registry().descriptors.emplace_back();
    return kNoErr;
}

OSErr Free(PIActionDescriptor descriptor) {
    const OSErr failure = FailureOf("Free");
    HostActionDescriptor* live = Live(descriptor, "Free");
    if (!live) return kParamErr;
    live->isLive = false;
    return failure;
}

OSErr HasKey(PIActionDescriptor descriptor, DescriptorKeyID key, Boolean* hasKey) {
    const bool fails = FailureOf("HasKey " + CodeText(key));
    HostActionDescriptor* live = Live(descriptor, "HasKey");
    if (!live || !hasKey || fails) return kParamErr;
    *hasKey = FindKey(live->values, key) != live->values.end();
    return kNoErr;
}

OSErr GetCount(PIActionDescriptor descriptor, uint32_t* count) {
    const bool fails = FailureOf("GetCount");
    HostActionDescriptor* live = Live(descriptor, "GetCount");
    if (!live || !count || fails) return kParamErr;
    *count = static_cast<uint32_t>(live->values.size());
    return kNoErr;
}

OSErr PutInteger(PIActionDescriptor descriptor, DescriptorKeyID key, int32_t value) {
    const bool fails = FailureOf("PutInteger " + CodeText(key) + " " + std::to_string(value));
    HostActionDescriptor* live = Live(descriptor, "PutInteger");
    if (!live || fails) return kParamErr;
    const auto found = FindKey(live->values, key);
    if (found == live->values.end())
        live->values.emplace_back(key, value);
    else
        found->second = value;
    return kNoErr;
}

OSErr GetInteger(PIActionDescriptor descriptor, DescriptorKeyID key, int32_t* value) {
    const bool fails = FailureOf("GetInteger " + CodeText(key));
    HostActionDescriptor* live = Live(descriptor, "GetInteger");
    if (!live || !value || fails) return kParamErr;
    const auto found = FindKey(live->values, key);
    if (found == live->values.end()) return kErrMissingParameter;
    *value = found->second;
    return kNoErr;
}

OSErr Register(const char* key, PIActionDescriptor descriptor, Boolean isPersistent) {
    const bool fails = FailureOf(std::string("Register ") + key + (isPersistent ? " persistent" : ""));
    CurrentHost().suites.RequireAcquired(kDescriptorRegistrySuite, "Register");
    const HostActionDescriptor* live = Live(descriptor, "Register");
    if (!live || fails) return kParamErr;
    if (!isPersistent) ReportFault("values registered for this session alone");
    Registry().persistent[key] = live->values;
    return kNoErr;
}

OSErr Get(const char* key, PIActionDescriptor* descriptor) {
    const bool fails = FailureOf(std::string("Get ") + key);
    CurrentHost().suites.RequireAcquired(kDescriptorRegistrySuite, "Get");
    if (!descriptor || fails) return kParamErr;
    *descriptor = nullptr;
    const auto found = Registry().persistent.find(key);
    if (found != Registry().persistent.end())
        *descriptor = &Registry().descriptors.emplace_back(HostActionDescriptor{found->second});
    return kNoErr;
}

}  // namespace

FakeRegistry::FakeRegistry() {
    FillSlots(registryProcs);
    registryProcs.Register = Register;
    registryProcs.Get = Get;
    FillSlots(descriptorProcs);
    descriptorProcs.Make = Make;
    descriptorProcs.Free = Free;
    descriptorProcs.HasKey = HasKey;
    descriptorProcs.GetCount = GetCount;
    descriptorProcs.PutInteger = PutInteger;
    descriptorProcs.GetInteger = GetInteger;
}

int FakeRegistry::CountLiveDescriptors() const {
    return static_cast<int>(
        std::count_if(descriptors.begin(), descriptors.end(), [](const auto& d) { return d.isLive; }));
}

}  // namespace stairmelt
