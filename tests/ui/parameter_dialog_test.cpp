// The parameter dialog's controls: what it opens with, how sliders and edit boxes keep in step, its keys, and what each
// way of closing it leaves behind.
#include <cstdlib>
#include <cstring>

#include "tests/support/dialog_session.h"

namespace stairmelt {

namespace {

using Values = std::vector<int>;

constexpr int kJapanese = 932;

class ParameterDialog : public DialogSession {
protected:
    // In code page 932, the captions read "cancel" and "initialise".
    std::string CancelCaption() const {
        return GetACP() == kJapanese ? "\x83\x4C\x83\x83\x83\x93\x83\x5A\x83\x8B" : "Cancel";
    }
    std::string ResetCaption() const { return GetACP() == kJapanese ? "\x8F\x89\x8A\xFA\x89\xBB" : "Reset"; }

    // In the dialog's client coordinates.
    RECT PlaceOf(HWND control) const {
        RECT rect = {};
        GetWindowRect(control, &rect);
        MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&rect), 2);
        return rect;
    }

    Lines Texts() { return {Text(kRows[0].edit), Text(kRows[1].edit), Text(kRows[2].edit)}; }
};

}  // namespace

TEST_F(ParameterDialog, OpensWithTheStoredValues) {
    // Fails a run that is meant to be Japanese but isn't.
    const char* const codePage = std::getenv("STAIRMELT_CODE_PAGE");
    EXPECT_TRUE(codePage == nullptr || codePage == std::to_string(GetACP())) << GetACP();
    Store(20, 30, 40);
    ASSERT_NE(Open(), nullptr);
    char title[64] = "";
    GetWindowTextA(dialog, title, sizeof title);
    EXPECT_STREQ(title, "NORVA stairmelt");
    EXPECT_EQ(GetWindow(dialog, GW_OWNER), hostWindow);
    EXPECT_EQ(Positions(), (Values{20, 30, 40}));
    EXPECT_EQ(Texts(), (Lines{"20", "30", "40"}));
    EXPECT_EQ(Text(IDOK), "OK");
    EXPECT_EQ(Text(IDC_CANCEL_RESET), CancelCaption());
    EXPECT_EQ(Text(IDC_ZOOM_LABEL), "100 %");

    // A script's values may be out of the dialog's range: the sliders clamp them, the texts do not.
    Close(IDCANCEL);
    Store(3000, -5, 101);  // also shows the sliders' ranges
    ASSERT_NE(Open(), nullptr);
    EXPECT_EQ(Positions(), (Values{255, 0, 100}));
    EXPECT_EQ(Texts(), (Lines{"3000", "-5", "101"}));
}

