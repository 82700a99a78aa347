// The about box, and the general dialog procedure that the library exports beside it.
#include <algorithm>

#include "tests/support/dialog_session.h"

namespace stairmelt {

namespace {

class AboutBox : public DialogSession {
protected:
    HWND OpenAbout() { return Show(RunKind::kAbout); }

    RECT WindowRect() const {
        RECT rect = {};
        GetWindowRect(dialog, &rect);
        return rect;
    }
};

// A dialog of the caller's, as GenericProc expects it.
struct CallersDialog {
    virtual void Unused() { Note("unused"); }
    virtual void OnInit() { Note("init"); }
    virtual void OnCommand(WORD item, WORD notification, LPARAM lParam) {
        Note("command " + std::to_string(item) + " " + std::to_string(notification) + " " + std::to_string(lParam));
    }
    virtual void OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_NCDESTROY) Note("gone");
        if (message == WM_APP) Note("message " + std::to_string(wParam) + " " + std::to_string(lParam));
    }
    virtual ~CallersDialog() = default;

    HWND window = nullptr;

    void Note(const std::string& text) { notes.push_back(text); }
    Lines notes;
};

// Made on the test's own thread, from a template of no controls.
class GenericProc : public DialogSession {
protected:
    void SetUp() override {
        DialogSession::SetUp();
        procedure = reinterpret_cast<DLGPROC>(reinterpret_cast<void*>(GetProcAddress(library, "GenericProc")));
        ASSERT_NE(procedure, nullptr);
    }

    struct Template {
        DLGTEMPLATE head;
        WORD menu, windowClass, title;
    };
    static Template Empty(DWORD style, short width, short height) {
        return {{WS_POPUP | WS_CAPTION | style, 0, 0, 30, 30, width, height}, 0, 0, 0};
    }

    HWND Make(DWORD style, short width, short height, HWND owner, CallersDialog* object) {
        const Template bytes = Empty(style, width, height);
        return CreateDialogIndirectParamA(GetModuleHandleA(nullptr), &bytes.head, owner, procedure,
                                          reinterpret_cast<LPARAM>(object));
    }

    DLGPROC procedure = nullptr;
};

}  // namespace

TEST_F(AboutBox, ShowsBannerVersionAndCopyright) {
    for (const bool shift : {false, true, false}) {
        isShiftHeld = shift;
        ASSERT_NE(OpenAbout(), nullptr);
        char title[64] = "";
        GetWindowTextA(dialog, title, sizeof title);
        EXPECT_STREQ(title, "About NORVA stairmelt for Photoshop");
        EXPECT_EQ(Text(IDC_ABOUT_VERSION), shift ? "Version 1.0.2 (DEMO) (build:16)" : "Version 1.0.2 (DEMO)");
        EXPECT_EQ(Text(IDC_ABOUT_COPYRIGHT).rfind("Copyright", 0), 0u) << Text(IDC_ABOUT_COPYRIGHT);

        const HWND banner = Item(IDC_ABOUT_BANNER);
        BITMAP bitmap = {};
        GetObjectA(reinterpret_cast<HGDIOBJ>(Send(banner, STM_GETIMAGE, IMAGE_BITMAP)), sizeof bitmap, &bitmap);
        EXPECT_EQ(bitmap.bmWidth, 343);
        EXPECT_EQ(bitmap.bmHeight, 65);
        const Shot shot = Photograph(banner);
        EXPECT_EQ(shot.width, 343);
        EXPECT_EQ(shot.height, 65);
        const auto [darkest, brightest] = std::minmax_element(shot.pixels.begin(), shot.pixels.end());
        EXPECT_NE(*darkest, *brightest) << "it is empty";
        // The statics let a click through to the box.
        EXPECT_EQ(Send(banner, WM_NCHITTEST), HTTRANSPARENT);
        EXPECT_EQ(Send(Item(IDC_ABOUT_VERSION), WM_NCHITTEST), HTTRANSPARENT);
        EXPECT_EQ(Close(IDCANCEL), kNoErr);
    }
}

TEST_F(AboutBox, ClosesByEscapeCloseAndClickAlone) {
    const struct {
        UINT message;
        WPARAM wParam;
        bool closes;
    } rows[] = {{WM_KEYDOWN, VK_ESCAPE, true},         {WM_CLOSE, 0, true},
                {WM_LBUTTONDOWN, MK_LBUTTON, true},    {WM_KEYDOWN, VK_RETURN, false},
                {WM_KEYDOWN, VK_SPACE, false},         {WM_COMMAND, IDOK, false},
                {WM_COMMAND, IDC_ABOUT_BANNER, false}, {WM_RBUTTONDOWN, MK_RBUTTON, false}};
    for (const auto& row : rows) {
        ASSERT_NE(OpenAbout(), nullptr);
        PostMessageA(dialog, row.message, row.wParam, 1);
        Settle();
        if (row.closes) {
            WaitForEnd();
        } else {
            EXPECT_FALSE(HasEnded()) << row.message << " " << row.wParam;
            EXPECT_TRUE(IsWindowVisible(dialog));
        }
        Close(IDCANCEL);
    }
}

