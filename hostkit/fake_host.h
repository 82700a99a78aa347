// A fake of the host, which runs a filter plug-in on a document: a plain record that owns a real FilterRecord and the
// services behind it. Tools use it directly, tests through probe/probed_host.h.
//
// Typical use:
//     FakeHost host;
//     host.document = ...;                  size, format, samples; optionally a selection
//     host.script.played = ...;             optionally a script's values
//     host.RunFilter(PluginMain, RunKind::kFromMenu);
//     host.document.result, host.Faults(), host.StillHeld() ...
// or step by step: BeginRun, changes to host.record, Call for each selector, EndRun.
//
// The host's callbacks have no argument that identifies their host, so there is one current host: the constructor makes
// it current, and only one can be alive at a time. Everything runs on one thread. FilterRecord is packed: its fields
// are read and written by value.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/filter_api.h"
#include "hostkit/buffers.h"
#include "hostkit/calls.h"
#include "hostkit/document.h"
#include "hostkit/handles.h"
#include "hostkit/pixels.h"
#include "hostkit/registry.h"
#include "hostkit/script.h"
#include "hostkit/suites.h"
#include "hostkit/ui_services.h"

namespace stairmelt {

enum class RunKind {
    kFromMenu,  // Parameters, Prepare, Start, Continue while anything is requested, Finish
    kRepeat,    // the same from Prepare on: the last filter again, or a script without its dialog
    kAbout,     // the about box
};

// The record between two zones of kFillPattern, which reveal a write beyond it.
struct GuardedRecord {
    uint8_t before[64];
    FilterRecord record;
    uint8_t after[64];
};

struct FakeHost {
    FakeHost();
    virtual ~FakeHost();
    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;

    FakeDocument document;
    std::vector<std::string> faults;  // violations of the host's rules found so far; Faults() looks for more

    FakeHandles handles;
    FakeBuffers buffers;
    FakeScript script;
    FakeRegistry registry;
    FakeSuites suites;
    FakeUi ui;
    FakePixels pixels;

    // Passed to the plug-in. `parameters` in the record and `data` belong to it and are kept from run to run.
    GuardedRecord guarded;
    FilterRecord& record = guarded.record;
    BigDocumentStruct big{};
    PlatformData platform{};  // its window is 0 unless the caller sets one
    AboutRecord about{};
    intptr_t data = 0;
    Str255 errorString{};
    int16_t lastResult = 0;                  // of the last selector
    const int16_t* runningResult = nullptr;  // the result of the selector that is running; null between selectors

    int16_t resultOnEntry = kNoErr;  // the initial value of each selector's result

    // Whether pixels are delivered in guarded copies, which reveal stray writes. This doubles the memory needed.
    bool checksPixels = false;

    // If set, replaces pixels.Deliver() in the plug-in's advances, and may call it.
    std::function<OSErr()> onAdvance;

    // If set, called when a selector has returned, before anything is checked.
    std::function<void(int16_t selector)> onReturn;

    // Rebuilds the record for the document, with nothing requested. The document's source is resized to match the
    // document's fields, and its result becomes a copy of the source.
    virtual void BeginRun();

    // Sends one selector and returns its result. kFilterSelectorAbout gets the about record. A change to a record field
    // that this host ignores, to the host's own 32-bit coordinates or to a table of routines is a fault.
    int16_t Call(PluginMainProc pluginMain, int16_t selector);

    // Takes the pixel buffers back. Commits the output if `isGood`; otherwise the document's result becomes a copy of
    // the source again.
    void EndRun(bool isGood);

    // Called by the services, see calls.h. The code is kNoErr for calls that can't fail.
    virtual OSErr OnCall(const std::string&, OSErr) { return kNoErr; }

    // A whole run, BeginRun and EndRun included. Returns the first non-zero result, or 0.
    int16_t RunFilter(PluginMainProc pluginMain, RunKind kind);

    // All faults so far, one per line, after a check for stray writes. Empty if there are none.
    std::string Faults();

    // Everything still locked, live or acquired, one item per line, including the handles that the plug-in keeps on
    // purpose. Empty if there is nothing.
    std::string StillHeld() const;
};

// The host that is alive. Aborts the program if there is none.
FakeHost& CurrentHost();

}  // namespace stairmelt