TEST_F(ParameterDialog, OkKeepsThePositionsAndTheWindowsPlace) {
    ASSERT_NE(Open(), nullptr);
    SetText(IDC_THRESHOLD_EDIT, "999");
    SetText(IDC_SOFTNESS_EDIT, " \t-7");
    SetText(IDC_BIAS_EDIT, "+42.9 %");
    EXPECT_EQ(Texts(), (Lines{"999", " \t-7", "+42.9 %"}));
    SetWindowPos(dialog, nullptr, 0, 44, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    const auto isThere = [&] { return WindowRect().left == 0 && WindowRect().top == 44; };
    for (DWORD waited = 0; !isThere() && waited < kPatience; waited += 10) Sleep(10);
    ASSERT_TRUE(isThere());
    ClickOn(IDOK);
    EXPECT_EQ(WaitForEnd(), kNoErr);
    EXPECT_EQ(Stored(), (Values{255, 0, 42, 0, 44}));
    EXPECT_TRUE(host.document.result == Smoothed(255, 0, 42));

    // Enter presses OK.
    ASSERT_NE(Open(), nullptr);
    SetText(IDC_THRESHOLD_EDIT, "no number");
    PostMessageA(Item(IDC_BIAS_EDIT), WM_KEYDOWN, VK_RETURN, 1);
    EXPECT_EQ(WaitForEnd(), kNoErr);
    EXPECT_EQ(Stored(), (Values{0, 0, 42, 0, 44}));
}

TEST_F(ParameterDialog, CancelLeavesEverythingAsItWas) {
    const Values stored = {20, 30, 40, 50, 60};
    Store(20, 30, 40, 50, 60);
    for (const char* const way : {"Cancel", "Escape", "Close"}) {
        ASSERT_NE(Open(), nullptr);
        SetText(IDC_SOFTNESS_EDIT, "1");
        SetWindowPos(dialog, nullptr, 11, 12, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
        Settle();
        const std::string name = way;
        if (name == "Cancel") PostMessageA(Item(IDC_CANCEL_RESET), BM_CLICK, 0, 0);
        if (name == "Escape") PostMessageA(Focus(), WM_KEYDOWN, VK_ESCAPE, 1);
        if (name == "Close") PostMessageA(dialog, WM_CLOSE, 0, 0);
        EXPECT_EQ(WaitForEnd(), kUserCanceledErr) << way;
        EXPECT_EQ(Stored(), stored) << way;
        int32_t block[5];
        std::memcpy(block, host.handles.blocks.made[0].memory.Data(), sizeof block);
        EXPECT_EQ(Values(block, block + 5), stored) << way;
    }
}

// The preview is laid out in pixels and the rest in dialog units, which depend on the font.
TEST_F(ParameterDialog, OpensWithEveryControlInItsPlace) {
    for (const RunKind kind : {RunKind::kAbout, RunKind::kFromMenu}) {
        ASSERT_NE(Show(kind), nullptr);
        EXPECT_NE(GetWindowLongA(dialog, GWL_STYLE) & WS_SYSMENU, 0) << "it has no close button";
        RECT unit = {0, 0, 4, 8}, client = {}, common = {};
        MapDialogRect(dialog, &unit);
        EXPECT_EQ(unit.right, 6);
        EXPECT_EQ(unit.bottom, 13);
        GetClientRect(dialog, &client);
        std::vector<RECT> taken;
        if (kind == RunKind::kFromMenu) taken.push_back({10, 10, 490, 370});  // the pane
        for (HWND child = GetWindow(dialog, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
            char text[64] = "";
            const int length = static_cast<int>(Send(child, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text)));
            SCOPED_TRACE(std::to_string(GetDlgCtrlID(child)) + " " + text);
            const RECT place = PlaceOf(child);
            EXPECT_TRUE(IntersectRect(&common, &place, &client) && EqualRect(&common, &place)) << "is cut off";
            for (const RECT& other : taken) EXPECT_FALSE(IntersectRect(&common, &place, &other)) << "overlaps another";
            taken.push_back(place);
            const HDC dc = GetDC(child);
            SelectObject(dc, reinterpret_cast<HFONT>(SendMessageA(child, WM_GETFONT, 0, 0)));
            SIZE needed = {};
            GetTextExtentPoint32A(dc, text, length, &needed);
            ReleaseDC(child, dc);
            EXPECT_LE(needed.cx, place.right - place.left) << "is cut short";
        }
        if (kind == RunKind::kAbout) Close(IDCANCEL);
    }

    const char* const labels[] = {"color threshold", "softness", "bias"};
    std::vector<int> tabs = {IDOK, IDC_CANCEL_RESET};
    for (size_t i = 0; i < 3; ++i) {
        const RECT label = PlaceOf(FindWindowExA(dialog, nullptr, "Static", labels[i]));
        const RECT slider = PlaceOf(Item(kRows[i].slider)), edit = PlaceOf(Item(kRows[i].edit));
        EXPECT_EQ(label.left, slider.left) << labels[i];
        EXPECT_NEAR(label.bottom, slider.top, 6) << labels[i];
        EXPECT_NEAR(edit.top, slider.top, 10) << labels[i];
        tabs.insert(tabs.end(), {kRows[i].slider, kRows[i].edit});
    }
    const RECT zoom = PlaceOf(Item(IDC_ZOOM_LABEL));
    EXPECT_TRUE(PlaceOf(Item(IDC_ZOOM_OUT)).right <= zoom.left && zoom.right <= PlaceOf(Item(IDC_ZOOM_IN)).left);
    std::vector<int> order;
    for (HWND at = Focus(); order.size() < tabs.size(); at = GetNextDlgTabItem(dialog, at, FALSE)) {
        order.push_back(GetDlgCtrlID(at));
    }
    EXPECT_EQ(order, tabs);
}

TEST_F(ParameterDialog, OpensWhereItWasLeftButOnTheScreen) {
    const int screenWidth = GetSystemMetrics(SM_CXSCREEN), screenHeight = GetSystemMetrics(SM_CYSCREEN);
    for (const auto& [storedX, storedY] : {std::pair{-1, 5}, {0, 60}, {40, 0}, {5000, 5000}}) {
        Store(10, 70, 0, storedX, storedY);
        ASSERT_NE(Open(), nullptr);
        const RECT place = OpenedAt();
        const int width = place.right - place.left, height = place.bottom - place.top;
        const bool isCentred = storedX < 0;
        EXPECT_EQ(place.left, isCentred ? screenWidth / 2 - width / 2 : std::min(storedX, screenWidth - width));
        EXPECT_EQ(place.top, isCentred ? screenHeight / 2 - height / 2 : std::min(storedY, screenHeight - height));
        Close(IDCANCEL);
    }
}

TEST_F(ParameterDialog, ArrowsStepAParameterFromItsEditBox) {
    ASSERT_NE(Open(), nullptr);
    const struct {
        int slider, edit;
        const char* typed;
        WPARAM key;
        const char* shown;
    } rows[] = {{IDC_THRESHOLD_SLIDER, IDC_THRESHOLD_EDIT, "20", VK_UP, "21"},
                {IDC_THRESHOLD_SLIDER, IDC_THRESHOLD_EDIT, "999", VK_UP, "255"},
                {IDC_SOFTNESS_SLIDER, IDC_SOFTNESS_EDIT, "999", VK_DOWN, "99"},
                {IDC_BIAS_SLIDER, IDC_BIAS_EDIT, "0", VK_DOWN, "0"},
                {IDC_BIAS_SLIDER, IDC_BIAS_EDIT, "", VK_UP, "1"}};
    for (const auto& row : rows) {
        SetFocusTo(row.edit);
        SetText(row.edit, row.typed);
        Key(row.key);
        EXPECT_EQ(Text(row.edit), row.shown) << row.typed;
        EXPECT_EQ(Selected(row.edit), row.shown) << row.typed;
        EXPECT_EQ(Position(row.slider), std::atoi(row.shown)) << row.typed;
        EXPECT_EQ(GetDlgCtrlID(Focus()), row.edit);
    }

    // With the focus elsewhere they have no effect, whichever window passes them to the dialog.
    SetFocusTo(IDC_ZOOM_IN);
    const Values before = Positions();
    Send(WM_KEYDOWN, VK_UP, 1);
    Send(Item(IDC_THRESHOLD_SLIDER), WM_KEYDOWN, VK_UP, 1);
    Send(Item(IDC_ZOOM_IN), WM_KEYDOWN, VK_DOWN, 1);
    EXPECT_EQ(Positions(), before);
}

TEST_F(ParameterDialog, PlusAndMinusZoomOutsideTheEditBoxes) {
    ASSERT_NE(Open(), nullptr);
    const WPARAM plus[] = {VK_ADD, VK_OEM_PLUS, VK_OEM_PERIOD}, minus[] = {VK_SUBTRACT, VK_OEM_MINUS, VK_OEM_COMMA};
    const int from[] = {IDOK, IDC_CANCEL_RESET, IDC_FOCUS_PARKING};
    for (int i = 0; i < 3; ++i) {
        SetFocusTo(from[i]);
        Key(plus[i]);
        EXPECT_EQ(Text(IDC_ZOOM_LABEL), "200 %") << "from " << from[i] << " key " << plus[i];
        EXPECT_EQ(GetDlgCtrlID(Focus()), IDC_ZOOM_IN);
        SetFocusTo(from[i]);
        Key(minus[i]);
        EXPECT_EQ(Text(IDC_ZOOM_LABEL), "100 %") << "from " << from[i] << " key " << minus[i];
        EXPECT_EQ(GetDlgCtrlID(Focus()), IDC_ZOOM_OUT);
    }
    // The sliders never keep the focus, but would pass the keys on as well.
    Send(Item(IDC_BIAS_SLIDER), WM_KEYDOWN, VK_OEM_PLUS, 1);
    EXPECT_EQ(Text(IDC_ZOOM_LABEL), "200 %");

    // In an edit box they are text.
    SetFocusTo(IDC_SOFTNESS_EDIT);
    SetText(IDC_SOFTNESS_EDIT, "");
    for (const WPARAM key : {VK_ADD, VK_SUBTRACT, VK_OEM_PERIOD}) Key(key);
    EXPECT_EQ(Text(IDC_SOFTNESS_EDIT), "+-.");
    EXPECT_EQ(Text(IDC_ZOOM_LABEL), "200 %");
}

TEST_F(ParameterDialog, AltTurnsCancelIntoReset) {
    Store(20, 30, 40);
    ASSERT_NE(Open(), nullptr);
    for (const int from : {static_cast<int>(IDOK), IDC_THRESHOLD_EDIT}) {
        SetFocusTo(from);
        Alt(true);
        EXPECT_EQ(Text(IDC_CANCEL_RESET), ResetCaption()) << from;
        Alt(false);
        EXPECT_EQ(Text(IDC_CANCEL_RESET), CancelCaption()) << from;
    }
    Send(WM_SYSKEYDOWN, VK_F10, 1);
    EXPECT_EQ(Text(IDC_CANCEL_RESET), CancelCaption());

    // Other keys pressed while Alt is held, and their release in a control, leave it.
    Alt(true);
    Send(WM_SYSKEYDOWN, 'Q', 1);
    Send(Item(IDC_THRESHOLD_EDIT), WM_SYSKEYUP, 'Q', 1);
    EXPECT_EQ(Text(IDC_CANCEL_RESET), ResetCaption());
    ClickOn(IDC_CANCEL_RESET);
    ASSERT_FALSE(HasEnded());
    EXPECT_EQ(Positions(), (Values{10, 70, 0}));
    EXPECT_EQ(Texts(), (Lines{"10", "70", "0"}));
    EXPECT_EQ(Text(IDC_CANCEL_RESET), ResetCaption());
    // Values that stay the same are set again without a render.
    const int displays = host.ui.displays;
    ClickOn(IDC_CANCEL_RESET);
    EXPECT_EQ(host.ui.displays, displays);

    // The release of any system key in the dialog itself ends it, and then the same button cancels.
    Send(WM_SYSKEYUP, VK_F10, 1);
    EXPECT_EQ(Text(IDC_CANCEL_RESET), CancelCaption());
    PostMessageA(Item(IDC_CANCEL_RESET), BM_CLICK, 0, 0);
    EXPECT_EQ(WaitForEnd(), kUserCanceledErr);
}

TEST_F(ParameterDialog, EndsWithoutADialogWhereThereCanBeNone) {
    // Without suites the run counts as cancelled.
    host.failures.noBasicSuite = true;
    EXPECT_EQ(Open(), nullptr);
    EXPECT_EQ(WaitForEnd(), kUserCanceledErr);

    // If the dialog cannot be created, the run continues with the current values.
    host.failures = {};
    Store(20, 30, 40, 50, 60);
    ASSERT_NE(Open(), nullptr);
    Close(IDCANCEL);
    ASSERT_TRUE(UnregisterClassA("CustomSlider", library));
    EXPECT_EQ(Open(), nullptr);
    EXPECT_EQ(WaitForEnd(), kNoErr);
    EXPECT_EQ(Stored(), (Values{20, 30, 40, 50, 60}));
    EXPECT_TRUE(host.document.result == Smoothed(20, 30, 40));
}

}  // namespace stairmelt
