// The fake host for tests: it logs all calls, makes those fail that a test selects, and delivers pixels in guarded
// copies.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "hostkit/fake_host.h"

namespace stairmelt {

// Selects failing calls: n for the nth call from now, once; kEveryCall for all of them; 0 for none.
using Countdown = int;
constexpr Countdown kEveryCall = -1;

struct FailingCall {
    Countdown countdown = 0;
    OSErr code = kNoErr;  // the error to return; kNoErr for the routine's usual one
};

// A failing call only returns its error. Routines that give something back (release, free, close) still do so.
struct Failures {
    // By the beginning of the call's line in the log: "putIntegerProc", or "putIntegerProc Bias" for this key only.
    std::map<std::string, FailingCall> calls;

    Countdown anyCall = 0;       // counts the calls of all routines that can report a failure
    bool failureLasts = false;   // once anyCall has fired, all later calls fail, too
    std::set<int> failingCalls;  // further failing calls, numbered from 1

    std::optional<OSErr> closeReadCode;  // instead of the worst error of the reading
    std::set<std::string> emptySuites;   // acquiring succeeds, but gives null for the table and holds nothing

    // Members that the records lack, and values that they have. Applied when a run begins.
    bool noHandleProcs = false, noBufferProcs = false, noReadProcs = false, noWriteProcs = false;
    bool noProgressProc = false, noAdvanceState = false, noDisplayPixels = false;
    bool noDescriptorParameters = false, noBigDocument = false, noBasicSuite = false, noPlatformData = false;
    uint32_t hostSig = kPhotoshopSignature;
    int16_t resultOnEntry = kNoErr;  // the initial value of each selector's result
};

struct ProbedHost : FakeHost {
    ProbedHost();

    Failures failures;
    std::vector<std::string> log;  // calls to the plug-in and to the services, in order
    int fallibleCalls = 0;         // the plug-in's calls so far that could report a failure

    // If set, called once a run's record is complete, for tests that corrupt it.
    std::function<void()> onBegin;

    void BeginRun() override;
    OSErr OnCall(const std::string& call, OSErr code) override;
};

// Marks the log's line of a call that failed by its number.
constexpr char kFailedMark[] = " !";

}  // namespace stairmelt
