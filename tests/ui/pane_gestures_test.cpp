// Mouse gestures in the preview pane: zoom, pan, fit, comparison, cursors. A pixel's colour encodes its place in the
// picture, so that a test can tell which part of it the pane shows.
#include <cstdlib>

#include "tests/support/dialog_session.h"

namespace stairmelt {

namespace {

std::string Place(int x, int y) { return std::to_string(x) + "," + std::to_string(y); }

class PaneGestures : public DialogSession {
protected:
    // A picture whose kernel finds no edges, so that filtered and raw pixels are the same.
    bool OpenPicture(int width, int height) {
        host.document = {};
        host.document.width = width;
        host.document.height = height;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const int high = (x >> 8) << 4 | y >> 8;
                for (const int sample : {x & 255, y & 255, high}) {
                    host.document.source.push_back(static_cast<uint8_t>(sample));
                }
            }
        }
        if (Open() == nullptr) return false;
        SetText(IDC_THRESHOLD_EDIT, "255");
        return true;
    }

    // The image pixel under a pane pixel, as the host last drew it. 0, 0 is the pane's top left corner.
    std::string Shown(int x, int y) {
        const DisplayedMap& display = *host.ui.display;
        const size_t plane = static_cast<size_t>(display.map.planeBytes);
        const size_t at = static_cast<size_t>((y + 10 - display.row) * display.map.rowBytes + x + 10 - display.column);
        const uint8_t* const samples = display.samples.data() + at;
        const int high = samples[2 * plane];
        return Place(samples[0] + (high >> 4) * 256, samples[plane] + (high & 15) * 256);
    }

    void Press(const POINT& place) {
        PointAt(place);
        Send(WM_LBUTTONDOWN);
    }
    void Drag(const POINT& to) {
        PointAt(to);
        Send(WM_MOUSEMOVE);
    }
    void Release() { Send(WM_LBUTTONUP); }

    std::string Label() { return Text(IDC_ZOOM_LABEL); }

    std::string CursorOver(const POINT& place) {
        PointAt(place);
        host.ui.cursors.clear();
        Send(WM_MOUSEMOVE);
        return host.ui.cursors.empty() ? "" : host.ui.cursors.back();
    }
};

#define EXPECT_SHOWN(paneX, paneY, imageX, imageY) EXPECT_EQ(Shown(paneX, paneY), Place(imageX, imageY))

}  // namespace

TEST_F(PaneGestures, ButtonsClimbTheLadder) {
    ASSERT_TRUE(OpenPicture(700, 600));
    const char* const labels[] = {"6 %", "13 %", "25 %", "50 %", "100 %", "200 %", "400 %", "800 %", "1600 %"};
    for (const int i : {3, 2, 1, 0, 0}) {
        ClickOn(IDC_ZOOM_OUT);
        EXPECT_EQ(Label(), labels[i]);
    }
    for (const int i : {1, 2, 3, 4, 5, 6, 7, 8, 8}) {
        ClickOn(IDC_ZOOM_IN);
        EXPECT_EQ(Label(), labels[i]);
    }
    // The view's centre has stayed: 480 x 360 pane pixels at 16 per image pixel.
    EXPECT_SHOWN(0, 0, 335, 288);
    EXPECT_SHOWN(479, 359, 364, 311);
    Close(IDCANCEL);

    // From 750 percent to 800, neither the filtered nor the displayed part of this image changes its size.
    ASSERT_TRUE(OpenPicture(64, 48));
    PointAt(kPaneMiddle);
    Send(WM_LBUTTONDBLCLK);
    ClickOn(IDC_ZOOM_IN);
    EXPECT_SHOWN(0, 0, 2, 1);
}

