// Thousands of runs leave nothing behind in the host's process. What it holds is counted after the first runs, when the
// system has created everything that it creates once per process, and again at the end.
//
// STAIRMELT_SILENT_RUNS and STAIRMELT_OPENINGS in the environment set the number of repetitions; the default is short.
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/dialog_objects.h"
#include "tests/support/dialog_session.h"

namespace stairmelt {

namespace {

struct Possessions {
    int handles, gdiObjects, userObjects;
    int privateKilobytes;  // committed private memory of the process
};

// Wine reports 0 handles for a process, but lists those of all processes.
int CountHandles() {
    DWORD count = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &count) && count != 0) return static_cast<int>(count);
    struct Entry {
        void* object;
        ULONG_PTR process, handle;
        ULONG rest[4];
    };
    constexpr ULONG kExtendedHandleInformation = 64;
    constexpr size_t kHead = 2 * sizeof(ULONG_PTR);  // the number of entries, and a reserved field
    const auto query = reinterpret_cast<LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQuerySystemInformation")));
    std::vector<uint8_t> list(1 << 16);
    while (query(kExtendedHandleInformation, list.data(), static_cast<ULONG>(list.size()), nullptr) != 0) {
        if (list.size() > 1 << 26) return 0;
        list.resize(2 * list.size());
    }
    ULONG_PTR entries = 0;
    std::memcpy(&entries, list.data(), sizeof entries);
    for (size_t i = 0; i < entries; ++i) {
        Entry entry;
        std::memcpy(&entry, &list[kHead + i * sizeof entry], sizeof entry);
        count += entry.process == GetCurrentProcessId();
    }
    return static_cast<int>(count);
}

// Windows reports this as a process's private usage; Wine reports 0 there.
int CountPrivateKilobytes() {
    size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region = {};
    for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region) != 0; at += region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += region.RegionSize;
    }
    return static_cast<int>(bytes / 1024);
}

Possessions Count() { return {CountHandles(), CountGdiObjects(), CountUserObjects(), CountPrivateKilobytes()}; }

int FromEnvironment(const char* name, int otherwise) {
    const char* const text = std::getenv(name);
    return text != nullptr ? std::atoi(text) : otherwise;
}

void Print(const char* what, int times, const Possessions& held) {
    std::printf("after %6d %-15s %6d handles %6d GDI %6d USER objects %8d KiB\n", times, what, held.handles,
                held.gdiObjects, held.userObjects, held.privateKilobytes);
    std::fflush(stdout);
}

// Heap usage fluctuates by itself. A leak of a few bytes per run exceeds this in the long form.
constexpr int kToleratedKilobytes = 512;
// The system opens some handles once, at a time of its own. A leak in every tenth run exceeds this in the short form.
constexpr int kToleratedHandles = 2;

class Leaks : public DialogSession {
protected:
    template <class Once>
    void Repeat(const char* what, int times, Once once) {
        const int early = std::max(1, std::min(100, times / 4));
        Possessions before = {};
        for (int i = 0; i < times && !HasFailure(); ++i) {
            once(i);
            ForgetPast();
            if (i + 1 == early) before = Count();
        }
        const Possessions after = Count();
        Print(what, early, before);
        Print(what, times, after);
        EXPECT_LE(after.handles, before.handles + kToleratedHandles);
        EXPECT_EQ(after.gdiObjects, before.gdiObjects + leftBySystem * (times - early));
        EXPECT_EQ(after.userObjects, before.userObjects);
        EXPECT_LE(after.privateKilobytes, before.privateKilobytes + kToleratedKilobytes);
    }

