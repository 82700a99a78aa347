#include "hostkit/probe/probed_host.h"

#include <utility>

namespace stairmelt {
namespace {

// Counts one call. Returns whether it has to fail.
bool Fires(Countdown& countdown) { return countdown == kEveryCall || (countdown > 0 && --countdown == 0); }

// The services' own routines, which the functions below wrap.
decltype(ReadDescriptorProcs::closeReadDescriptorProc) gCloseRead;
decltype(SPBasicSuite::AcquireSuite) gAcquireSuite;

ProbedHost& Host() { return static_cast<ProbedHost&>(CurrentHost()); }

OSErr CloseRead(PIReadDescriptor token) {
    const OSErr result = gCloseRead(token);
    return Host().failures.closeReadCode.value_or(result);
}

SPErr AcquireSuite(const char* name, int32_t version, const void** suite) {
    const SPErr result = gAcquireSuite(name, version, suite);
    if (result != kSPNoError || !Host().failures.emptySuites.contains(name)) return result;
    *suite = nullptr;
    --Host().suites.held[name];
    return result;
}

}  // namespace

ProbedHost::ProbedHost() {
    checksPixels = true;
    gCloseRead = std::exchange(script.readProcs.closeReadDescriptorProc, CloseRead);
    gAcquireSuite = std::exchange(suites.basic.AcquireSuite, AcquireSuite);
}

void ProbedHost::BeginRun() {
    FakeHost::BeginRun();
    record.hostSig = failures.hostSig;
    resultOnEntry = failures.resultOnEntry;
    if (failures.noProgressProc) record.progressProc = nullptr;
    if (failures.noAdvanceState) record.advanceState = nullptr;
    if (failures.noDisplayPixels) record.displayPixels = nullptr;
    if (failures.noHandleProcs) record.handleProcs = nullptr;
    if (failures.noBufferProcs) record.bufferProcs = nullptr;
    if (failures.noPlatformData) record.platformData = nullptr;
    if (failures.noBasicSuite) record.sSPBasic = nullptr;
    if (failures.noBigDocument) record.bigDocumentData = nullptr;
    if (failures.noDescriptorParameters) record.descriptorParameters = nullptr;
    if (failures.noReadProcs) script.parameters.readDescriptorProcs = nullptr;
    if (failures.noWriteProcs) script.parameters.writeDescriptorProcs = nullptr;
    script.isUnreadable = failures.noReadProcs || failures.noDescriptorParameters;
    if (onBegin) onBegin();
}

OSErr ProbedHost::OnCall(const std::string& call, OSErr code) {
    log.push_back(call);
    if (code == kNoErr) return kNoErr;
    const bool isNumbered = failures.failingCalls.contains(++fallibleCalls);
    bool fails = Fires(failures.anyCall);
    if (fails && failures.failureLasts) failures.anyCall = kEveryCall;
    fails = fails || isNumbered;
    if (fails) log.back() += kFailedMark;
    for (auto& [beginning, failing] : failures.calls) {
        if (!call.starts_with(beginning)) continue;
        fails = Fires(failing.countdown) || fails;
        if (failing.code != kNoErr) code = failing.code;
    }
    return fails ? code : OSErr{kNoErr};
}

}  // namespace stairmelt