TEST_F(PaneGestures, WheelZoomsInsideThePaneAndStepsOutside) {
    ASSERT_TRUE(OpenPicture(700, 600));
    const struct {
        POINT place;
        int delta;
        const char* label;
    } zooms[] = {{kPaneMiddle, 360, "200 %"},  {kPaneMiddle, 119, "200 %"}, {kPaneMiddle, -119, "200 %"},
                 {kPaneMiddle, -120, "100 %"}, {{10, 10}, 120, "200 %"},    {{490, 370}, -120, "100 %"},
                 {{9, 190}, 120, "100 %"},     {{491, 190}, 120, "100 %"},  {{250, 9}, 120, "100 %"},
                 {{250, 371}, 120, "100 %"}};
    for (const auto& row : zooms) {
        PointAt(row.place);
        Wheel(row.delta);
        EXPECT_EQ(Label(), row.label) << row.place.x << "," << row.place.y << " by " << row.delta;
    }

    PointAt(kBesidePane);
    const struct {
        int edit, slider;
        const char* typed;
        int delta;
        const char* shown;
    } steps[] = {
        {IDC_THRESHOLD_EDIT, IDC_THRESHOLD_SLIDER, "20", 120, "21"},
        {IDC_SOFTNESS_EDIT, IDC_SOFTNESS_SLIDER, "20", -360, "17"},
        {IDC_SOFTNESS_EDIT, IDC_SOFTNESS_SLIDER, "20", -119, "20"},
        {IDC_BIAS_EDIT, IDC_BIAS_SLIDER, "500", -120, "100"},  // from the text, not from the slider
        {IDC_BIAS_EDIT, IDC_BIAS_SLIDER, "1", -32768, "0"},
        {IDC_BIAS_EDIT, IDC_BIAS_SLIDER, "2147483647", 240, "0"},  // wraps
    };
    for (const auto& row : steps) {
        SetFocusTo(row.edit);
        SetText(row.edit, row.typed);
        Wheel(row.delta);
        EXPECT_EQ(Text(row.edit), row.shown) << row.typed << " by " << row.delta;
        EXPECT_EQ(Selected(row.edit), row.shown);
        EXPECT_EQ(Position(row.slider), std::atoi(row.shown));
    }
    SetFocusTo(IDOK);
    const std::vector<int> before = Positions();
    Wheel(120);
    EXPECT_EQ(Positions(), before);
    EXPECT_EQ(Label(), "100 %");
}

TEST_F(PaneGestures, DoubleClickFitsTheImage) {
    const struct {
        int width, height;
        const char *fitted, *in, *out;
    } rows[] = {
        {700, 600, "60 %", "100 %", "25 %"},    // the step below, plus a fraction
        {480, 100, "100 %", "200 %", "50 %"},   // exactly a step
        {10, 10, "3600 %", "3600 %", "800 %"},  // beyond the top of the ladder
        {10000, 3, "5 %", "13 %", "6 %"},       // below its bottom: zooming out goes up to it
    };
    for (const auto& row : rows) {
        ASSERT_TRUE(OpenPicture(row.width, row.height));
        PointAt(kBesidePane);
        Send(WM_LBUTTONDBLCLK);
        EXPECT_EQ(Label(), "100 %");
        PointAt(kPaneMiddle);
        Send(WM_LBUTTONDBLCLK);
        EXPECT_EQ(Label(), row.fitted) << row.width;
        const PSPixelMap& map = host.ui.display->map;
        EXPECT_TRUE(map.bounds.right == 480 || map.bounds.bottom == 360) << row.width;
        ClickOn(IDC_ZOOM_OUT);
        EXPECT_EQ(Label(), row.out) << row.width;
        Send(WM_LBUTTONDBLCLK);
        ClickOn(IDC_ZOOM_IN);
        EXPECT_EQ(Label(), row.in) << row.width;
        Close(IDCANCEL);
    }
}

TEST_F(PaneGestures, RightPressShowsThePlaceAtFullSize) {
    ASSERT_TRUE(OpenPicture(2000, 1500));
    // At 25 percent the view is 1920 x 1440 around 1000, 750.
    for (int i = 0; i < 2; ++i) ClickOn(IDC_ZOOM_OUT);
    EXPECT_SHOWN(0, 0, 40, 30);
    PointAt(kBesidePane);
    Send(WM_RBUTTONDOWN);
    EXPECT_EQ(Label(), "25 %");
    PointAt({250 + 100, 190 - 50});
    Send(WM_RBUTTONDOWN);
    EXPECT_EQ(Label(), "100 %");
    EXPECT_SHOWN(240, 180, 1400, 550);
    // At 100 percent and above, the view stays centred on its place.
    PointAt({20, 20});
    for (const int zoomIn : {0, 1}) {
        for (int i = 0; i < zoomIn; ++i) ClickOn(IDC_ZOOM_IN);
        Send(WM_RBUTTONDOWN);
        EXPECT_EQ(Label(), "100 %");
        EXPECT_SHOWN(240, 180, 1400, 550);
    }
    // A place near the corner moves as far towards the middle as the image allows.
    for (int i = 0; i < 4; ++i) ClickOn(IDC_ZOOM_OUT);
    Send(WM_RBUTTONDOWN);
    EXPECT_SHOWN(0, 0, 0, 0);
    // At 6 percent the whole image is shown, wherever the view was before.
    for (int i = 0; i < 4; ++i) ClickOn(IDC_ZOOM_OUT);
    PointAt({250 + 30, 190 + 10});
    Send(WM_RBUTTONDOWN);
    EXPECT_SHOWN(240, 180, 1000 + 30 * 16, 750 + 10 * 16);
    Close(IDCANCEL);

    // In a tall image a place may lie lower than the image is wide.
    ASSERT_TRUE(OpenPicture(600, 2000));
    for (int i = 0; i < 2; ++i) ClickOn(IDC_ZOOM_OUT);
    PointAt({250, 190 + 100});
    Send(WM_RBUTTONDOWN);
    EXPECT_SHOWN(240, 180, 300, 1000 + 100 * 4);
}

