#include "tests/support/dialog_session.h"

#include <cstdio>
#include <cstdlib>

namespace stairmelt {
namespace {

constexpr char kHostClass[] = "FakeHostWindow";
constexpr UINT kMark = WM_APP + 77;  // follows everything that was in the queue before

// Whether the host's thread has reached the mark of the last Settle. Only that thread writes it.
struct {
    bool isMarked = false;
    HANDLE resting = nullptr;
} gRest;

// The system notifies a dialog's owner when the dialog's queue is empty, including repaints.
LRESULT CALLBACK HostWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == kMark) {
        gRest.isMarked = true;
        return 0;
    }
    if (message == WM_ENTERIDLE && gRest.isMarked) {
        gRest.isMarked = false;
        SetEvent(gRest.resting);
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

bool IsDialog(HWND window) {
    char name[32] = "";
    GetClassNameA(window, name, sizeof name);
    return std::string(name) == "#32770";
}

RECT gOpenedAt;

LRESULT CALLBACK NotePlace(int code, WPARAM wParam, LPARAM lParam) {
    const CWPSTRUCT& call = *reinterpret_cast<const CWPSTRUCT*>(lParam);
    if (call.message == WM_SHOWWINDOW && call.wParam != 0 && IsDialog(call.hwnd)) GetWindowRect(call.hwnd, &gOpenedAt);
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

BOOL CALLBACK KeepDialog(HWND window, LPARAM found) {
    if (!IsDialog(window) || !IsWindowVisible(window)) return TRUE;
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

}  // namespace

DialogSession::DialogSession()
    : ready(CreateEventA(nullptr, FALSE, FALSE, nullptr)),
      resting(CreateEventA(nullptr, FALSE, FALSE, nullptr)),
      ended(CreateEventA(nullptr, TRUE, TRUE, nullptr)) {
    host.document = DocumentOf(kAllKernels[4], 600, 500, 3);  // 8-bit RGB, larger than the pane
}

void DialogSession::SetUp() {
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = HostWindowProc;
    windowClass.hInstance = GetModuleHandleA(nullptr);
    windowClass.lpszClassName = kHostClass;
    RegisterClassA(&windowClass);  // fails in all sessions but the first, where it is new
    Load();
}

void DialogSession::Load() {
    library = LoadLibraryA(STAIRMELT_PLUGIN_FILE);
    ASSERT_NE(library, nullptr) << STAIRMELT_PLUGIN_FILE << ": error " << GetLastError();
    pluginMain = reinterpret_cast<PluginMainProc>(reinterpret_cast<void*>(GetProcAddress(library, "PluginMain")));
    ASSERT_NE(pluginMain, nullptr);
}

void DialogSession::TearDown() {
    if (!HasEnded()) Close(IDCANCEL);
    Unload();
    PluginRun::TearDown();
    // The two handles that the plug-in keeps by design; none if the test only used the about box.
    const std::string held = host.StillHeld();
    EXPECT_TRUE(held.empty() || held == "handle #1\nhandle #2\n") << held;
    for (const HANDLE event : {ready, resting, ended}) CloseHandle(event);
}

void DialogSession::Unload() {
    if (library != nullptr) FreeLibrary(library);
    // The system doesn't do this, and the next library may be loaded at the same address.
    UnregisterClassA("CustomSlider", library);
    library = nullptr;
}

// ---- The host's thread ----

void DialogSession::RunHost(RunKind kind) {
    threadId = GetCurrentThreadId();
    if (withHostWindow) {
        const RECT& place = hostWindowRect;
        hostWindow = CreateWindowExA(0, kHostClass, "host", WS_POPUP, place.left, place.top, place.right - place.left,
                                     place.bottom - place.top, nullptr, nullptr, GetModuleHandleA(nullptr), nullptr);
    }
    host.platform.hwnd = reinterpret_cast<intptr_t>(hostWindow);
    BYTE keys[256] = {};
    keys[VK_SHIFT] = shiftState;
    SetKeyboardState(keys);
    const HHOOK hook = SetWindowsHookExA(WH_CALLWNDPROC, NotePlace, nullptr, threadId);
    SetEvent(ready);
    result = host.RunFilter(pluginMain, kind);
    UnhookWindowsHookEx(hook);
    if (hostWindow != nullptr) DestroyWindow(hostWindow);
    hostWindow = nullptr;
    SetEvent(ended);
}

HWND DialogSession::Show(RunKind kind) {
    ResetEvent(ended);
    gRest.isMarked = false;
    gRest.resting = resting;
    thread = std::thread([this, kind] { RunHost(kind); });
    WaitFor(ready, "the host's thread to begin");
    dialog = nullptr;
    for (DWORD waited = 0; dialog == nullptr && !HasEnded() && waited < kPatience; waited += 5) {
        EnumThreadWindows(threadId, KeepDialog, reinterpret_cast<LPARAM>(&dialog));
        if (dialog == nullptr) WaitForSingleObject(ended, 5);
    }
    if (dialog == nullptr) WaitForEnd();
    Settle();
    return dialog;
}

bool DialogSession::WaitFor(HANDLE event, const char* what) {
    if (WaitForSingleObject(event, kPatience) == WAIT_OBJECT_0) return true;
    ADD_FAILURE() << "timed out waiting for " << what;
    return false;
}

int16_t DialogSession::Close(WPARAM command) {
    if (dialog != nullptr) PostMessageA(dialog, WM_COMMAND, command, 0);
    return WaitForEnd();
}

int16_t DialogSession::WaitForEnd() {
    if (!thread.joinable()) return result;
    if (!WaitFor(ended, "the dialog to close")) {
        if (dialog != nullptr) PostMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
        if (!WaitFor(ended, "the dialog to be cancelled")) {
            std::fputs("the plug-in hangs in its dialog; the tests cannot continue\n", stderr);
            std::_Exit(3);
        }
    }
    thread.join();
    dialog = nullptr;
    return result;
}

// ---- Driving ----

void DialogSession::Settle() {
    if (dialog == nullptr || hostWindow == nullptr) return;
    ResetEvent(resting);
    PostMessageA(hostWindow, kMark, 0, 0);
    const HANDLE either[] = {resting, ended};
    if (WaitForMultipleObjects(2, either, FALSE, kPatience) != WAIT_TIMEOUT) return;
    ADD_FAILURE() << "the dialog does not become idle";
    Close(IDCANCEL);
}

LRESULT DialogSession::Send(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    DWORD_PTR answer = 0;
    if (window == nullptr) return 0;
    if (SendMessageTimeoutA(window, message, wParam, lParam, SMTO_NORMAL, kPatience, &answer) == 0 && !HasEnded()) {
        ADD_FAILURE() << "message " << message << " is not answered";
    }
    Settle();
    return static_cast<LRESULT>(answer);
}

RECT DialogSession::WindowRect() const {
    RECT rect = {};
    GetWindowRect(dialog, &rect);
    return rect;
}

RECT DialogSession::OpenedAt() { return gOpenedAt; }

std::string DialogSession::Text(int id) {
    char text[256] = "";
    Send(Item(id), WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
    return text;
}

void DialogSession::SetText(int id, const std::string& text) {
    Send(Item(id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

std::vector<int> DialogSession::Positions() {
    std::vector<int> positions;
    for (const ParameterRow& row : kRows) positions.push_back(Position(row.slider));
    return positions;
}

std::string DialogSession::Selected(int editId) {
    const LRESULT range = Send(Item(editId), EM_GETSEL);
    const std::string text = Text(editId);
    return text.substr(LOWORD(range), static_cast<size_t>(HIWORD(range) - LOWORD(range)));
}

GUITHREADINFO DialogSession::ThreadInfo() const {
    GUITHREADINFO info = {};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(threadId, &info);
    return info;
}

void DialogSession::Key(WPARAM key) {
    constexpr LPARAM kOnce = 1, kReleased = 1 | 3 << 30;
    const LPARAM scanCode = static_cast<LPARAM>(MapVirtualKeyA(static_cast<UINT>(key), MAPVK_VK_TO_VSC)) << 16;
    PostMessageA(Focus(), WM_KEYDOWN, key, scanCode | kOnce);
    Settle();
    PostMessageA(Focus(), WM_KEYUP, key, scanCode | (kReleased & 0xFFFFFFFF));
    Settle();
}

void DialogSession::Alt(bool isDown) {
    // Without the bit that marks Alt as down: with it, releasing Alt would open the system menu.
    PostMessageA(Focus(), isDown ? WM_SYSKEYDOWN : WM_SYSKEYUP, VK_MENU, 1);
    Settle();
}

void DialogSession::PointAt(const POINT& place, HWND window) {
    POINT screen = place;
    ClientToScreen(window != nullptr ? window : dialog, &screen);
    SetCursorPos(screen.x, screen.y);
    // Under X, the move also comes back as an event, which would briefly undo the next move if it arrived after that.
    // Each pixel read from the screen is a reply of the X server, which has sent the event by the second one. The
    // dialog handles it once it is idle.
    const HDC dc = GetDC(nullptr);
    for (int i = 0; i < 2; ++i) GetPixel(dc, 0, 0);
    ReleaseDC(nullptr, dc);
    for (int i = 0; i < 2; ++i) Settle();
}

DialogSession::Shot DialogSession::Photograph(HWND window) {
    Settle();
    RECT client;
    GetClientRect(window, &client);
    Shot shot = {client.right, client.bottom, {}};
    shot.pixels.resize(static_cast<size_t>(shot.width) * static_cast<size_t>(shot.height));
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof info.bmiHeader, shot.width, -shot.height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    const HDC dc = GetDC(window);
    const HDC memory = CreateCompatibleDC(dc);
    const HBITMAP bitmap = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ old = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, shot.width, shot.height, dc, 0, 0, SRCCOPY);
    GdiFlush();
    for (size_t i = 0; i < shot.pixels.size(); ++i) {
        shot.pixels[i] = static_cast<const uint32_t*>(bits)[i] & 0xFFFFFF;
    }
    SelectObject(memory, old);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(window, dc);
    return shot;
}

// ---- The store ----

void DialogSession::Store(int threshold, int softness, int bias, int windowX, int windowY) {
    host.registry.persistent[PLUGIN_GUID] = {{KEY_THRESHOLD, threshold},
                                             {KEY_SOFTNESS, softness},
                                             {KEY_BIAS, bias},
                                             {KEY_WINDOW_X, windowX},
                                             {KEY_WINDOW_Y, windowY}};
}

std::vector<int> DialogSession::Stored() const {
    std::vector<int> values;
    const auto found = host.registry.persistent.find(PLUGIN_GUID);
    if (found == host.registry.persistent.end()) return values;
    for (const auto& [key, value] : found->second) values.push_back(value);
    return values;
}

}  // namespace stairmelt
