// The about box, and the general dialog procedure that the library exports besides.
#include <algorithm>

#include "tests/support/dialog_session.h"

namespace stairmelt {

namespace {

class AboutBox : public DialogSession {
protected:
    HWND OpenAbout() { return Show(RunKind::kAbout); }
};

// The object of a caller's dialog. The procedure expects its virtual functions in this order.
struct CallersDialog {
    virtual void Unused() { notes.push_back("unused"); }
    virtual void OnInit() {
        PostMessageA(window, WM_APP, 5, 6);
        PostMessageA(window, WM_COMMAND, MAKEWPARAM(IDOK, 1), 9);
        PostMessageA(window, WM_COMMAND, IDCANCEL, 9);
    }
    virtual void OnCommand(WORD item, WORD notification, LPARAM lParam) {
        notes.push_back("command " + Lines{"", "OK", "Cancel"}.at(item) +
                        (notification == 1 && lParam == 9 ? " 1" : ""));
    }
    virtual void OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_APP && wParam == 5 && lParam == 6) notes.push_back("message");
        if (message == WM_NCDESTROY) notes.push_back("message after WM_DESTROY");
    }
    virtual ~CallersDialog() = default;

    HWND window = nullptr;
    Lines notes;
};

}  // namespace

TEST_F(AboutBox, ShowsBannerVersionAndCopyright) {
    // The low bit tells that Shift was pressed an odd number of times, the high bit that it is held.
    for (const int keyState : {0x00, 0x81, 0x01, 0x80}) {
        shiftState = static_cast<BYTE>(keyState);
        ASSERT_NE(OpenAbout(), nullptr);
        EXPECT_EQ(Text(IDC_ABOUT_VERSION),
                  keyState >= 0x80 ? "Version 1.0.2 (DEMO) (build:16)" : "Version 1.0.2 (DEMO)");
        EXPECT_EQ(Text(IDC_ABOUT_COPYRIGHT), "Copyright (C) 2026 N-ORVAWORKS");
        Close(IDCANCEL);
    }
    ASSERT_NE(OpenAbout(), nullptr);
    char title[64] = "";
    GetWindowTextA(dialog, title, sizeof title);
    EXPECT_STREQ(title, "About NORVA stairmelt for Photoshop");
    const Shot shot = Photograph(Item(IDC_ABOUT_BANNER));
    EXPECT_EQ(shot.width, 343);
    EXPECT_EQ(shot.height, 65);
    const auto [darkest, brightest] = std::minmax_element(shot.pixels.begin(), shot.pixels.end());
    EXPECT_NE(*darkest, *brightest) << "it is empty";
}

TEST_F(AboutBox, ClosesByEscapeCloseAndClickAlone) {
    ASSERT_NE(OpenAbout(), nullptr);
    // The statics let a click through to the box.
    EXPECT_EQ(Send(Item(IDC_ABOUT_BANNER), WM_NCHITTEST), HTTRANSPARENT);
    for (const WPARAM key : {VK_RETURN, VK_SPACE}) PostMessageA(dialog, WM_KEYDOWN, key, 1);
    for (const WPARAM command : {IDOK, IDC_ABOUT_BANNER}) PostMessageA(dialog, WM_COMMAND, command, 0);
    PostMessageA(dialog, WM_RBUTTONDOWN, MK_RBUTTON, 1);
    Settle();
    EXPECT_FALSE(HasEnded());
    PostMessageA(dialog, WM_KEYDOWN, VK_ESCAPE, 1);
    EXPECT_EQ(WaitForEnd(), kNoErr);
    for (const UINT message : {WM_CLOSE, WM_LBUTTONDOWN}) {
        ASSERT_NE(OpenAbout(), nullptr);
        PostMessageA(dialog, message, 0, 1);
        EXPECT_EQ(WaitForEnd(), kNoErr);
    }
}

TEST_F(AboutBox, StandsOverItsParentButOnTheScreen) {
    const LONG screenWidth = GetSystemMetrics(SM_CXSCREEN), screenHeight = GetSystemMetrics(SM_CYSCREEN);
    const struct {
        RECT parent;
        LONG middleX, middleY;  // the place is clamped to the screen
    } rows[] = {{{200, 150, 901, 700}, 550, 425},
                {{-900, -600, -101, -1}, -500, -300},
                {{screenWidth - 50, screenHeight - 9, screenWidth + 700, screenHeight + 300}, 9999, 9999},
                {{}, screenWidth / 2, screenHeight / 2}};  // no parent
    for (const auto& row : rows) {
        withHostWindow = row.parent.right != 0;
        hostWindowRect = row.parent;
        ASSERT_NE(OpenAbout(), nullptr);
        const RECT place = OpenedAt();
        const LONG width = place.right - place.left, height = place.bottom - place.top;
        EXPECT_EQ(place.left, std::clamp(row.middleX - width / 2, 0L, screenWidth - width)) << row.parent.left;
        EXPECT_EQ(place.top, std::clamp(row.middleY - height / 2, 0L, screenHeight - height)) << row.parent.left;
        Close(IDCANCEL);
    }
}

TEST_F(AboutBox, GeneralProcedureRunsADialogThroughItsObject) {
    const auto procedure = reinterpret_cast<DLGPROC>(reinterpret_cast<void*>(GetProcAddress(library, "GenericProc")));
    ASSERT_NE(procedure, nullptr);
    const struct {
        DLGTEMPLATE head;
        WORD menu, windowClass, title;
    } bytes = {{WS_POPUP | WS_CAPTION | WS_SYSMENU, 0, 0, 30, 30, 150, 90}, 0, 0, 0};
    CallersDialog object;
    EXPECT_EQ(DialogBoxIndirectParamA(nullptr, &bytes.head, nullptr, procedure, reinterpret_cast<LPARAM>(&object)),
              IDCANCEL);
    EXPECT_EQ(object.notes, (Lines{"message", "command OK 1", "command Cancel"}));

    // Without an object it does nothing but place the dialog.
    const HWND parent =
        CreateWindowExA(0, "Static", "", WS_POPUP | WS_BORDER, 100, 120, 802, 702, nullptr, nullptr, nullptr, nullptr);
    const HWND bare = CreateDialogIndirectParamA(nullptr, &bytes.head, parent, procedure, 0);
    SendMessageA(bare, WM_APP, 5, 6);
    RECT place = {};
    GetWindowRect(bare, &place);
    EXPECT_EQ(place.left, 101 + (800 - (place.right - place.left)) / 2 - GetSystemMetrics(SM_CXSIZE));
    EXPECT_EQ(place.top, 121 + (700 - (place.bottom - place.top)) / 3);
    DestroyWindow(parent);
}

}  // namespace stairmelt
