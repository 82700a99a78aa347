// The entry point, and the globals that are the plug-in's whole state between its functions.
//
// The host loads the library and calls PluginMain once for each step of a run. From the menu, these are Parameters,
// Prepare, Start and Finish; Continue isn't called, because Start completes the work. A repeat of the last filter omits
// Parameters. About is sent on its own. A non-zero result of Parameters, Prepare or Start ends the run.
//
//   selector        locked during it                                   unlocked at its end
//   1 Parameters    parameters and flag byte                           both
//   2 Prepare       parameters, and the flag byte if it makes them     both
//   3 Start         both, unless the image is refused first            both
//   4 Continue      nothing                                            both
//   5 Finish        both                                               both
//   unknown         nothing                                            both
//   0 About         nothing                                            nothing
//
// The host doesn't count locks, and an extra unlock is harmless. So PluginMain always unlocks both at its end. The host
// calls on one thread and doesn't reenter.
#pragma once

#include <cstdint>

#include "host/filter_api.h"

namespace stairmelt {

struct ParameterBlock;

// Set by every call. During the about selector, the record is an AboutRecord. A host always passes the three pointers;
// filter_api.h says which pointers within the record may be null.
extern FilterRecord* gFilterRecord;
extern intptr_t* gDataHandle;         // the word is the flag byte's handle, or 0
extern int16_t* gResult;              // never set to 0 at entry: the host does that
extern const SPBasicSuite* gSPBasic;  // null in hosts without suites

// Set by the selectors that lock; stale after the end of that call. Null after a lock that failed.
extern ParameterBlock* gParameterBlock;
extern uint8_t* gShowDialog;  // the flag byte: 1 if the next Start shows the dialog

// Locks `parameters` and the flag byte's handle. Stores kFilterBadParameters without locking if there is no parameters
// handle, and kMemFullErr if a lock fails. Returns whether both globals are set.
bool LockHandles();

// The host's window, the parent of dialogs; 0 for none.
intptr_t ParentWindow(const PlatformData* platformData);

}  // namespace stairmelt

// Exported by its plain name, see resources/stairmelt.def.
extern "C" void PluginMain(int16_t selector, void* record, intptr_t* data, int16_t* result);
