// The persistent store: a descriptor of five integers in the host's registry, under the plug-in's GUID.
#include "host/parameters.h"
#include "host/plugin_entry.h"
#include "host/usable_table.h"
#include "resources/plugin_ids.h"

namespace stairmelt {

namespace {

// The two suites of the store, held during one function and released in the order in which they were acquired.
struct StoreSuites {
    const PSDescriptorRegistryProcs* registry = nullptr;
    const PSActionDescriptorProcs* descriptors = nullptr;

    StoreSuites() = default;
    StoreSuites(const StoreSuites&) = delete;
    StoreSuites& operator=(const StoreSuites&) = delete;

    ~StoreSuites() {
        if (registry != nullptr) {
            gSPBasic->ReleaseSuite(kDescriptorRegistrySuite, kDescriptorRegistrySuiteVersion);
        }
        if (descriptors != nullptr) {
            gSPBasic->ReleaseSuite(kActionDescriptorSuite, kActionDescriptorSuiteVersion);
        }
    }

    int32_t Acquire() {
        const int32_t error = AcquireOne(kDescriptorRegistrySuite, kDescriptorRegistrySuiteVersion, registry);
        if (error != 0) return error;
        return AcquireOne(kActionDescriptorSuite, kActionDescriptorSuiteVersion, descriptors);
    }

private:
    // Leaves `suite` null on failure, whatever the host wrote there.
    template <class Suite>
    static int32_t AcquireOne(const char* name, int32_t version, const Suite*& suite) {
        const void* procs = nullptr;
        const int32_t error = gSPBasic->AcquireSuite(name, version, &procs);
        if (error != 0) return error;
        suite = UsableOrNull(static_cast<const Suite*>(procs));
        if (suite != nullptr) return 0;
        if (procs != nullptr) gSPBasic->ReleaseSuite(name, version);
        return kErrPlugInHostInsufficient;
    }
};

// An action descriptor, freed before the suites are released.
struct OwnedDescriptor {
    const PSActionDescriptorProcs& procs;
    PIActionDescriptor descriptor = nullptr;

    ~OwnedDescriptor() {
        if (descriptor != nullptr) procs.Free(descriptor);
    }
};

}  // namespace

int32_t LoadStoredParameters() {
    if (gSPBasic == nullptr) return kErrPlugInHostInsufficient;
    StoreSuites suites;
    if (const int32_t error = suites.Acquire(); error != 0) return error;

    OwnedDescriptor stored{*suites.descriptors};
    int32_t error = suites.registry->Get(PLUGIN_GUID, &stored.descriptor);
    if (error != 0 || stored.descriptor == nullptr) return error;

    uint32_t count = 0;
    suites.descriptors->GetCount(stored.descriptor, &count);
    for (const Parameter& parameter : kParameters) {
        int32_t value = 0;
        error = suites.descriptors->GetInteger(stored.descriptor, parameter.key, &value);
        if (error != 0) break;
        gParameterBlock->*parameter.field = value;
    }
    return error;
}

int32_t SaveStoredParameters() {
    if (gSPBasic == nullptr) return kErrPlugInHostInsufficient;
    StoreSuites suites;
    if (const int32_t error = suites.Acquire(); error != 0) return error;

    OwnedDescriptor toStore{*suites.descriptors};
    int32_t error = suites.descriptors->Make(&toStore.descriptor);
    if (error != 0) return error;
    const PIActionDescriptor descriptor = toStore.descriptor;

    for (const Parameter& parameter : kParameters) {
        error = suites.descriptors->PutInteger(descriptor, parameter.key, gParameterBlock->*parameter.field);
        if (error != 0) break;
        Boolean isThere = 0;
        suites.descriptors->HasKey(descriptor, parameter.key, &isThere);
    }
    // Registers the values that could be set, even if others failed.
    uint32_t count = 0;
    suites.descriptors->GetCount(descriptor, &count);
    constexpr Boolean kPersistent = 1;
    error = suites.registry->Register(PLUGIN_GUID, descriptor, kPersistent);
    if (error == 0) suites.descriptors->GetCount(descriptor, &count);
    return error;
}

}  // namespace stairmelt
