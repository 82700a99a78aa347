// The slider class: alone in a window of the test's own thread, where its width is known, and in the dialog beside its
// edit box.
#include <algorithm>

#include "tests/support/dialog_objects.h"
#include "tests/support/dialog_session.h"

namespace stairmelt {

namespace {

std::vector<std::pair<WPARAM, LPARAM>> gScrolls;  // received by the parent

LRESULT CALLBACK ParentProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_HSCROLL) gScrolls.emplace_back(wParam, lParam);
    return DefWindowProcA(window, message, wParam, lParam);
}

uint32_t ScreenColor(int index) {
    const uint32_t color = GetSysColor(index);
    return (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
}

constexpr int kWidth = 400, kHeight = 26;

class CustomSlider : public DialogSession {
protected:
    // The dialog registers the class.
    void SetUp() override {
        DialogSession::SetUp();
        ASSERT_NE(Open(), nullptr);
    }

    void MakeAlone() {
        Close(IDCANCEL);
        WNDCLASSA windowClass = {};
        windowClass.lpfnWndProc = ParentProc;
        windowClass.hInstance = GetModuleHandleA(nullptr);
        windowClass.lpszClassName = "SliderParent";
        RegisterClassA(&windowClass);
        parent = CreateWindowExA(0, "SliderParent", "", WS_POPUP | WS_VISIBLE, 100, 120, 500, 80, nullptr, nullptr,
                                 windowClass.hInstance, nullptr);
        slider = CreateWindowExA(0, "CustomSlider", "", WS_CHILD | WS_VISIBLE, 20, 10, kWidth, kHeight, parent, nullptr,
                                 library, nullptr);
        edit = CreateWindowExA(0, "Edit", "", WS_CHILD | WS_VISIBLE, 430, 10, 50, 20, parent, nullptr,
                               windowClass.hInstance, nullptr);
        ASSERT_NE(slider, nullptr);
        SetFocus(parent);
        gScrolls.clear();
    }

    void TearDown() override {
        if (parent != nullptr) DestroyWindow(parent);
        DialogSession::TearDown();
    }

    LRESULT Tell(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return SendMessageA(slider, message, wParam, lParam);
    }
    int Pos() { return static_cast<int>(Tell(kGetPos)); }
    void Press(UINT message, int x) { Tell(message, 0, MAKELPARAM(x, 9)); }

    void RepaintAll() { RedrawWindow(slider, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW); }

    // The thumb's fill colour. Its lowest line is black and starts six pixels left of its centre.
    uint32_t ThumbFill(int sliderId) {
        const Shot shot = Photograph(Item(sliderId));
        int x = 6;
        while (x + 7 < shot.width && shot.At(x - 6, 12) != 0) ++x;
        return shot.At(x, 8);
    }

    HWND parent = nullptr, slider = nullptr, edit = nullptr;
};

}  // namespace

TEST_F(CustomSlider, HandlesTheMessagesOfATrackbar) {
    MakeAlone();
    const struct {
        UINT message;
        LPARAM lParam;
        int pos, min, max;
    } steps[] = {{kSetPos, 50, 50, 0, 100},
                 {kSetPos, 101, 100, 0, 100},
                 {kSetPos, INT32_MIN, 0, 0, 100},
                 {kSetRange, MAKELPARAM(10, 20), 0, 10, 20},
                 {kSetPos, 0, 0, 10, 20},
                 {kSetPos, 1, 10, 10, 20},
                 {kSetRange, MAKELPARAM(1, 0xFFFF), 10, 1, 65535},
                 {kSetPos, LPARAM{1} << 32 | 7, 7, 1, 65535},
                 {kSetTicFreq, 3, 7, 1, 65535},
                 {kSetPageSize, 3, 7, 1, 65535},
                 {kSetLineSize, 3, 7, 1, 65535},
                 {kSetRange, MAKELPARAM(5, 5), 7, 5, 5}};
    for (const auto& step : steps) {
        EXPECT_EQ(Tell(step.message, 1, step.lParam), 0) << step.message;
        EXPECT_EQ(Pos(), step.pos) << step.message << " " << step.lParam;
        EXPECT_EQ(Tell(kGetRangeMin), step.min);
        EXPECT_EQ(Tell(kGetRangeMax), step.max);
    }
    Press(WM_LBUTTONDOWN, 200);  // nothing to divide by
    EXPECT_EQ(Pos(), 5);
}

