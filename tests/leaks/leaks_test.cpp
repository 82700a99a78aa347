// What thousands of runs leave behind in the host's process: nothing. Counted after the first runs, by which time
// everything is there that the system makes once for a process, and again at the end.
//
// STAIRMELT_SILENT_RUNS and STAIRMELT_OPENINGS in the environment ask for more than the short form that is made
// without.
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
    int privateKilobytes;  // memory of the process's own that is committed
    int heapKilobytes;     // of it, what is in use in its heaps
};

// Wine says 0 of a process's handles, but lists those of all processes.
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

// What Windows calls a process's private usage, which is 0 in Wine.
int CountPrivateKilobytes() {
    size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region = {};
    for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region) != 0; at += region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += region.RegionSize;
    }
    return static_cast<int>(bytes / 1024);
}

int CountHeapKilobytes() {
    HANDLE heaps[64];
    const DWORD count = std::min<DWORD>(GetProcessHeaps(64, heaps), 64);
    size_t bytes = 0;
    for (DWORD i = 0; i < count; ++i) {
        PROCESS_HEAP_ENTRY entry = {};
        HeapLock(heaps[i]);
        while (HeapWalk(heaps[i], &entry)) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) bytes += entry.cbData;
        }
        HeapUnlock(heaps[i]);
    }
    return static_cast<int>(bytes / 1024);
}

Possessions Count() {
    return {CountHandles(), CountGdiObjects(), CountUserObjects(), CountPrivateKilobytes(), CountHeapKilobytes()};
}

int FromEnvironment(const char* name, int otherwise) {
    const char* const text = std::getenv(name);
    return text != nullptr ? std::atoi(text) : otherwise;
}

void PrintTable(const char* what, int early, const Possessions& before, int late, const Possessions& after) {
    std::printf("%-20s after %6d  after %6d\n", what, early, late);
    const auto row = [](const char* name, int first, int last) {
        std::printf("  %-18s %12d  %12d\n", name, first, last);
    };
    row("handles", before.handles, after.handles);
    row("GDI objects", before.gdiObjects, after.gdiObjects);
    row("USER objects", before.userObjects, after.userObjects);
    row("private KiB", before.privateKilobytes, after.privateKilobytes);
    row("in heaps, KiB", before.heapKilobytes, after.heapKilobytes);
    std::fflush(stdout);
}

// The heap's own unevenness. A leak of some bytes in every run exceeds it in the long form.
constexpr int kToleratedKilobytes = 512;
// What the system opens once for itself, at a time of its own. A leak in every tenth run exceeds it in the short form.
constexpr int kToleratedHandles = 2;

class Leaks : public DialogSession {
protected:
    // Does one thing so many times.
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
        PrintTable(what, early, before, times, after);
        EXPECT_LE(after.handles, before.handles + kToleratedHandles);
        EXPECT_EQ(after.gdiObjects, before.gdiObjects + leftBySystem * (times - early));
        EXPECT_EQ(after.userObjects, before.userObjects);
        EXPECT_LE(after.privateKilobytes, before.privateKilobytes + kToleratedKilobytes);
    }

    // The host's own records grow with every run. What the plug-in didn't give back stays in them.
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
        EXPECT_LE(host.handles.blocks.made.size(), 2u) << "more than what it keeps from run to run";
    }

    int leftBySystem = 0;  // GDI objects that every opening leaves, whatever the plug-in does

    int16_t RunSilently(RunKind kind) {
        return host.RunFilter(
            reinterpret_cast<PluginMainProc>(reinterpret_cast<void*>(GetProcAddress(library, "PluginMain"))), kind);
    }
};

}  // namespace

TEST_F(Leaks, SilentRuns) {
    // The first run from the menu shows the dialog, and makes what is kept from run to run.
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
        host.failures.advanceState = isCancelled ? 1 : 0;
        EXPECT_EQ(RunSilently(isScript ? RunKind::kFromMenu : RunKind::kRepeat),
                  isCancelled ? kUserCanceledErr : kNoErr)
            << i;
    });
}

// Some hosts load the file anew for every run.
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
        // As the preview follows a value and a zoom, most of the drawing is done.
        SetText(IDC_SOFTNESS_EDIT, std::to_string(i % 101));
        ClickOn(i % 3 == 0 ? IDC_ZOOM_OUT : IDC_ZOOM_IN);
        EXPECT_EQ(Close(i % 2 == 0 ? IDOK : IDCANCEL), i % 2 == 0 ? kNoErr : kUserCanceledErr);
    });
}

TEST_F(Leaks, AboutBoxes) {
    // Windows deletes the picture that a static control has loaded for itself, and Wine leaves it to the process's end.
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
