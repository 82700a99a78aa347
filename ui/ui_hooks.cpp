#include "ui/ui_hooks.h"

#include <windows.h>

#include "host/plugin_entry.h"

namespace stairmelt {

namespace {

struct HeldHooks {
    const PSUIHooksSuite1* hooks = nullptr;
    const SPBasicSuite* owner = nullptr;

    HeldHooks() = default;
    HeldHooks(const HeldHooks&) = delete;  // a copy would release the suite twice
    HeldHooks& operator=(const HeldHooks&) = delete;
    ~HeldHooks() {
        if (hooks != nullptr) owner->ReleaseSuite(kUIHooksSuite, kUIHooksSuiteVersion);
    }
};

HeldHooks gHeldHooks;

void ShowCursorNamed(const char* hostName, const char* systemName) {
    try {
        const PSUIHooksSuite1& hooks = AcquireUIHooks();
        if (hooks.SetCursor != nullptr && hooks.SetCursor(hostName) == kSPNoError) return;
    } catch (const HostSuiteError&) {
        // Many hosts lack the suite; the system's cursor takes over.
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
        gHeldHooks.hooks = static_cast<const PSUIHooksSuite1*>(procs);
        gHeldHooks.owner = gSPBasic;
    }
    return *gHeldHooks.hooks;
}

void SetHandCursor() { ShowCursorNamed(kCursorHand, IDC_HAND); }
void SetArrowCursor() { ShowCursorNamed(kCursorArrow, IDC_ARROW); }

}  // namespace stairmelt