TEST_F(CustomSlider, FollowsPressAndDragAndReportsEachStep) {
    MakeAlone();
    Tell(kSetBuddy, reinterpret_cast<WPARAM>(edit));
    Tell(kSetRange, 1, MAKELPARAM(0, 255));
    Tell(kSetPos, 1, 50);
    const struct {
        UINT message;
        int x, pos;
        bool isReported;
    } steps[] = {
        {WM_MOUSEMOVE, 300, 50, false}, {WM_LBUTTONDOWN, 200, 127, true}, {WM_LBUTTONUP, 300, 127, false},
        {WM_MOUSEMOVE, 9, 127, false},  {WM_LBUTTONDOWN, 6, 0, true},     {WM_MOUSEMOVE, kWidth - 6, 255, true},
        {WM_MOUSEMOVE, 5, 0, true},     {WM_MOUSEMOVE, -300, 0, true},    {WM_MOUSEMOVE, 30000, 255, true},
        {WM_MOUSEMOVE, 8, 1, true},     {WM_LBUTTONUP, 0, 1, false}};
    for (const auto& step : steps) {
        gScrolls.clear();
        Press(step.message, step.x);
        EXPECT_EQ(Pos(), step.pos) << step.x;
        EXPECT_EQ(gScrolls.size(), step.isReported ? 1u : 0u) << step.x;
        for (const auto& scroll : gScrolls) {
            EXPECT_EQ(scroll, (std::pair<WPARAM, LPARAM>(SB_THUMBPOSITION, reinterpret_cast<LPARAM>(slider))));
        }
        EXPECT_EQ(GetCapture() == slider, step.isReported) << step.x;
    }
    EXPECT_EQ(GetFocus(), edit);
    SetFocus(parent);
    SetFocus(slider);
    EXPECT_EQ(GetFocus(), edit) << "it passes the focus on";

    // A range that doesn't start at 0.
    Tell(kSetRange, 1, MAKELPARAM(10, 20));
    Press(WM_LBUTTONDOWN, 200);
    EXPECT_EQ(Pos(), 15);
}

TEST_F(CustomSlider, DrawsGrooveAndThumb) {
    MakeAlone();
    Tell(kSetRange, 1, MAKELPARAM(0, 255));
    Tell(kSetBuddy, reinterpret_cast<WPARAM>(edit));
    RepaintAll();
    const uint32_t face = ScreenColor(COLOR_3DFACE), light = ScreenColor(COLOR_3DHIGHLIGHT),
                   shadow = ScreenColor(COLOR_3DSHADOW), black = 0;
    // At the upper end the thumb takes the last column, which has to be cleared when it leaves.
    const std::pair<int, int> thumbs[] = {{255, 393}, {0, 6}, {100, 387 * 100 / 255 + 6}};
    for (const auto& [position, x] : thumbs) {
        for (const HWND focus : {parent, edit}) {
            Tell(kSetPos, 1, position);
            SetFocus(focus);
            Tell(kRedrawThumb);
            const Shot shot = Photograph(slider);
            SCOPED_TRACE(std::to_string(position) + (focus == edit ? " with the focus" : ""));
            const uint32_t fill = focus == edit ? black : face;
            const struct {
                int x, y;
                uint32_t color;
            } points[] = {{x, 8, fill},        {x - 6, 9, black}, {x + 6, 9, black},
                          {x, 12, black},      {x - 5, 9, light}, {x + 5, 9, shadow},
                          {x - 2, 11, shadow}, {x - 7, 11, face}, {x, 15, face},
                          {1, 3, face},        {398, 25, face},   {399, 9, x == 393 ? black : face}};
            for (const auto& point : points)
                EXPECT_EQ(shot.At(point.x, point.y), point.color) << point.x << "," << point.y;
            // The groove, where the thumb isn't.
            const int at = position == 255 ? 50 : 350;
            EXPECT_EQ((std::vector<uint32_t>{shot.At(at, 0), shot.At(at, 1), shot.At(at, 3), shot.At(at, 5),
                                             shot.At(at, 6), shot.At(at, 7)}),
                      (std::vector<uint32_t>{shadow, black, face, black, light, face}));
            EXPECT_EQ(position == 0 ? shot.At(393, 3) : shot.At(6, 3), position == 0 ? light : shadow);
        }
    }
}

