// The imitated host as tests need it: it logs all calls, fails as a test says, and delivers pixels in guarded copies.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "hostkit/fake_host.h"

namespace stairmelt {

// Makes one call fail: n for the nth call from now, once; kEveryCall for all of them; 0 for none.
using Countdown = int;
constexpr Countdown kEveryCall = -1;

struct FailingCall {
    Countdown countdown = 0;
    OSErr code = kNoErr;  // whatever makes the call fail; 0 for the routine's own
};

// A failing call does nothing and answers as its routine fails. What gives something back (releasing, freeing, closing)
// does so all the same.
struct Failures {
    // By the beginning of the call's line in the log: "putIntegerProc", or "putIntegerProc Bias" for this key alone.
    std::map<std::string, FailingCall> calls;

    Countdown anyCall = 0;       // any call that can report a failure, whichever routine it goes to
    bool failureLasts = false;   // from that call on all fail
    std::set<int> failingCalls;  // those calls fail too, by their numbers from 1 on

    std::optional<OSErr> closeReadCode;  // instead of the worst error of the reading
    std::set<std::string> emptySuites;   // acquiring succeeds, with null for the table; nothing is held then

    // What the records lack and hold. Looked at when a run begins.
    bool noHandleProcs = false, noBufferProcs = false, noReadProcs = false, noWriteProcs = false;
    bool noProgressProc = false, noAdvanceState = false, noDisplayPixels = false;
    bool noDescriptorParameters = false, noBigDocument = false, noBasicSuite = false, noPlatformData = false;
    uint32_t hostSig = kPhotoshopSignature;
    int16_t resultOnEntry = kNoErr;  // what each selector finds in its result
};

struct ProbedHost : FakeHost {
    ProbedHost();

    Failures failures;
    std::vector<std::string> log;  // calls of the plug-in and of the services, in order
    int fallibleCalls = 0;         // calls of the plug-in so far that could report a failure

    // Where set, called when a run's record has been made, which it may spoil.
    std::function<void()> onBegin;

    void BeginRun() override;
    OSErr OnCall(const std::string& call, OSErr code) override;
};

// Stands behind the line of a call that failed by its number.
constexpr char kFailedMark[] = " !";

}  // namespace stairmelt
