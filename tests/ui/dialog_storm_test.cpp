// Random messages and input to the open dialog and its controls: nothing may crash, hang, leak or leave the range.
//
// Left out, since sent at random they harm any program, not this one:
//   - messages whose parameters the system or its own controls follow as pointers or device contexts (texts,
//     rectangles, structures, owner-drawn items, edit controls', clipboard, drag-and-drop, input methods, pen, DDE);
//   - what creates or destroys a window behind the system's back, and the end of the session;
//   - what opens a menu or starts moving the window (the frame's mouse messages, WM_SYSCOMMAND, WM_SYSCHAR, the right
//     button's release over an edit box): a modal loop of the system's, which waits for the user.
// The sliders keep their ranges and edit boxes, which are the dialog's to set.
#include <algorithm>
#include <iterator>

#include "tests/support/dialog_objects.h"
#include "tests/support/dialog_session.h"

namespace stairmelt {

namespace {

struct MessageRange {
    UINT first, last;
};

constexpr MessageRange kLeftOut[] = {{WM_CREATE, WM_DESTROY},
                                     {WM_SETTEXT, WM_GETTEXT},
                                     {WM_QUERYENDSESSION, 0x13},
                                     {WM_ENDSESSION, 0x1E},
                                     {WM_GETMINMAXINFO, WM_GETMINMAXINFO},
                                     {WM_DRAWITEM, 0x2F},
                                     {WM_COMPAREITEM, 0x3D},
                                     {WM_WINDOWPOSCHANGING, WM_NOTIFY},
                                     {0x50, 0x55},
                                     {WM_CONTEXTMENU, WM_STYLECHANGED},
                                     {WM_NCCREATE, WM_NCCALCSIZE},
                                     {WM_GETDLGCODE, WM_GETDLGCODE},
                                     {WM_NCMOUSEMOVE, 0xAD},
                                     {EM_GETSEL, 0xEF},
                                     {0xFE, 0xFF},
                                     {WM_SYSCHAR, WM_SYSDEADCHAR},
                                     {0x10D, 0x10F},
                                     {WM_SYSCOMMAND, WM_TIMER},
                                     {0x118, WM_MENUSELECT},
                                     {WM_RBUTTONUP, WM_RBUTTONUP},
                                     {WM_ENTERMENULOOP, 0x219},
                                     {WM_MDICREATE, WM_MDIDESTROY},
                                     {WM_ENTERSIZEMOVE, WM_DROPFILES},
                                     {0x240, 0x24F},
                                     {0x280, 0x2BF},
                                     {WM_CUT, 0x310},
                                     {0x313, 0x313},
                                     {WM_PRINT, WM_PRINTCLIENT},
                                     {0x3E0, 0x3FF}};

bool IsLeftOut(UINT message) {
    return std::any_of(std::begin(kLeftOut), std::end(kLeftOut),
                       [&](const MessageRange& range) { return message >= range.first && message <= range.last; });
}

bool IsSliderSetting(UINT message) { return message == kSetRange || message == kSetBuddy; }

class DialogStorm : public DialogSession {
protected:
    // Returns how often the dialog was opened: a step may well close it.
    int Storm(SeededRandom& random, int steps) {
        int opened = 0;
        for (int step = 0; step < steps && !HasFailure(); ++step) {
            if (dialog == nullptr || HasEnded() || !IsWindowVisible(dialog)) {
                Reopen();
                ++opened;
            }
            constexpr int kControls[] = {IDOK,
                                         IDC_CANCEL_RESET,
                                         IDC_ZOOM_IN,
                                         IDC_ZOOM_LABEL,
                                         IDC_BIAS_EDIT,
                                         IDC_THRESHOLD_SLIDER,
                                         IDC_THRESHOLD_EDIT,
                                         IDC_SOFTNESS_SLIDER,
                                         IDC_SOFTNESS_EDIT,
                                         IDC_BIAS_SLIDER,
                                         IDC_FOCUS_PARKING};
            const int index = random.Below(static_cast<int>(std::size(kControls)) + 1);
            const HWND window = index == 0 ? dialog : Item(kControls[index - 1]);
            if (random.Below(3) == 0) {
                RandomInput(window, random);
            } else {
                RandomMessage(window, random);
            }
            if (step % 50 == 0 && !HasEnded()) Settle();
        }
        return opened;
    }

    void Reopen() {
        Close(IDCANCEL);
        Open();
        EXPECT_NE(dialog, nullptr) << "after " << last;
    }

