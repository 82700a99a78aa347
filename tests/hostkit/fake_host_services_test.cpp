// What the fake host's services do to a plug-in that breaks their rules: they move its blocks, and report it.
#include <gtest/gtest.h>

#include "hostkit/probe/probed_host.h"

namespace stairmelt {
namespace {

constexpr DescriptorKeyID kFirst = FourCharCode("Frst");
constexpr DescriptorKeyID kSecond = FourCharCode("Scnd");

TEST(FakeServices, BlocksMoveWhenUnlockedAndTellOfUseAfterDisposal) {
    ProbedHost host;
    const HandleProcs& procs = host.handles.procs;
    const Handle handle = procs.newProc(20);
    EXPECT_EQ(static_cast<uint8_t>((*handle)[7]), kFillPattern) << "new blocks must not be zeroed";
    (*handle)[19] = 19;
    const Ptr first = procs.lockProc(handle, 1);
    EXPECT_EQ(procs.lockProc(handle, 1), first) << "moved while locked";
    procs.unlockProc(handle);
    const Ptr second = procs.lockProc(handle, 1);
    EXPECT_NE(second, first) << "one unlock undoes both locks";
    EXPECT_EQ(second[19], 19);
    EXPECT_EQ(host.StillHeld(), "handle #1 locked\n");
    procs.disposeProc(handle);
    procs.disposeProc(handle);
    EXPECT_EQ(procs.lockProc(handle, 1), nullptr);
    EXPECT_EQ(host.Faults(), "disposeProc of the disposed handle #1\nlockProc of the disposed handle #1\n");
    EXPECT_EQ(host.StillHeld(), "");

    BufferID id = nullptr;
    ASSERT_EQ(host.buffers.procs.allocateProc(100, &id), kNoErr);
    EXPECT_EQ(host.StillHeld(), "buffer #1\n");
    host.buffers.procs.freeProc(id);
    EXPECT_EQ(host.StillHeld(), "");

    host.faults.clear();
    host.record.abortProc();
    host.buffers.procs.spaceProc();
    const std::string fault = "call of a routine that a filter has no need for\n";
    EXPECT_EQ(host.Faults(), fault + fault);
}

TEST(FakeServices, ScriptsOverwriteTheListedKeysAndTokensCloseOnce) {
    ProbedHost host;
    host.script.played = {{kSecond, 22}, {kFirst, 11, FourCharCode("TEXT")}};
    host.BeginRun();
    const PIDescriptorParameters& parameters = *host.record.descriptorParameters;
    const ReadDescriptorProcs& procs = *parameters.readDescriptorProcs;
    DescriptorKeyID keys[] = {kFirst, kSecond, 0};
    const PIReadDescriptor token = procs.openReadDescriptorProc(parameters.descriptor, keys);
    DescriptorKeyID key;
    DescriptorTypeID type;
    int32_t flags, value = -1;
    ASSERT_TRUE(procs.getKeyProc(token, &key, &type, &flags));
    EXPECT_EQ(keys[0], kFirst);
    EXPECT_TRUE(keys[1] != kSecond && keys[1] != 0) << "0 would end the list";
    ASSERT_TRUE(procs.getKeyProc(token, &key, &type, &flags));
    EXPECT_EQ(procs.getIntegerProc(token, &value), kParamErr);
    EXPECT_EQ(value, -1) << "a value of another type isn't stored";
    EXPECT_EQ(host.StillHeld(), "handle #1\n1 open descriptor tokens\n");
    EXPECT_EQ(procs.closeReadDescriptorProc(token), kParamErr);
    EXPECT_EQ(host.Faults(), "");
    procs.closeReadDescriptorProc(token);
    host.script.TakeRecorded();
    EXPECT_EQ(host.Faults(),
              "closeReadDescriptorProc with a token that isn't open\n"
              "the filter left the played descriptor in its place\n");
}

TEST(FakeServices, SuitesAreForThoseWhoHoldThemAndDescriptorsForTheirOwners) {
    ProbedHost host;
    const SPBasicSuite& basic = host.suites.basic;
    const void* suite = &host;
    EXPECT_EQ(basic.AcquireSuite(kActionDescriptorSuite, 2, &suite), kSPSuiteNotFound);
    ASSERT_EQ(basic.AcquireSuite(kDescriptorRegistrySuite, 1, &suite), kSPNoError);
    const auto* registry = static_cast<const PSDescriptorRegistryProcs*>(suite);
    ASSERT_EQ(basic.AcquireSuite(kActionDescriptorSuite, 3, &suite), kSPNoError);
    const auto* procs = static_cast<const PSActionDescriptorProcs*>(suite);

    PIActionDescriptor own = nullptr, copy = nullptr;
    ASSERT_EQ(procs->Make(&own), kNoErr);
    EXPECT_EQ(procs->PutInteger(own, kFirst, 1), kNoErr);
    EXPECT_EQ(registry->Register("settings", own, 1), kNoErr);
    EXPECT_EQ(procs->PutInteger(own, kFirst, 3), kNoErr);
    EXPECT_EQ(registry->Get("settings", &copy), kNoErr);
    int32_t value = 0;
    EXPECT_EQ(procs->GetInteger(copy, kFirst, &value), kNoErr);
    EXPECT_EQ(value, 1) << "the registry keeps a copy";
    EXPECT_EQ(host.registry.CountLiveDescriptors(), 2);
    procs->Free(own);
    procs->Free(copy);

    basic.ReleaseSuite(kActionDescriptorSuite, 3);
    EXPECT_EQ(host.Faults() + host.StillHeld(), std::string("suite ") + kDescriptorRegistrySuite + " acquired 1\n");
    basic.ReleaseSuite(kDescriptorRegistrySuite, 1);
    EXPECT_EQ(host.StillHeld(), "");
    procs->Free(copy);
    procs->Make(&own);
    EXPECT_NE(basic.ReleaseSuite(kDescriptorRegistrySuite, 1), kSPNoError);
    EXPECT_EQ(host.Faults(), std::string("Free of a suite that isn't held\nFree of a descriptor that isn't live\n"
                                         "Make of a suite that isn't held\nrelease of the suite ") +
                                 kDescriptorRegistrySuite + ", which isn't held\n");
}

}  // namespace
}  // namespace stairmelt
