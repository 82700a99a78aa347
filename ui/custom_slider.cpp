#include "ui/custom_slider.h"

#include <commctrl.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <new>

#include "host/dll_main.h"
#include "ui/dialog_controls.h"
#include "ui/dialog_state.h"
#include "ui/slider_geometry.h"

namespace stairmelt {

namespace {

// ---- State ----

constexpr int32_t kNeverPainted = INT32_MAX;

struct CustomSliderState {
    int32_t value = 0;
    SliderRange range = {0, 100};
    int32_t paintedValue = kNeverPainted;  // the value at the last paint
    int32_t dragStartValue = 0;            // the value when the left button went down
    bool dragging = false;
    HWND buddyEdit = nullptr;
};

// By window. The window's user data is not available: the dialog's subclassing keeps the replaced procedure there.
using SliderRegistry = std::map<HWND, CustomSliderState*>;

SliderRegistry& Registry() {
    static SliderRegistry registry;
    return registry;
}

// An unknown window gets an entry with no state; that covers the messages before WM_CREATE.
CustomSliderState*& EntryOf(HWND slider) { return Registry()[slider]; }

// ---- Geometry ----

RECT WindowRect(HWND slider) {
    RECT rect = {};
    GetWindowRect(slider, &rect);
    return rect;
}

int32_t WidthOf(HWND slider) {
    const RECT rect = WindowRect(slider);
    return rect.right - rect.left;
}

bool HasBuddyFocus(const CustomSliderState& state) { return GetFocus() == state.buddyEdit; }

// ---- Painting ----

struct Line {
    int x, y;
};

template <size_t kCount>
void DrawLines(HDC dc, HPEN pen, const Line (&points)[kCount]) {
    SelectObject(dc, pen);
    MoveToEx(dc, points[0].x, points[0].y, nullptr);
    for (size_t i = 1; i < kCount; ++i) LineTo(dc, points[i].x, points[i].y);
}

// Created once per process and never deleted.
HBRUSH FocusBrush() {
    static const HBRUSH brush = CreateSolidBrush(0);
    return brush;
}

void DrawGroove(HDC dc, int last, HPEN light, HPEN shadow, HPEN black) {
    DrawLines(dc, shadow, {{6, 6}, {6, 0}, {last - 6, 0}});
    DrawLines(dc, light, {{last - 6, 0}, {last - 6, 6}, {6, 6}});
    DrawLines(dc, black, {{7, 5}, {7, 1}, {last - 7, 1}, {last - 7, 5}, {7, 5}});
}

// The shape of a house pointing up, with a bevel inside.
void DrawThumb(HDC dc, int x, HBRUSH fill, HPEN light, HPEN shadow, HPEN black) {
    const POINT house[] = {{x, 0}, {x - 6, 6}, {x - 6, 12}, {x + 6, 12}, {x + 6, 6}};
    SelectObject(dc, black);
    SelectObject(dc, fill);
    Polygon(dc, house, 5);
    DrawLines(dc, light, {{x, 1}, {x - 5, 6}, {x - 5, 11}});
    DrawLines(dc, shadow, {{x - 5, 11}, {x + 5, 11}, {x + 5, 6}, {x, 1}});
}

void Draw(HDC dc, HWND slider, const CustomSliderState& state) {
    const RECT window = WindowRect(slider);
    const int width = window.right - window.left;
    const HBRUSH face = GetSysColorBrush(COLOR_3DFACE);
    const HPEN light = CreatePen(PS_SOLID, 1, GetSysColor(COLOR_3DHIGHLIGHT));
    const HPEN shadow = CreatePen(PS_SOLID, 1, GetSysColor(COLOR_3DSHADOW));
    const HPEN black = CreatePen(PS_SOLID, 1, 0);
    const HGDIOBJ oldBrush = SelectObject(dc, GetStockObject(BLACK_BRUSH));
    const HGDIOBJ oldPen = SelectObject(dc, GetStockObject(BLACK_PEN));

    // The bottom only has to be below the control; screen coordinates are, except on a monitor above the primary one.
    const RECT all = {0, 0, width, std::max<LONG>(window.top + 15, window.bottom - window.top)};
    FillRect(dc, &all, face);
    DrawGroove(dc, width - 1, light, shadow, black);
    DrawThumb(dc, PaintedThumbX(state.value, width, state.range), HasBuddyFocus(state) ? FocusBrush() : face, light,
              shadow, black);

    SelectObject(dc, oldBrush);
    SelectObject(dc, oldPen);
    DeleteObject(light);
    DeleteObject(shadow);
    DeleteObject(black);
}

LRESULT OnPaint(HWND slider, CustomSliderState& state) {
    PAINTSTRUCT paint = {};
    if (const HDC dc = BeginPaint(slider, &paint)) Draw(dc, slider, state);
    EndPaint(slider, &paint);
    state.paintedValue = state.value;
    return 0;
}

// Redraws the strip between the old and the new thumb immediately, so that the thumb keeps up with the mouse while the
// parent works.
void RedrawThumb(HWND slider, const CustomSliderState& state) {
    const RECT window = WindowRect(slider);
    const int32_t width = window.right - window.left;
    const SliderStrip strip =
        StripBetween(StripThumbX(state.paintedValue, width, state.range), StripThumbX(state.value, width, state.range),
                     std::max<int32_t>(window.right, width));
    // The limits only have to be large enough; screen coordinates are, except left of or above the primary monitor.
    const RECT rect = {strip.left, 0, strip.right, std::max<LONG>(window.bottom, window.bottom - window.top)};
    InvalidateRect(slider, &rect, FALSE);
    SendMessageA(slider, WM_PAINT, 0, 0);
    ValidateRect(slider, &rect);
}

// ---- Position and drag ----

LRESULT OnSetPos(HWND slider, CustomSliderState& state, int32_t position) {
    // Compared before clamping: a position out of range always redraws.
    if (position == state.value) return 0;
    state.value = state.range.Clamp(position);
    RedrawThumb(slider, state);
    return 0;
}

LRESULT OnSetRange(CustomSliderState& state, WORD low, WORD high) {
    state.range = {low, high};
    return 0;
}

void TrackMouse(HWND slider, CustomSliderState& state, int32_t x) {
    state.value = SliderPositionAt(x, WidthOf(slider), state.range);
    SendMessageA(GetParent(slider), WM_HSCROLL, SB_THUMBPOSITION, reinterpret_cast<LPARAM>(slider));
    if (HasBuddyFocus(state)) {
        RedrawThumb(slider, state);
    } else {
        SetFocus(state.buddyEdit);  // its subclass procedure then redraws the thumb
    }
}

void OnLButtonDown(HWND slider, CustomSliderState& state, int32_t x) {
    state.dragStartValue = state.value;
    TrackMouse(slider, state, x);
    SetCapture(slider);
    state.dragging = true;
}

// No render here: the preview has followed every move.
void FinishDrag(HWND slider, CustomSliderState& state) {
    ReleaseCapture();
    state.dragging = false;
    const HWND dialog = GetParent(slider);
    DialogState* const dialogState = StateOf(dialog);
    if (dialogState == nullptr) return;
    dialogState->suppressEditChange = true;
    SetEditValue(dialog, GetWindowLongA(state.buddyEdit, GWL_ID), state.value, true, state.dragStartValue);
    dialogState->suppressEditChange = false;
}

// ---- Creation and messages ----

void OnCreate(HWND slider) {
    CustomSliderState*& state = EntryOf(slider);
    if (state == nullptr) state = new (std::nothrow) CustomSliderState;
}

void OnDestroy(HWND slider) {
    delete EntryOf(slider);
    Registry().erase(slider);
}

LRESULT HandleMessage(HWND slider, CustomSliderState& state, UINT message, WPARAM wParam, LPARAM lParam) {
    const int32_t mouseX = static_cast<int16_t>(LOWORD(lParam));
    switch (message) {
        case WM_PAINT: return OnPaint(slider, state);
        case TBM_GETPOS: return state.value;
        case TBM_GETRANGEMIN: return state.range.min;
        case TBM_GETRANGEMAX: return state.range.max;
        case TBM_SETPOS: return OnSetPos(slider, state, static_cast<int32_t>(lParam));
        case TBM_SETRANGE: return OnSetRange(state, LOWORD(lParam), HIWORD(lParam));
        case TBM_SETTICFREQ:
        case TBM_SETPAGESIZE:
        case TBM_SETLINESIZE: return 0;
        case CSM_SETBUDDY: state.buddyEdit = reinterpret_cast<HWND>(wParam); break;
        case CSM_REDRAWTHUMB: RedrawThumb(slider, state); break;
        case WM_SETFOCUS: SetFocus(state.buddyEdit); break;
        case WM_LBUTTONDOWN: OnLButtonDown(slider, state, mouseX); break;
        case WM_LBUTTONUP:
            if (state.dragging) FinishDrag(slider, state);
            break;
        case WM_MOUSEMOVE:
            if (state.dragging) TrackMouse(slider, state, mouseX);
            break;
    }
    return DefWindowProcA(slider, message, wParam, lParam);
}

LRESULT CALLBACK CustomSliderProc(HWND slider, UINT message, WPARAM wParam, LPARAM lParam) {
    try {
        if (message == WM_CREATE) OnCreate(slider);
        if (message == WM_DESTROY) OnDestroy(slider);
        if (message == WM_NCDESTROY) {
            OnDestroy(slider);
        } else if (CustomSliderState* const state = EntryOf(slider)) {
            return HandleMessage(slider, *state, message, wParam, lParam);
        }
    } catch (const std::bad_alloc&) {
        // No memory for an entry: the message gets the default handling.
    }
    return DefWindowProcA(slider, message, wParam, lParam);
}

}  // namespace

// ---- Registration ----

void RegisterSliderClass() {
    static ATOM atom = 0;
    if (atom != 0) return;
    WNDCLASSA windowClass = {};
    windowClass.style = CS_HREDRAW | CS_VREDRAW;
    windowClass.lpfnWndProc = CustomSliderProc;
    windowClass.cbWndExtra = 32;  // reserved
    windowClass.hInstance = gInstance;
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(NULL_BRUSH));
    windowClass.lpszClassName = kSliderClass;
    atom = RegisterClassA(&windowClass);
}

}  // namespace stairmelt
