// The fake host's handles, buffers, script descriptors, suites and registry, called as a plug-in calls them.
#include <gtest/gtest.h>

#include "hostkit/fake_host.h"

namespace stairmelt {
namespace {

constexpr DescriptorKeyID kFirst = FourCharCode("Frst");
constexpr DescriptorKeyID kSecond = FourCharCode("Scnd");
constexpr DescriptorKeyID kThird = FourCharCode("Thrd");

// Fills the handle's bytes with 0, 1, 2 ... through its inner pointer.
void Number(Handle handle, int size) {
    for (int i = 0; i < size; ++i) (*handle)[i] = static_cast<char>(i);
}

TEST(FakeHandles, MoveWhenUnlockedAndKeepTheirContents) {
    FakeHost host;
    const HandleProcs& procs = host.handles.procs;
    const Handle handle = procs.newProc(20);
    EXPECT_EQ(static_cast<uint8_t>((*handle)[7]), kFillPattern) << "new blocks must not be zeroed";
    Number(handle, 20);
    const Ptr first = procs.lockProc(handle, 1);
    EXPECT_EQ(procs.lockProc(handle, 1), first) << "moved while locked";
    procs.unlockProc(handle);
    EXPECT_EQ(host.StillHeld(), "handle #1\n") << "one unlock undoes both locks";
    const Ptr second = procs.lockProc(handle, 1);
    EXPECT_NE(second, first);
    EXPECT_EQ(second[19], 19);
    EXPECT_EQ(host.StillHeld(), "handle #1 locked\n");
    procs.unlockProc(handle);
    procs.unlockProc(handle);
    EXPECT_EQ(host.handles.blocks.made[0].locks, 3);
    EXPECT_EQ(host.handles.blocks.made[0].unlocks, 3);

    EXPECT_EQ(procs.setSizeProc(handle, 30), kNoErr);
    EXPECT_EQ(procs.getSizeProc(handle), 30);
    EXPECT_EQ((*handle)[19], 19);
    EXPECT_EQ(host.Faults(), "");
    procs.disposeProc(handle);
    procs.disposeProc(handle);
    EXPECT_EQ(procs.lockProc(handle, 1), nullptr);
    EXPECT_EQ(procs.lockProc(nullptr, 1), nullptr);
    EXPECT_EQ(host.Faults(), "disposeProc of the disposed handle #1\nlockProc of the disposed handle #1\n");
    EXPECT_EQ(host.StillHeld(), "");
}

TEST(FakeHandles, FailuresComeAtTheCallThatIsCounted) {
    FakeHost host;
    host.failures.newProc = 2;
    host.failures.lockProc = kEveryCall;
    const Handle handle = host.handles.procs.newProc(1);
    EXPECT_NE(handle, nullptr);
    EXPECT_EQ(host.handles.procs.newProc(1), nullptr);
    EXPECT_NE(host.handles.procs.newProc(1), nullptr);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(host.handles.procs.lockProc(handle, 1), nullptr);
    EXPECT_EQ(host.handles.procs.newProc(-1), nullptr);
}

TEST(FakeBuffers, AllocateLockAndFree) {
    FakeHost host;
    const BufferProcs& procs = host.buffers.procs;
    BufferID id = nullptr;
    ASSERT_EQ(procs.allocateProc(100, &id), kNoErr);
    const Ptr first = procs.lockProc(id, 1);
    first[99] = 5;
    procs.unlockProc(id);
    EXPECT_NE(procs.lockProc(id, 1), first);
    EXPECT_EQ(procs.lockProc(id, 1)[99], 5);
    procs.freeProc(id);
    EXPECT_EQ(host.StillHeld() + host.Faults(), "");

    host.failures.bufferAllocate = 1;
    EXPECT_EQ(procs.allocateProc(100, &id), kMemFullErr);
    EXPECT_EQ(id, nullptr);
    EXPECT_EQ(procs.lockProc(id, 1), nullptr);
}

TEST(FakeScript, ReadingOverwritesTheKeysAsTheyTurnUp) {
    FakeHost host;
    host.script.played = {{kSecond, 22}, {kFirst, 11, FourCharCode("TEXT")}};
    host.BeginRun();
    const PIDescriptorParameters& parameters = *host.record.descriptorParameters;
    const ReadDescriptorProcs& procs = *parameters.readDescriptorProcs;

    DescriptorKeyID keys[] = {kFirst, kSecond, kThird, 0};
    const PIReadDescriptor token = procs.openReadDescriptorProc(parameters.descriptor, keys);
    DescriptorKeyID key;
    DescriptorTypeID type;
    int32_t flags, value = -1;
    EXPECT_EQ(procs.getIntegerProc(token, &value), kErrMissingParameter) << "no key yet";
    ASSERT_TRUE(procs.getKeyProc(token, &key, &type, &flags));
    EXPECT_EQ(key, kSecond);
    EXPECT_EQ(keys[0], kFirst);
    EXPECT_NE(keys[1], kSecond);
    EXPECT_NE(keys[1], 0u) << "would end the list";
    EXPECT_EQ(procs.getIntegerProc(token, &value), kNoErr);
    EXPECT_EQ(value, 22);
    ASSERT_TRUE(procs.getKeyProc(token, &key, &type, &flags));
    EXPECT_EQ(type, FourCharCode("TEXT"));
    EXPECT_EQ(procs.getIntegerProc(token, &value), kParamErr);
    EXPECT_EQ(value, 22) << "a value of another type isn't stored";
    EXPECT_FALSE(procs.getKeyProc(token, &key, &type, &flags));
    EXPECT_EQ(keys[2], kThird);

    host.failures.missingKeysAreErrors = true;
    EXPECT_EQ(host.StillHeld(), "handle #1\n1 open descriptor tokens\n");
    EXPECT_EQ(procs.closeReadDescriptorProc(token), kErrMissingParameter);
    EXPECT_EQ(host.Faults(), "");
    procs.closeReadDescriptorProc(token);
    EXPECT_EQ(host.Faults(), "closeReadDescriptorProc with a token that isn't open\n");
}

TEST(FakeScript, TakesWhatIsRecordedAndTellsAPlayedDescriptorLeftBehind) {
    FakeHost host;
    host.script.played = {{kFirst, 1}};
    host.BeginRun();
    host.script.TakeRecorded();
    EXPECT_FALSE(host.script.hasRecorded);
    EXPECT_EQ(host.Faults(), "the filter left the played descriptor in its place\n");

    PIDescriptorParameters& parameters = *host.record.descriptorParameters;
    const WriteDescriptorProcs& procs = *parameters.writeDescriptorProcs;
    const PIWriteDescriptor token = procs.openWriteDescriptorProc();
    EXPECT_EQ(procs.putIntegerProc(token, kSecond, -7), kNoErr);
    EXPECT_EQ(procs.putIntegerProc(token, kFirst, 8), kNoErr);
    EXPECT_EQ(procs.closeWriteDescriptorProc(token, &parameters.descriptor), kNoErr);
    parameters.recordInfo = kPlugInDialogOptional;
    host.script.TakeRecorded();
    EXPECT_EQ(host.script.recorded, (std::vector<ScriptValue>{{kSecond, -7}, {kFirst, 8}}));
    EXPECT_EQ(host.script.recordInfo, kPlugInDialogOptional);
    EXPECT_EQ(host.StillHeld(), "");
}

TEST(FakeScript, KeepsTheDescriptorThatCouldNotBeReadOrTaken) {
    FakeHost host;
    host.script.played = {{kFirst, 1}};
    host.failures.openRead = 1;
    host.BeginRun();
    DescriptorKeyID keys[] = {kFirst, 0};
    EXPECT_EQ(host.script.readProcs.openReadDescriptorProc(host.script.parameters.descriptor, keys), nullptr);
    host.script.parameters.descriptor = host.handles.procs.newProc(0);
    host.script.TakeRecorded();
    EXPECT_TRUE(host.script.hasRecorded);
    EXPECT_EQ(host.StillHeld(), "");

    host.BeginRun();
    host.BeginRun();
    EXPECT_EQ(host.StillHeld(), "handle #4\n") << "that of the unfinished run is gone";
    EXPECT_EQ(host.Faults(), "");
}

class FakeSuitesTest : public testing::Test {
protected:
    // The suite, or null with a failure noted.
    template <class Suite>
    const Suite* Acquire(const char* name, int32_t version) {
        const void* suite = nullptr;
        EXPECT_EQ(basic.AcquireSuite(name, version, &suite), kSPNoError) << name;
        return static_cast<const Suite*>(suite);
    }
    FakeHost host;
    const SPBasicSuite& basic = host.suites.basic;
};

TEST_F(FakeSuitesTest, NameAndVersionMustMatchAndReleasesMustPairUp) {
    const int marker = 0;
    const void* suite = &marker;
    host.failures.refusedSuites = {kUIHooksSuite};
    EXPECT_EQ(basic.AcquireSuite(kUIHooksSuite, 1, &suite), kSPSuiteNotFound);
    EXPECT_EQ(basic.AcquireSuite(kActionDescriptorSuite, 2, &suite), kSPSuiteNotFound);
    EXPECT_EQ(suite, &marker) << "a refusal leaves the pointer as it was";
    host.failures.emptySuites = {kActionDescriptorSuite};
    EXPECT_EQ(Acquire<PSActionDescriptorProcs>(kActionDescriptorSuite, 3), nullptr);

    Acquire<PSDescriptorRegistryProcs>(kDescriptorRegistrySuite, 1);
    EXPECT_EQ(host.StillHeld(), std::string("suite ") + kDescriptorRegistrySuite + " acquired 1\n");
    EXPECT_EQ(basic.ReleaseSuite(kDescriptorRegistrySuite, 1), kSPNoError);
    EXPECT_EQ(host.StillHeld() + host.Faults(), "");
    EXPECT_NE(basic.ReleaseSuite(kDescriptorRegistrySuite, 1), kSPNoError);
    EXPECT_NE(host.Faults(), "");
}

TEST_F(FakeSuitesTest, RegistryKeepsCopiesInTheOrderOfTheirKeys) {
    const auto* registry = Acquire<PSDescriptorRegistryProcs>(kDescriptorRegistrySuite, 1);
    const auto* procs = Acquire<PSActionDescriptorProcs>(kActionDescriptorSuite, 3);
    PIActionDescriptor own = nullptr, copy = own;
    EXPECT_EQ(registry->Get("settings", &copy), kNoErr);
    EXPECT_EQ(copy, nullptr) << "nothing is stored yet";

    ASSERT_EQ(procs->Make(&own), kNoErr);
    EXPECT_EQ(procs->PutInteger(own, kSecond, 2), kNoErr);
    EXPECT_EQ(procs->PutInteger(own, kFirst, 1), kNoErr);
    EXPECT_EQ(registry->Register("settings", own, 1), kNoErr);
    EXPECT_EQ(procs->PutInteger(own, kSecond, 3), kNoErr);
    EXPECT_EQ(host.registry.persistent["settings"], (StoredValues{{kSecond, 2}, {kFirst, 1}}));

    EXPECT_EQ(registry->Get("settings", &copy), kNoErr);
    int32_t value = 0;
    uint32_t count = 0;
    Boolean hasKey = 1;
    EXPECT_EQ(procs->GetInteger(copy, kSecond, &value), kNoErr);
    EXPECT_EQ(value, 2);
    EXPECT_EQ(procs->GetInteger(copy, kThird, &value), kErrMissingParameter);
    EXPECT_EQ(procs->HasKey(copy, kThird, &hasKey), kNoErr);
    EXPECT_FALSE(hasKey);
    EXPECT_EQ(procs->GetCount(copy, &count), kNoErr);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(host.registry.CountLiveDescriptors(), 2);

    procs->Free(own);
    procs->Free(copy);
    EXPECT_EQ(host.Faults(), "");
    procs->Free(copy);
    basic.ReleaseSuite(kActionDescriptorSuite, 3);
    procs->Make(&own);
    EXPECT_EQ(host.Faults(), "Free of a descriptor that isn't live\nMake of a suite that isn't held\n");
}

}  // namespace
}  // namespace stairmelt