    // Clears the host's records, which grow with every run, except for what the plug-in hasn't released.
    void ForgetPast() {
        EXPECT_EQ(host.Faults(), "");
        EXPECT_EQ(
            host.buffers.blocks.CountLive() + host.registry.CountLiveDescriptors() + host.script.CountOpenTokens(), 0);
        host.log.clear();
        host.ui.cursors.clear();
        host.ui.display.reset();
        host.registry.descriptors.clear();
        host.script.readTokens.clear();
        host.script.writeTokens.clear();
        for (BlockStore* store : {&host.handles.blocks, &host.buffers.blocks}) {
            while (!store->made.empty() && !store->made.back().isLive) store->made.pop_back();
        }
        EXPECT_LE(host.handles.blocks.made.size(), 2u) << "more than it keeps from run to run";
    }

    int leftBySystem = 0;  // GDI objects that the system itself leaks in every repetition

    int16_t RunSilently(RunKind kind) {
        return host.RunFilter(
            reinterpret_cast<PluginMainProc>(reinterpret_cast<void*>(GetProcAddress(library, "PluginMain"))), kind);
    }
};

}  // namespace

TEST_F(Leaks, SilentRuns) {
    // The first run from the menu shows the dialog and creates what is kept from run to run.
    ASSERT_NE(Open(), nullptr);
    ASSERT_EQ(Close(IDOK), kNoErr);
    std::vector<FakeDocument> documents;
    for (const KernelCase& format : kAllKernels) documents.push_back(DocumentOf(format, 60, 40, 5));
    Repeat("silent runs", FromEnvironment("STAIRMELT_SILENT_RUNS", 400), [&](int i) {
        host.document = documents[static_cast<size_t>(i) % documents.size()];
        const bool isScript = i % 2 == 0, isCancelled = i % 10 == 9;
        host.script.played.clear();
        if (isScript) host.script.played = {{kThsh, i % 256}, {kSftn, i % 101}, {kBias, i % 99}};
        host.script.playInfo = kPlugInDialogDontDisplay;
        host.failures.calls["advanceState"] = {isCancelled ? 1 : 0};
        EXPECT_EQ(RunSilently(isScript ? RunKind::kFromMenu : RunKind::kRepeat),
                  isCancelled ? kUserCanceledErr : kNoErr)
            << i;
    });
}

// Some hosts load the library again for every run.
TEST_F(Leaks, Loads) {
    ASSERT_NE(Open(), nullptr);
    ASSERT_EQ(Close(IDOK), kNoErr);
    host.script.played = {{kThsh, 20}};
    host.script.playInfo = kPlugInDialogDontDisplay;
    Repeat("loads", 200, [&](int) {
        Unload();
        Load();
        EXPECT_EQ(RunSilently(RunKind::kRepeat), kNoErr);
    });
}

TEST_F(Leaks, DialogOpenings) {
    Repeat("dialog openings", FromEnvironment("STAIRMELT_OPENINGS", 40), [&](int i) {
        ASSERT_NE(Open(), nullptr);
        SetText(IDC_SOFTNESS_EDIT, std::to_string(i % 101));
        ClickOn(i % 3 == 0 ? IDC_ZOOM_OUT : IDC_ZOOM_IN);
        EXPECT_EQ(Close(i % 2 == 0 ? IDOK : IDCANCEL), i % 2 == 0 ? kNoErr : kUserCanceledErr);
    });
}

TEST_F(Leaks, AboutBoxes) {
    // Windows deletes the bitmap that a static control has loaded for itself; Wine keeps it until the process ends.
    const std::string name = "#" + std::to_string(IDB_BANNER);
    const auto showPicture = [&] {
        DestroyWindow(CreateWindowExA(0, "Static", name.c_str(), WS_POPUP | SS_BITMAP, 0, 0, 9, 9, nullptr, nullptr,
                                      library, nullptr));
    };
    showPicture();
    const int before = CountGdiObjects();
    showPicture();
    leftBySystem = CountGdiObjects() - before;
    Repeat("about boxes", FromEnvironment("STAIRMELT_OPENINGS", 40) / 4, [&](int) {
        ASSERT_NE(Show(RunKind::kAbout), nullptr);
        EXPECT_EQ(Close(IDCANCEL), kNoErr);
    });
}

}  // namespace stairmelt