TEST_F(AboutBox, StandsOverItsParentButOnTheScreen) {
    const int screenWidth = GetSystemMetrics(SM_CXSCREEN), screenHeight = GetSystemMetrics(SM_CYSCREEN);
    ASSERT_NE(OpenAbout(), nullptr);
    const RECT first = WindowRect();
    const LONG width = first.right - first.left, height = first.bottom - first.top;
    Close(IDCANCEL);
    const struct {
        RECT parent;
        LONG left, top;
    } rows[] = {{{200, 150, 901, 700}, 550 - width / 2, 425 - height / 2},
                {{-900, -600, -101, -1}, 0, 0},
                {{screenWidth - 50, screenHeight - 9, screenWidth + 700, screenHeight + 300},
                 screenWidth - width,
                 screenHeight - height},
                {{}, screenWidth / 2 - width / 2, screenHeight / 2 - height / 2}};  // no parent
    for (const auto& row : rows) {
        withHostWindow = row.parent.right != 0;
        hostWindowRect = row.parent;
        ASSERT_NE(OpenAbout(), nullptr);
        EXPECT_EQ(WindowRect().left, row.left) << row.parent.left;
        EXPECT_EQ(WindowRect().top, row.top) << row.parent.left;
        Close(IDCANCEL);
    }
}

TEST_F(GenericProc, ServesADialogThroughItsObject) {
    CallersDialog object;
    const HWND made = Make(WS_SYSMENU, 100, 60, nullptr, &object);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(object.window, made);
    SendMessageA(made, WM_COMMAND, MAKEWPARAM(40, 3), 9);
    SendMessageA(made, WM_APP, 5, 6);
    SendMessageA(made, WM_COMMAND, MAKEWPARAM(IDOK, 1), 0);
    DestroyWindow(made);  // from then on the object is forgotten
    EXPECT_EQ(object.notes, (Lines{"init", "command 40 3 9", "message 5 6", "command 1 1 0"}));

    // A dialog without an object does nothing.
    object.notes.clear();
    const HWND bare = Make(WS_SYSMENU, 100, 60, nullptr, nullptr);
    ASSERT_NE(bare, nullptr);
    SendMessageA(bare, WM_COMMAND, MAKEWPARAM(40, 3), 9);
    SendMessageA(bare, WM_APP, 5, 6);
    EXPECT_EQ(object.notes, Lines{});
    DestroyWindow(bare);
}

TEST_F(GenericProc, OkAndCancelEndIt) {
    struct Ending : CallersDialog {
        WPARAM command = 0;
        void OnInit() override {
            PostMessageA(window, WM_COMMAND, MAKEWPARAM(IDCANCEL, 1), 0);  // a notification: it goes on
            PostMessageA(window, WM_COMMAND, 40, 0);
            PostMessageA(window, WM_COMMAND, command, 0);
        }
    };
    for (const WPARAM command : {WPARAM{IDOK}, WPARAM{IDCANCEL}}) {
        Ending object;
        object.command = command;
        const Template bytes = Empty(WS_SYSMENU, 100, 60);
        EXPECT_EQ(DialogBoxIndirectParamA(GetModuleHandleA(nullptr), &bytes.head, nullptr, procedure,
                                          reinterpret_cast<LPARAM>(&object)),
                  static_cast<INT_PTR>(command));
        EXPECT_EQ(object.notes.size(), 3u);
    }
}

TEST_F(GenericProc, CentresALittleLeftAndAThirdDown) {
    const int button = GetSystemMetrics(SM_CXSIZE);
    for (const auto& [style, offset] : {std::pair{WS_SYSMENU, button}, {DWORD{0}, button - button / 3}}) {
        const HWND parent = CreateWindowExA(0, "Static", "", WS_POPUP | WS_BORDER, 100, 120, 802, 702, nullptr, nullptr,
                                            nullptr, nullptr);
        const HWND made = Make(style, 150, 90, parent, nullptr);
        RECT place = {};
        GetWindowRect(made, &place);
        EXPECT_EQ(place.left, 101 + (800 - (place.right - place.left)) / 2 - offset);
        EXPECT_EQ(place.top, 121 + (700 - (place.bottom - place.top)) / 3);
        DestroyWindow(parent);
    }
}

}  // namespace stairmelt