    void RandomMessage(HWND window, SeededRandom& random) {
        UINT message = static_cast<UINT>(random.Below(0x801));
        // Half of them go where the plug-in has something to say.
        constexpr UINT kOurs[] = {WM_PAINT,     WM_KEYDOWN,    WM_SYSKEYDOWN,    WM_SYSKEYUP,    WM_COMMAND,
                                  WM_HSCROLL,   WM_MOUSEMOVE,  WM_LBUTTONDOWN,   WM_LBUTTONUP,   WM_MBUTTONDOWN,
                                  WM_MBUTTONUP, WM_MOUSEWHEEL, WM_LBUTTONDBLCLK, WM_SETFOCUS,    WM_KILLFOCUS,
                                  kGetPos,      kSetPos,       kRedrawThumb,     WM_RBUTTONDOWN, WM_INITDIALOG};
        if (random.Below(2) == 0) message = kOurs[random.Below(static_cast<int>(std::size(kOurs)))];
        if (IsLeftOut(message) || IsSliderSetting(message)) return;
        WPARAM wParam = random.Below(2) == 0 ? static_cast<WPARAM>(random.Below(2000))
                                             : static_cast<WPARAM>(static_cast<intptr_t>(random.Wild()));
        LPARAM lParam = random.Wild();
        if (message == WM_COMMAND && random.Below(2) == 0) wParam = MAKEWPARAM(1000 + random.Below(20), EN_CHANGE);
        if (message == WM_HSCROLL && random.Below(2) == 0) lParam = reinterpret_cast<LPARAM>(window);
        if (message == WM_PAINT) wParam = 0;  // controls would draw into any device context that it names
        // The menu keys, and the marks by which the system would open a menu when Alt goes up.
        if (message == WM_KEYDOWN || message == WM_KEYUP || message == WM_SYSKEYDOWN || message == WM_SYSKEYUP) {
            if (wParam == VK_F10 || wParam == VK_APPS) return;
            lParam &= 0xFFFF;
        }
        Step(window, message, wParam, lParam);
    }

    void RandomInput(HWND window, SeededRandom& random) {
        if (random.Below(3) == 0) {
            POINT place = {random.Below(700), random.Below(540)};
            ClientToScreen(dialog, &place);
            SetCursorPos(place.x, place.y);
        }
        constexpr WPARAM kKeys[] = {VK_UP,   VK_DOWN, VK_ADD,  VK_SUBTRACT, VK_OEM_COMMA, VK_OEM_PERIOD, VK_TAB,
                                    VK_BACK, VK_LEFT, VK_HOME, '0',         '7',          VK_DELETE};
        const LPARAM place = MAKELPARAM(random.Below(800) - 50, random.Below(600) - 20);
        switch (random.Below(8)) {
            case 0: return Step(dialog, WM_LBUTTONDOWN, MK_LBUTTON, place);
            case 1: return Step(dialog, WM_LBUTTONUP, 0, place);
            case 2: return Step(dialog, WM_MOUSEMOVE, 0, place);
            case 3: return Step(dialog, WM_MOUSEWHEEL, MAKEWPARAM(0, random.Below(720) - 360), place);
            case 4: return Step(dialog, random.Below(2) == 0 ? WM_LBUTTONDBLCLK : WM_RBUTTONDOWN, 0, place);
            case 5: return Step(Item(kRows[random.Below(3)].slider), WM_LBUTTONDOWN, MK_LBUTTON, place);
            case 6: return Step(Item(kRows[random.Below(3)].slider), WM_LBUTTONUP, 0, place);
            default: return Step(window, WM_KEYDOWN, kKeys[random.Below(static_cast<int>(std::size(kKeys)))], 1);
        }
    }

    void Step(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        last = "message " + std::to_string(message) + " " + std::to_string(wParam) + " " + std::to_string(lParam) +
               " to control " + std::to_string(GetDlgCtrlID(window));
        DWORD_PTR answer = 0;
        if (SendMessageTimeoutA(window, message, wParam, lParam, SMTO_NORMAL, kPatience, &answer) != 0) return;
        if (!HasEnded() && IsWindow(window)) ADD_FAILURE() << last << " isn't answered";
    }

    std::string last;
};

}  // namespace

TEST_F(DialogStorm, LeavesNothingBehind) {
    host.document = DocumentOf(kAllKernels[5], 200, 400, 3);  // with transparency, and higher than the pane
    int gdiObjects = 0, userObjects = 0;
    for (const uint64_t seed : {10u, 11u, 12u, 13u}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        SeededRandom random(seed);
        // After the first, short round everything is there that the system makes once for a process.
        const bool isFirst = seed == 10;
        const int opened = Storm(random, isFirst ? 1000 : 4000);
        EXPECT_LT(opened, 100) << "much of it met a closed dialog";
        if (HasEnded()) Reopen();
        ASSERT_NE(dialog, nullptr) << "after " << last;
        for (const ParameterRow& row : kRows) {
            EXPECT_GE(Position(row.slider), 0) << row.name;
            EXPECT_LE(Position(row.slider), row.max) << row.name;
        }
        EXPECT_EQ(Close(IDOK), kNoErr);
        EXPECT_EQ(host.buffers.blocks.CountLive(), 0);
        EXPECT_EQ(host.Faults(), "");
        ASSERT_EQ(Stored().size(), 5u);
        for (size_t i = 0; i < 3; ++i) {
            EXPECT_GE(Stored()[i], 0);
            EXPECT_LE(Stored()[i], kRows[i].max);
        }
        if (isFirst) {
            gdiObjects = CountGdiObjects();
            userObjects = CountUserObjects();
            const HBRUSH brush = CreateSolidBrush(0);
            EXPECT_EQ(CountGdiObjects(), gdiObjects + 1);
            DeleteObject(brush);
        }
        EXPECT_EQ(CountGdiObjects(), gdiObjects);
        EXPECT_EQ(CountUserObjects(), userObjects);
    }
}

}  // namespace stairmelt
