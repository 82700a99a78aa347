#include "hostkit/suites.h"

#include "hostkit/calls.h"
#include "hostkit/fake_host.h"
#include "hostkit/slots.h"

namespace stairmelt {
namespace {

// The suite's table, or null if this host has none with that name and version.
const void* FindSuite(const std::string& name, int32_t version) {
    FakeHost& host = CurrentHost();
    const struct {
        const char* name;
        int32_t version;
        const void* suite;
    } suites[] = {
        {kDescriptorRegistrySuite, kDescriptorRegistrySuiteVersion, &host.registry.registryProcs},
        {kActionDescriptorSuite, kActionDescriptorSuiteVersion, &host.registry.descriptorProcs},
        {kUIHooksSuite, kUIHooksSuiteVersion, &host.ui.hooks},
    };
    for (const auto& row : suites)
        if (name == row.name && version == row.version) return row.suite;
    return nullptr;
}

SPErr AcquireSuite(const char* name, int32_t version, const void** suite) {
    if (!name || !suite) return kSPBadParameter;
    if (FailureOf(std::string("AcquireSuite ") + name + " " + std::to_string(version))) return kSPSuiteNotFound;
    const void* found = FindSuite(name, version);
    if (!found) return kSPSuiteNotFound;
    *suite = found;
    ++CurrentHost().suites.held[name];
    return kSPNoError;
}

SPErr ReleaseSuite(const char* name, int32_t version) {
    if (!name) return kSPBadParameter;
    const bool fails = FailureOf(std::string("ReleaseSuite ") + name + " " + std::to_string(version));
    std::map<std::string, int>& held = CurrentHost().suites.held;
    const auto found = held.find(name);
    if (found == held.end() || found->second == 0) {
        ReportFault(std::string("release of the suite ") + name + ", which isn't held");
        return kSPBadParameter;
    }
    --found->second;
    return fails ? kSPBadParameter : kSPNoError;
}

}  // namespace

FakeSuites::FakeSuites() {
    FillSlots(basic);
    basic.AcquireSuite = AcquireSuite;
    basic.ReleaseSuite = ReleaseSuite;
}

void FakeSuites::RequireAcquired(const char* name, const std::string& caller) {
    const auto found = held.find(name);
    if (found == held.end() || found->second == 0) ReportFault(caller + " of a suite that isn't held");
}

}  // namespace stairmelt
