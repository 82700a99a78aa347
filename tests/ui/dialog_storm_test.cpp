// Random messages and input to the open dialog and its controls: nothing may crash, hang or leave the range.
//
// Of the system's own messages only some are sent: at random, the others harm any program, since their parameters are
// taken for pointers or device contexts, or since they open a menu that waits for the user.
#include <iterator>

#include "tests/support/dialog_session.h"

namespace stairmelt {

namespace {

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
            constexpr int kControls[] = {
                IDOK,          IDC_CANCEL_RESET,     IDC_ZOOM_IN,        IDC_ZOOM_LABEL,      IDC_FOCUS_PARKING,
                IDC_BIAS_EDIT, IDC_THRESHOLD_SLIDER, IDC_THRESHOLD_EDIT, IDC_SOFTNESS_SLIDER, IDC_SOFTNESS_EDIT};
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
        constexpr UINT kSystem[] = {WM_PAINT,     WM_KEYDOWN,    WM_SYSKEYDOWN,  WM_SYSKEYUP,      WM_COMMAND,
                                    WM_HSCROLL,   WM_MOUSEMOVE,  WM_LBUTTONDOWN, WM_LBUTTONUP,     WM_MBUTTONDOWN,
                                    WM_MBUTTONUP, WM_MOUSEWHEEL, WM_RBUTTONDOWN, WM_LBUTTONDBLCLK, WM_SETFOCUS,
                                    WM_KILLFOCUS, WM_INITDIALOG, WM_SHOWWINDOW,  WM_CANCELMODE,    WM_ACTIVATE,
                                    WM_ENABLE,    WM_CLOSE,      WM_CHAR,        WM_NULL};
        UINT message = kSystem[random.Below(static_cast<int>(std::size(kSystem)))];
        if (random.Below(3) == 0) message = WM_USER + static_cast<UINT>(random.Below(0x400));
        // The sliders keep the ranges and edit boxes that the dialog has given them.
        if (message == kSetRange || message == kSetBuddy) return;
        WPARAM wParam = random.Below(2) == 0 ? static_cast<WPARAM>(random.Below(2000))
                                             : static_cast<WPARAM>(static_cast<intptr_t>(random.Wild()));
        LPARAM lParam = random.Wild();
        if (message == WM_COMMAND && random.Below(2) == 0) wParam = MAKEWPARAM(1000 + random.Below(20), EN_CHANGE);
        if (message == WM_HSCROLL && random.Below(2) == 0) lParam = reinterpret_cast<LPARAM>(window);
        if (message == WM_PAINT) wParam = 0;  // controls would draw into any device context that it names
        // The menu keys, and the flags with which the system would open a menu when Alt goes up.
        if (message == WM_KEYDOWN || message == WM_SYSKEYDOWN || message == WM_SYSKEYUP) {
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
        constexpr WPARAM kSteppingKeys[] = {VK_UP,   VK_DOWN, VK_ADD,  VK_SUBTRACT, VK_OEM_COMMA, VK_OEM_PERIOD, VK_TAB,
                                            VK_BACK, VK_LEFT, VK_HOME, '0',         '7',          VK_DELETE};
        constexpr UINT kMouse[] = {WM_LBUTTONDOWN, WM_LBUTTONUP, WM_MOUSEMOVE, WM_LBUTTONDBLCLK, WM_RBUTTONDOWN};
        const LPARAM place = MAKELPARAM(random.Below(800) - 50, random.Below(600) - 20);
        const int kind = random.Below(8);
        if (kind == 0) Step(dialog, WM_MOUSEWHEEL, MAKEWPARAM(0, random.Below(720) - 360), place);
        if (kind == 1)
            Step(window, WM_KEYDOWN, kSteppingKeys[random.Below(static_cast<int>(std::size(kSteppingKeys)))], 1);
        if (kind == 2) Step(Item(kRows[random.Below(3)].slider), kMouse[random.Below(3)], MK_LBUTTON, place);
        if (kind > 2) Step(dialog, kMouse[random.Below(5)], MK_LBUTTON, place);
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

TEST_F(DialogStorm, EndsInADialogThatWorks) {
    host.document = DocumentOf(kAllKernels[5], 200, 400, 3);  // with transparency, and taller than the pane
    for (const uint64_t seed : {11u, 12u}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        SeededRandom random(seed);
        EXPECT_LT(Storm(random, 1500), 150) << "much of it met a closed dialog";
        if (HasEnded()) Reopen();
        ASSERT_NE(dialog, nullptr) << "after " << last;
        for (const ParameterRow& row : kRows) {
            EXPECT_GE(Position(row.slider), 0) << row.name;
            EXPECT_LE(Position(row.slider), row.max) << row.name;
        }
        EXPECT_EQ(Close(IDOK), kNoErr);
        EXPECT_EQ(host.buffers.blocks.CountLive(), 0);
        EXPECT_EQ(host.Faults(), "");
    }
}

}  // namespace stairmelt
