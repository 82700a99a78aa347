// Runs the dialogs of the built plug-in the way a user sees them: a host thread runs the plug-in and stays in a
// dialog's modal loop, while the test's own thread finds the window and drives it by messages and by moving the
// pointer.
//
// Each session loads the library again and frees it while its host exists, since the plug-in keeps one of the host's
// suites until it is unloaded. The threads take turns with the host: the test may use it before Open, after Close, and
// while an open dialog is idle, that is after Settle or any call that ends with it.
//
// No wait is endless: after kPatience the test fails and the dialog is cancelled.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <thread>
#include <vector>

#include "resources/resource_ids.h"
#include "tests/support/plugin_run.h"

namespace stairmelt {

constexpr DWORD kPatience = 20000;  // milliseconds

// A parameter's controls, and the numbers that a user knows.
struct ParameterRow {
    const char* name;
    int slider, edit, max, reset;
    DescriptorKeyID key;
};
constexpr ParameterRow kRows[] = {
    {"threshold", IDC_THRESHOLD_SLIDER, IDC_THRESHOLD_EDIT, 255, 10, KEY_THRESHOLD},
    {"softness", IDC_SOFTNESS_SLIDER, IDC_SOFTNESS_EDIT, 100, 70, KEY_SOFTNESS},
    {"bias", IDC_BIAS_SLIDER, IDC_BIAS_EDIT, 100, 0, KEY_BIAS},
};

// The middle of the preview pane, in the dialog's client coordinates, and a place outside it.
constexpr POINT kPaneMiddle = {250, 190}, kBesidePane = {600, 300};

// The sliders' messages, by number.
constexpr UINT kGetPos = 1024, kGetRangeMin = 1025, kGetRangeMax = 1026, kSetPos = 1029, kSetRange = 1030,
               kSetTicFreq = 1044, kSetPageSize = 1045, kSetLineSize = 1047, kSetBuddy = 2024, kRedrawThumb = 2025;

struct DialogSession : PluginRun {
    DialogSession();  // with a small RGB picture open
    void SetUp() override;
    void TearDown() override;  // closes an open dialog; fails on stray writes and on anything still held

    // The library, which a host loads before the first run; these tests free it after the last.
    void Load();
    void Unload();

    // Runs the filter from the menu until its dialog is idle, and returns the dialog; null if the run ended without
    // one.
    HWND Open() { return Show(RunKind::kFromMenu); }
    HWND Show(RunKind kind);

    // Sends the dialog a command and waits for the end of the run; returns the run's result.
    int16_t Close(WPARAM command);
    int16_t WaitForEnd();
    bool HasEnded() const { return WaitForSingleObject(ended, 0) == WAIT_OBJECT_0; }

    // Waits until the dialog has handled all messages and input, including repaints.
    void Settle();

    // Both settle. A message to null does nothing.
    LRESULT Send(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) { return Send(dialog, message, wParam, lParam); }

    HWND Item(int id) const { return GetDlgItem(dialog, id); }
    RECT WindowRect() const;
    // The dialog's rectangle when it was shown, before a window manager had a say.
    static RECT OpenedAt();
    std::string Text(int id);
    void SetText(int id, const std::string& text);  // notifies the dialog, as typing does
    int Position(int sliderId) { return static_cast<int>(Send(Item(sliderId), kGetPos)); }
    std::vector<int> Positions();

    HWND Focus() const { return ThreadInfo().hwndFocus; }
    HWND Capture() const { return ThreadInfo().hwndCapture; }
    void SetFocusTo(int id) { Send(WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Item(id)), TRUE); }
    std::string Selected(int editId);  // the selected part of its text

    // Presses and releases a key at the keyboard focus, through the dialog's message loop. Not while Alt is held.
    void Key(WPARAM key);
    void Alt(bool isDown);

    // Moves the pointer to a place in a window's client area, the dialog's by default.
    void PointAt(const POINT& place, HWND window = nullptr);
    void ClickOn(int id) { Send(Item(id), BM_CLICK); }
    void Wheel(int delta) { Send(WM_MOUSEWHEEL, MAKEWPARAM(0, delta), 0); }

    // A window's client area as it was last painted, as 0x00RRGGBB.
    struct Shot {
        int width, height;
        std::vector<uint32_t> pixels;
        uint32_t At(int x, int y) const {
            return pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
        }
    };
    Shot Photograph(HWND window);

    // Values in the persistent store before and after a run.
    void Store(int threshold, int softness, int bias, int windowX = -1, int windowY = -1);
    std::vector<int> Stored() const;

    HMODULE library = nullptr;
    HWND dialog = nullptr;      // while one is open
    HWND hostWindow = nullptr;  // the dialog's owner; hidden
    RECT hostWindowRect = {200, 150, 900, 700};
    bool withHostWindow = true;
    BYTE shiftState = 0;  // of the Shift key, as GetKeyboardState reports it, while the plug-in is called

private:
    GUITHREADINFO ThreadInfo() const;
    void RunHost(RunKind kind);
    bool WaitFor(HANDLE event, const char* what);

    PluginMainProc pluginMain = nullptr;
    std::thread thread;
    DWORD threadId = 0;
    HANDLE ready, resting, ended;
    int16_t result = 0;
};

}  // namespace stairmelt