TEST_F(CustomSlider, MovesLeaveNeitherTracesNorObjects) {
    MakeAlone();
    Tell(kSetRange, 1, MAKELPARAM(0, 255));
    SeededRandom random(5);
    int objects = 0;
    for (int i = 0; i < 200; ++i) {
        Tell(kSetPos, 1, random.Below(300) - 20);
        const Shot moved = Photograph(slider);
        RepaintAll();
        ASSERT_TRUE(moved.pixels == Photograph(slider).pixels) << Pos();
        if (i == 100) objects = CountGdiObjects();
    }
    EXPECT_EQ(CountGdiObjects(), objects);
}

TEST_F(CustomSlider, DragEndsWithOneUndoStep) {
    RECT rect = {};
    GetWindowRect(Item(IDC_BIAS_SLIDER), &rect);
    for (const int from : {0, 33}) {
        SetText(IDC_BIAS_EDIT, std::to_string(from));
        const int displays = host.ui.displays;
        for (int x = 200; x <= 260; x += 20) {
            Send(Item(IDC_BIAS_SLIDER), x == 200 ? WM_LBUTTONDOWN : WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(x, 5));
            EXPECT_EQ(Selected(IDC_BIAS_EDIT), std::to_string(Position(IDC_BIAS_SLIDER)));
            EXPECT_EQ(Capture(), Item(IDC_BIAS_SLIDER));
        }
        const int dragged = Position(IDC_BIAS_SLIDER), displaysBefore = host.ui.displays;
        EXPECT_EQ(dragged, 100 * (260 - 6) / (rect.right - rect.left - 12));
        EXPECT_GT(displaysBefore, displays) << "the preview follows";
        Send(Item(IDC_BIAS_SLIDER), WM_LBUTTONUP, 0, MAKELPARAM(260, 5));
        EXPECT_EQ(host.ui.displays, displaysBefore) << "and needs no update at the end";
        EXPECT_EQ(Capture(), nullptr);
        EXPECT_EQ(Selected(IDC_BIAS_EDIT), std::to_string(dragged));
        EXPECT_EQ(Focus(), Item(IDC_BIAS_EDIT));

        Send(Item(IDC_BIAS_EDIT), EM_UNDO);
        EXPECT_EQ(Text(IDC_BIAS_EDIT), std::to_string(from));
        EXPECT_EQ(Position(IDC_BIAS_SLIDER), from);
    }
    // A release that no press on the slider preceded leaves the text and its selection alone.
    SetText(IDC_BIAS_EDIT, "007");
    Send(Item(IDC_BIAS_SLIDER), WM_LBUTTONUP, 0, MAKELPARAM(100, 5));
    EXPECT_EQ(Text(IDC_BIAS_EDIT), "007");
}

TEST_F(CustomSlider, ThumbIsBlackWhileItsEditBoxHasTheFocus) {
    const uint32_t face = ScreenColor(COLOR_3DFACE);
    const auto fills = [&] {
        std::vector<uint32_t> colors;
        for (const ParameterRow& row : kRows) colors.push_back(ThumbFill(row.slider));
        return colors;
    };
    EXPECT_EQ(fills(), (std::vector<uint32_t>{face, face, face}));
    for (const int id : {IDC_THRESHOLD_SLIDER, IDC_BIAS_SLIDER}) {
        Send(Item(id), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(100, 5));
        Send(Item(id), WM_LBUTTONUP);
    }
    EXPECT_EQ(fills(), (std::vector<uint32_t>{face, face, 0}));
    SetFocusTo(IDC_SOFTNESS_EDIT);
    EXPECT_EQ(fills(), (std::vector<uint32_t>{face, 0, face}));
    PointAt(kBesidePane);
    Send(WM_LBUTTONDOWN);
    EXPECT_EQ(fills(), (std::vector<uint32_t>{face, face, face}));
}

}  // namespace stairmelt