TEST_F(PaneGestures, DraggingMovesTheViewAndStopsAtTheEdges) {
    ASSERT_TRUE(OpenPicture(700, 600));
    SetFocusTo(IDC_BIAS_EDIT);
    Press(kPaneMiddle);
    EXPECT_EQ(Capture(), dialog);
    EXPECT_EQ(GetDlgCtrlID(Focus()), IDC_FOCUS_PARKING);
    EXPECT_SHOWN(0, 0, 110, 120);
    Drag({250 - 30, 190 + 20});
    EXPECT_SHOWN(0, 0, 140, 100);
    // It stops at the edges, and a drag back takes effect immediately.
    Drag({250 + 450, 190 - 300});
    EXPECT_SHOWN(0, 0, 0, 240);
    Drag({250 + 440, 190 - 293});
    EXPECT_SHOWN(0, 0, 10, 233);
    Release();
    EXPECT_EQ(Capture(), nullptr);
    Drag({200, 200});
    EXPECT_SHOWN(0, 0, 10, 233);

    // The middle button does the same. At 200 percent an image pixel takes two pane pixels.
    ClickOn(IDC_ZOOM_IN);
    EXPECT_SHOWN(0, 0, 10 + 120, 233 + 90);
    PointAt({300, 300});
    Send(WM_MBUTTONDOWN);
    Drag({300 - 40, 300 + 10});
    EXPECT_SHOWN(0, 0, 130 + 20, 323 - 5);
    // Half an image pixel further the filtered crop starts elsewhere, but shows the same place.
    Drag({300 - 41, 300 + 9});
    const DisplayedMap held = *host.ui.display;
    Send(WM_MBUTTONUP);
    EXPECT_TRUE(host.ui.display->samples == held.samples);
    EXPECT_EQ(Capture(), nullptr);

    // A press beside the pane only takes the focus.
    SetFocusTo(IDC_BIAS_EDIT);
    const int displays = host.ui.displays;
    Press(kBesidePane);
    EXPECT_EQ(GetDlgCtrlID(Focus()), IDC_FOCUS_PARKING);
    EXPECT_EQ(Capture(), nullptr);
    EXPECT_EQ(host.ui.displays, displays);
    Drag(kPaneMiddle);
    EXPECT_SHOWN(0, 0, 150, 318);
}

TEST_F(PaneGestures, TheHandShowsWhatCanBeMoved) {
    const std::string hand = kCursorHand, arrow = kCursorArrow;
    ASSERT_TRUE(OpenPicture(600, 500));
    EXPECT_EQ(CursorOver(kPaneMiddle), hand);
    EXPECT_EQ(CursorOver(kBesidePane), arrow);
    // During a drag the hand stays, even outside the pane.
    Press(kPaneMiddle);
    EXPECT_EQ(CursorOver(kBesidePane), hand);
    Release();
    EXPECT_EQ(CursorOver(kBesidePane), arrow);
    Close(IDCANCEL);

    // Only the height counts, although a wide image can be moved sideways.
    ASSERT_TRUE(OpenPicture(1000, 200));
    EXPECT_EQ(CursorOver(kPaneMiddle), arrow);
    Press(kPaneMiddle);
    EXPECT_EQ(CursorOver({240, 100}), hand);
    EXPECT_SHOWN(0, 180, 270, 100);
    EXPECT_EQ(host.suites.held[kUIHooksSuite], 1);
}

TEST_F(PaneGestures, HostsWithoutCursorsGetTheSystems) {
    for (const bool hasHooks : {true, false}) {
        if (!hasHooks) host.failures.calls[std::string("AcquireSuite ") + kUIHooksSuite] = {kEveryCall};
        host.ui.hooks.SetCursor = [](const char*) { return kSPUnknownCursor; };
        ASSERT_TRUE(OpenPicture(600, 500));
        const std::pair<POINT, const char*> rows[] = {{kPaneMiddle, IDC_HAND}, {kBesidePane, IDC_ARROW}};
        for (const auto& [place, wanted] : rows) {
            // The system reports the cursor of whichever window it takes to be in the foreground, and may change it.
            CURSORINFO info = {};
            info.cbSize = sizeof info;
            const auto isShown = [&] {
                PointAt(place);
                Send(WM_MOUSEMOVE);
                return GetCursorInfo(&info) && info.hCursor == LoadCursorA(nullptr, wanted);
            };
            for (DWORD waited = 0; !isShown() && waited < kPatience; waited += 10) Sleep(10);
            EXPECT_TRUE(isShown()) << place.x << " " << hasHooks;
        }
        EXPECT_EQ(Close(IDOK), kNoErr);
        Unload();  // it keeps the hooks
        Load();
    }
}

}  // namespace stairmelt
