// The switches by which a test makes a fake host fail, one for each failure that a real host may show.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "host/filter_api.h"

namespace stairmelt {

// Makes one call fail: n for the nth call from now, once; kEveryCall for all of them; 0 for none.
using Countdown = int;
constexpr Countdown kEveryCall = -1;

// Counts one call. True when this is the one that has to fail.
inline bool Fires(Countdown& countdown) { return countdown == kEveryCall || (countdown > 0 && --countdown == 0); }

struct Failures {
    // Any call that can report a failure, whichever routine it goes to: it does nothing and answers as that routine
    // fails. What gives something back (releasing, freeing, closing) does so all the same.
    Countdown anyCall = 0;
    bool failureLasts = false;   // from that call on all fail
    std::set<int> failingCalls;  // those calls fail too, by their numbers from 1 on

    // Handles and buffers: the routine gives null, or kMemFullErr.
    Countdown newProc = 0;
    Countdown lockProc = 0;
    Countdown bufferAllocate = 0;
    Countdown bufferLock = 0;
    bool failedAllocateKeepsId = false;  // the id stays as it was instead of becoming null

    // The advance answers with the code and does nothing.
    Countdown advanceState = 0;
    OSErr advanceStateCode = kUserCanceledErr;

    // Script descriptors.
    Countdown openRead = 0;
    Countdown getInteger = 0;            // gives kCoercedParamErr together with the value
    std::optional<OSErr> closeReadCode;  // instead of the worst error of the reading
    Countdown openWrite = 0;
    Countdown putInteger = 0;

    // Suites, by name; they are refused at any version.
    std::set<std::string> refusedSuites;
    std::set<std::string> emptySuites;  // acquiring succeeds, with null for the table; nothing is held then
    Countdown registryGet = 0;
    Countdown registryRegister = 0;
    Countdown makeDescriptor = 0;
    DescriptorKeyID getIntegerKey = 0;  // GetInteger of this key fails
    DescriptorKeyID putIntegerKey = 0;  // PutInteger of this key fails

    // Drawing: the routine answers with the code and draws nothing.
    Countdown displayPixels = 0;
    OSErr displayPixelsCode = kMemFullErr;

    // What the records lack. Looked at when a run begins, and for the about box.
    bool noHandleProcs = false;
    bool noProgressProc = false;
    bool noAdvanceState = false;
    bool noDescriptorParameters = false;
    bool noReadProcs = false;
    bool noWriteProcs = false;
    bool noBigDocument = false;
    bool noBasicSuite = false;
    bool noBufferProcs = false;
    bool noDisplayPixels = false;
    bool noPlatformData = false;
    uint32_t hostSig = kPhotoshopSignature;

    // Some hosts hand the previous selector's code to Finish instead of 0.
    bool resultStaysForFinish = false;
    int16_t resultOnEntry = kNoErr;  // what else each selector finds in its result
};

}  // namespace stairmelt
