// An imitation of the host, which runs a filter plug-in on a document: a plain record that owns a real FilterRecord and
// the services behind it. Tools use it as it is, tests through probe/probed_host.h.
//
// The usual course:
//     FakeHost host;
//     host.document = ...;                  size, format, samples; perhaps a selection
//     host.script.played = ...;             perhaps values from a script, stored values
//     host.RunFilter(PluginMain, RunKind::kFromMenu);
//     host.document.result, host.Faults(), host.StillHeld() ...
// or, for single steps: BeginRun, changes to host.record, Call for each selector, EndRun.
//
// The host's callbacks have no argument that says whose they are, so there is one current host: the constructor makes
// it current, and two can't be alive at a time. All of it belongs to one thread. FilterRecord is packed: its fields
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
    kFromMenu,  // Parameters, Prepare, Start, Continue while anything is asked for, Finish
    kRepeat,    // the same from Prepare: the last filter again, or a script without its dialog
    kAbout,     // the about box
};

// The record between two zones of kFillPattern, so that a write beyond it shows.
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
    std::vector<std::string> faults;  // breaches of the rules found so far; Faults() looks for more

    FakeHandles handles;
    FakeBuffers buffers;
    FakeScript script;
    FakeRegistry registry;
    FakeSuites suites;
    FakeUi ui;
    FakePixels pixels;

    // What the plug-in gets. `parameters` in the record and `data` are the plug-in's and stay from run to run.
    GuardedRecord guarded;
    FilterRecord& record = guarded.record;
    BigDocumentStruct big{};
    PlatformData platform{};  // hwnd 0 unless the host's user sets one
    AboutRecord about{};
    intptr_t data = 0;
    Str255 errorString{};
    int16_t lastResult = 0;                  // of the last selector
    const int16_t* runningResult = nullptr;  // what the running selector has stored so far; null between selectors

    int16_t resultOnEntry = kNoErr;  // what each selector finds in its result

    // Whether pixels are delivered in guarded copies, which show what a filter does beside them. It takes twice the
    // memory.
    bool checksPixels = false;

    // Where set, what the plug-in's advances do in place of pixels.Deliver(), which it may call.
    std::function<OSErr()> onAdvance;

    // Where set, called as soon as a selector has returned, before anything is checked.
    std::function<void(int16_t selector)> onReturn;

    // Makes the record anew for the document: filled with a pattern, zeroed and set, with nothing asked for. The
    // document's result becomes a copy of its source, which is brought to the size that the document's fields say.
    virtual void BeginRun();

    // Sends one selector and returns its result. kFilterSelectorAbout comes with the about record. A change of a record
    // field that this host doesn't honour, of the host's own 32-bit coordinates or of a table of routines is a fault.
    int16_t Call(PluginMainProc pluginMain, int16_t selector);

    // Takes the pixel buffers back. Only with `isGood` is the output committed; otherwise the document's result is the
    // source again.
    void EndRun(bool isGood);

    // Called by the services, see calls.h; the code is kNoErr for calls that can't fail.
    virtual OSErr OnCall(const std::string&, OSErr) { return kNoErr; }

    // A whole run, BeginRun and EndRun included. Returns the first result that isn't 0, or 0.
    int16_t RunFilter(PluginMainProc pluginMain, RunKind kind);

    // All faults so far as lines of text, stray writes that haven't been seen yet included; empty when there are none.
    std::string Faults();

    // What is still locked, live or acquired, as lines of text, among them the handles that the plug-in means to keep;
    // empty when there is nothing.
    std::string StillHeld() const;
};

// The host that is alive. Ends the program when there is none.
FakeHost& CurrentHost();

}  // namespace stairmelt
