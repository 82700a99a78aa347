#include "host/plugin_entry.h"

#include "host/parameters.h"
#include "host/render.h"
#include "host/usable_table.h"
#include "ui/about_box.h"

namespace stairmelt {

FilterRecord* gFilterRecord = nullptr;
intptr_t* gDataHandle = nullptr;
int16_t* gResult = nullptr;
const SPBasicSuite* gSPBasic = nullptr;
ParameterBlock* gParameterBlock = nullptr;
uint8_t* gShowDialog = nullptr;

namespace {

Handle FlagByteHandle() { return reinterpret_cast<Handle>(*gDataHandle); }

Ptr Lock(Handle handle) {
    const HandleProcs* const procs = UsableOrNull(gFilterRecord->handleProcs);
    if (handle == nullptr || procs == nullptr) return nullptr;  // some hosts dereference a null handle
    constexpr Boolean kMoveHigh = 1;
    return procs->lockProc(handle, kMoveHigh);
}

void UnlockHandles() {
    const HandleProcs* const procs = UsableOrNull(gFilterRecord->handleProcs);
    if (procs == nullptr) return;
    if (FlagByteHandle() != nullptr) procs->unlockProc(FlagByteHandle());
    if (gFilterRecord->parameters != nullptr) procs->unlockProc(gFilterRecord->parameters);
}

void DoAbout() {
    const AboutRecord* const record = reinterpret_cast<const AboutRecord*>(gFilterRecord);
    gSPBasic = UsableOrNull(record->sSPBasic);
    ShowAboutBox(ParentWindow(record->platformData));
}

void DoPrepare() {
    if (gFilterRecord->parameters != nullptr) {
        gParameterBlock = reinterpret_cast<ParameterBlock*>(Lock(gFilterRecord->parameters));
    } else {
        DoParameters();
    }
    // The plug-in needs no memory reserved for it.
    gFilterRecord->maxSpace = 0;
    gFilterRecord->bufferSpace = 0;
}

void RunSelector(int16_t selector) {
    switch (selector) {
        case kFilterSelectorParameters: return DoParameters();
        case kFilterSelectorPrepare: return DoPrepare();
        case kFilterSelectorStart: return DoStart();
        case kFilterSelectorContinue: return DoContinue();
        case kFilterSelectorFinish: return DoFinish();
        default: *gResult = kFilterBadParameters;
    }
}

}  // namespace

bool LockHandles() {
    gParameterBlock = nullptr;
    gShowDialog = nullptr;
    if (gFilterRecord->parameters == nullptr) {
        *gResult = kFilterBadParameters;
        return false;
    }
    gParameterBlock = reinterpret_cast<ParameterBlock*>(Lock(gFilterRecord->parameters));
    gShowDialog = reinterpret_cast<uint8_t*>(Lock(FlagByteHandle()));
    if (gParameterBlock != nullptr && gShowDialog != nullptr) return true;
    *gResult = kMemFullErr;
    return false;
}

intptr_t ParentWindow(const PlatformData* platformData) { return platformData != nullptr ? platformData->hwnd : 0; }

}  // namespace stairmelt

void PluginMain(int16_t selector, void* record, intptr_t* data, int16_t* result) {
    using namespace stairmelt;
    gDataHandle = data;
    gResult = result;
    gFilterRecord = static_cast<FilterRecord*>(record);
    if (selector == kFilterSelectorAbout) return DoAbout();

    gSPBasic = UsableOrNull(gFilterRecord->sSPBasic);
    // From here on, both sides use 32-bit coordinates, in this call and in all later ones of the run.
    BigDocumentStruct* const bigDocument = gFilterRecord->bigDocumentData;
    if (bigDocument != nullptr) bigDocument->PluginUsing32BitCoordinates = 1;
    if (gFilterRecord->hostSig != kPhotoshopSignature) {
        *gResult = kFilterBadParameters;  // the handles belong to another host: nothing is unlocked
        return;
    }
    RunSelector(selector);
    UnlockHandles();
}
