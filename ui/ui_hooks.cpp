#include "ui/ui_hooks.h"

#include <windows.h>

#include "host/plugin_entry.h"

namespace stairmelt {

namespace {

struct HeldHooks {
    const PSUIHooksSuite1* hooks = nullptr;
    SPBasicSuite* owner = nullptr;

    ~HeldHooks() {
        if (hooks != nullptr) owner->ReleaseSuite(kUIHooksSuite, kUIHooksSuiteVersion);
    }
};

HeldHooks gHeldHooks;

void ShowCursorNamed(const char* hostName, const char* systemName) {
    try {
        if (AcquireUIHooks().SetCursor(hostName) == kSPNoError) return;
    } catch (const HostSuiteError&) {
        // Many hosts lack the suite.
    }
    SetCursor(LoadCursorA(nullptr, systemName));
}

}  // namespace

const PSUIHooksSuite1& AcquireUIHooks() {
    if (gHeldHooks.hooks == nullptr) {
        if (gSPBasic == nullptr) throw HostSuiteError{kSPBadParameter};
        const void* procs = nullptr;
        const int32_t error = gSPBasic->AcquireSuite(kUIHooksSuite, kUIHooksSuiteVersion, &procs);
        if (error != kSPNoError) throw HostSuiteError{error};
        if (procs == nullptr) throw HostSuiteError{kSPSuiteNotFound};
        gHeldHooks = {static_cast<const PSUIHooksSuite1*>(procs), gSPBasic};
    }
    return *gHeldHooks.hooks;
}

void SetHandCursor() { ShowCursorNamed(kCursorHand, IDC_HAND); }
void SetArrowCursor() { ShowCursorNamed(kCursorArrow, IDC_ARROW); }

}  // namespace stairmelt
