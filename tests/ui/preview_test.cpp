// What the preview pane passes to the host and draws itself, in every colour mode, compared with the final result.
#include <cstring>

#include "tests/support/dialog_session.h"

namespace stairmelt {

namespace {

constexpr int kPaneWidth = 480, kPaneHeight = 360;

class Preview : public DialogSession {
protected:
    // The bytes of a display image, plane after plane, with image pixel (left, top) in its upper left corner and `step`
    // image pixels from one display pixel to the next.
    std::vector<uint8_t> Displayed(const std::vector<uint8_t>& pixels, int planes, int left, int top, int step = 1,
                                   int width = kPaneWidth) const {
        const FakeDocument& document = host.document;
        std::vector<uint8_t> bytes;
        for (int plane = 0; plane < planes; ++plane) {
            for (int y = 0; y < kPaneHeight; ++y) {
                for (int x = 0; x < width; ++x) {
                    const size_t at = static_cast<size_t>(top + y * step) * document.RowBytes() +
                                      static_cast<size_t>(left + x * step) * document.PixelBytes() +
                                      static_cast<size_t>(plane * document.SampleBytes());
                    bytes.push_back(ByteOf(&pixels[at], document.depth));
                }
            }
        }
        return bytes;
    }

    static uint8_t ByteOf(const uint8_t* sample, int depth) {
        if (depth == 8) return *sample;
        if (depth == 16) return static_cast<uint8_t>((sample[0] + sample[1] * 256) * 255 / 32768);
        float value;
        std::memcpy(&value, sample, sizeof value);
        return static_cast<uint8_t>(static_cast<int>(value * 255.0f));
    }

    // Islands of hard edges on a flat ground, at most eight pixels wide, so that the crop's margin covers all their
    // runs.
    void OpenIslands(const KernelCase& format, int width, int height) {
        host.document = DocumentOf(format, 1, 1, 1);
        host.document.width = width;
        host.document.height = height;
        std::vector<uint8_t>& source = host.document.source;
        const size_t pixelBytes = static_cast<size_t>(format.PixelBytes());
        source.clear();
        for (size_t i = 0; i < static_cast<size_t>(width * height * (format.channels + format.extra)); ++i) {
            AppendSample(source, format.depth, 120);
        }
        SeededRandom random(77);
        for (int top = 0; top + 8 <= height; top += 20) {
            for (int left = 0; left + 8 <= width; left += 20) {
                const std::vector<uint8_t> island = Patchwork(format, 8, 8, random);
                for (int y = 0; y < 8; ++y) {
                    std::memcpy(&source[static_cast<size_t>((top + y) * width + left) * pixelBytes],
                                &island[static_cast<size_t>(y * 8) * pixelBytes], 8 * pixelBytes);
                }
            }
        }
    }

    const DisplayedMap& Display() const { return *host.ui.display; }
};

}  // namespace

TEST_F(Preview, HandsTheHostItsMapInEveryMode) {
    const struct {
        int16_t imageMode;
        int depth, channels, shownMode;
    } modes[] = {{kModeGrayScale, 8, 1, kModeGrayScale}, {kModeRGBColor, 8, 3, kModeRGBColor},
                 {kModeCMYKColor, 8, 4, kModeCMYKColor}, {kModeMultichannel, 8, 2, kModeMultichannel},
                 {kModeDuotone, 8, 1, kModeDuotone},     {kModeLabColor, 8, 3, kModeLabColor},
                 {kModeGray16, 16, 1, kModeGrayScale},   {kModeRGB48, 16, 3, kModeRGBColor},
                 {kModeLab48, 16, 3, kModeLabColor},     {kModeCMYK64, 16, 4, kModeCMYKColor},
                 {kModeDuotone16, 16, 1, kModeDuotone},  {kModeDeepMultichannel, 16, 3, kModeMultichannel},
                 {kModeGray32, 32, 1, kModeGrayScale},   {kModeRGB96, 32, 3, kModeRGBColor}};
    for (const auto& mode : modes) {
        for (const bool isTransparent : {true, false}) {  // otherwise the extra plane is no transparency
            SCOPED_TRACE(testing::Message() << "mode " << mode.imageMode << " " << isTransparent);
            host.document = {};
            host.document.width = 301;
            host.document.height = isTransparent ? 77 : 480;
            host.document.imageMode = mode.imageMode;
            host.document.planes = static_cast<int16_t>(mode.channels + 1);
            host.document.depth = mode.depth;
            host.document.hasTransparency = isTransparent;
            ASSERT_NE(Open(), nullptr);
            const PSPixelMap& map = Display().map;
            const int width = 301, height = isTransparent ? 77 : 360, plane = width * height;
            const VRect all = {0, 0, height, width};
            EXPECT_EQ(std::memcmp(&map.bounds, &all, sizeof all) | std::memcmp(&Display().part, &all, sizeof all), 0);
            EXPECT_EQ((std::vector<int>{map.version, map.imageMode, map.rowBytes, map.colBytes, map.planeBytes,
                                        map.maskPhaseRow, map.maskPhaseCol, Display().row, Display().column}),
                      (std::vector<int>{1, mode.shownMode, width, 1, plane, 0, 0, isTransparent ? 152 : 10, 100}));
            EXPECT_EQ(map.mat, nullptr);
            const bool isMasked = isTransparent && mode.shownMode != kModeMultichannel;
            ASSERT_EQ(Display().masks.size(), isMasked ? 1u : 0u);
            if (isMasked) {
                const PSPixelMask& mask = Display().masks[0];
                EXPECT_EQ(mask.maskData, static_cast<const uint8_t*>(map.baseAddr) + mode.channels * plane);
                EXPECT_EQ((std::vector<int>{mask.rowBytes, mask.colBytes, mask.maskDescription}),
                          (std::vector<int>{width, 1, kSimplePSMask}));
            }
            Close(IDCANCEL);
        }
    }

    // A floating selection brings its own mask, whatever the planes.
    host.document = DocumentOf(kAllKernels[5], 300, 200, 1);
    host.document.isFloating = true;
    ASSERT_NE(Open(), nullptr);
    ASSERT_EQ(Display().masks.size(), 1u);
    EXPECT_EQ(Display().masks[0].maskData, reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(host.record.maskData)));
    EXPECT_EQ(Display().masks[0].rowBytes, int32_t{host.record.maskRowBytes});
}

TEST_F(Preview, EqualsTheFinalRunInEveryFormat) {
    for (const KernelCase& format : kAllKernels) {
        if (format.channels == 2 && format.extra != 0) continue;  // no image mode has two channels and an extra plane
        SCOPED_TRACE(format.name);
        OpenIslands(format, 700, 600);
        Store(12, 80, 20);
        ASSERT_NE(Open(), nullptr);
        // A forced render with the values of the sliders.
        ClickOn(IDC_ZOOM_IN);
        ClickOn(IDC_ZOOM_OUT);
        const int planes = format.channels == 2 ? 1 : format.channels;  // multichannel shows its first plane
        std::vector<uint8_t> shown = Display().samples;
        if (format.extra != 0) {
            const auto* const mask = static_cast<const uint8_t*>(Display().masks.at(0).maskData);
            shown.insert(shown.end(), mask, mask + kPaneWidth * kPaneHeight);
        }
        EXPECT_EQ(Close(IDOK), kNoErr);
        EXPECT_TRUE(host.document.result == Smoothed(format, 12, 80, 20));
        EXPECT_TRUE(shown == Displayed(host.document.result, planes + format.extra, 110, 120));
        EXPECT_FALSE(shown == Displayed(host.document.source, planes + format.extra, 110, 120));
    }
}

TEST_F(Preview, OpensWithTheDefaultsUntilTheNextRender) {
    OpenIslands(kAllKernels[4], 700, 600);
    Store(60, 20, 90);
    const auto of = [&](const std::vector<uint8_t>& pixels) { return Displayed(pixels, 3, 110, 120); };
    const auto shown = [&] { return Display().samples; };
    ASSERT_NE(Open(), nullptr);
    const std::vector<uint8_t> defaults = of(Smoothed(10, 70, 0)), stored = of(Smoothed(60, 20, 90));
    ASSERT_FALSE(defaults == stored);
    EXPECT_TRUE(shown() == defaults);
    // A repaint, and a text that changes no value, leave the picture as it is.
    const int displays = host.ui.displays;
    SetText(IDC_BIAS_EDIT, "090");
    EXPECT_EQ(host.ui.displays, displays);
    InvalidateRect(dialog, nullptr, FALSE);
    Settle();
    EXPECT_GT(host.ui.displays, displays);
    EXPECT_TRUE(shown() == defaults);
    // The next forced render uses the values that the first repaint has read.
    ClickOn(IDC_ZOOM_IN);
    ClickOn(IDC_ZOOM_OUT);
    EXPECT_TRUE(shown() == stored);
    Close(IDCANCEL);

    // A change of one value also makes it use all three.
    ASSERT_NE(Open(), nullptr);
    EXPECT_TRUE(shown() == defaults);
    SetText(IDC_BIAS_EDIT, "30");
    EXPECT_TRUE(shown() == of(Smoothed(60, 20, 30)));
}

TEST_F(Preview, ShowsTheSourceWhileHeldAndBelowHalfSize) {
    OpenIslands(kAllKernels[4], 2000, 1600);
    ASSERT_NE(Open(), nullptr);
    const std::vector<uint8_t>& source = host.document.source;
    const std::vector<uint8_t> filtered = Smoothed(10, 70, 0);
    const auto expectShown = [&](const std::vector<uint8_t>& pixels, int left, int top, int step = 1) {
        EXPECT_TRUE(Display().samples == Displayed(pixels, 3, left, top, step)) << left << "," << top;
    };
    expectShown(filtered, 760, 620);
    PointAt(kPaneMiddle);
    Send(WM_LBUTTONDOWN);
    expectShown(source, 760, 620);
    SetText(IDC_SOFTNESS_EDIT, "90");
    expectShown(source, 760, 620);
    SetText(IDC_SOFTNESS_EDIT, "70");
    PointAt({250 + 37, 190 - 23});
    Send(WM_MOUSEMOVE);
    Send(WM_LBUTTONUP);
    expectShown(filtered, 760 - 37, 620 + 23);
    // In the corner, where the crop has no margin.
    PointAt(kPaneMiddle);
    Send(WM_LBUTTONDBLCLK);
    PointAt({10 + 450, 10 + 360});
    Send(WM_RBUTTONDOWN);
    expectShown(filtered, 1520, 1240);
    PointAt(kPaneMiddle);
    Send(WM_LBUTTONDBLCLK);
    Send(WM_RBUTTONDOWN);

    ClickOn(IDC_ZOOM_OUT);  // 50 percent: 960 x 720 image pixels, every second one
    expectShown(filtered, 520, 440, 2);
    ClickOn(IDC_ZOOM_OUT);
    expectShown(source, 40, 80, 4);
    const int displays = host.ui.displays;
    SetText(IDC_SOFTNESS_EDIT, "5");
    EXPECT_GT(host.ui.displays, displays) << "it is sampled again all the same";
    expectShown(source, 40, 80, 4);
    Close(IDCANCEL);

    // Zooming out of a narrow image changes the crop in height only, and the display image in width only.
    OpenIslands(kAllKernels[4], 301, 1600);
    Store(10, 70, 0);
    ASSERT_NE(Open(), nullptr);
    EXPECT_TRUE(Display().samples == Displayed(Smoothed(10, 70, 0), 3, 0, 620, 1, 301));
    ClickOn(IDC_ZOOM_OUT);
    EXPECT_TRUE(Display().samples == Displayed(Smoothed(10, 70, 0), 3, 0, 440, 2, 151));
}

TEST_F(Preview, DrawsFrameAndBandsWhateverTheHostProvides) {
    const struct {
        const char* name;
        void (*fail)(Failures&);
        bool isDrawn;  // part of the picture can be shown when the dialog opens
    } rows[] = {
        {"nothing fails", [](Failures&) {}, true},
        {"no buffers, and the id stays wild", [](Failures& f) { f.calls["buffer.allocate"] = {kEveryCall}; }, false},
        {"no buffer to filter in", [](Failures& f) { f.calls["buffer.allocate"] = {1}; }, true},
        {"no buffer to show", [](Failures& f) { f.calls["buffer.allocate"] = {2}; }, false},
        {"no lock to show", [](Failures& f) { f.calls["buffer.lock"] = {2}; }, false},
        {"no buffer service", [](Failures& f) { f.noBufferProcs = true; }, false},
        {"no drawing service", [](Failures& f) { f.noDisplayPixels = true; }, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        OpenIslands(kAllKernels[4], 300, 200);
        host.ui.displays = 0;
        host.failures = {};
        row.fail(host.failures);
        ASSERT_NE(Open(), nullptr);
        EXPECT_EQ(host.ui.displays > 0, row.isDrawn);
        const Shot shot = Photograph(dialog);
        const uint32_t face = GetSysColor(COLOR_3DFACE);  // with red and blue exchanged
        const uint32_t outside = (face & 0xFF) << 16 | (face & 0xFF00) | face >> 16;
        const std::pair<int, int> corners[] = {{10, 10}, {489, 10}, {10, 369}, {489, 369}};
        const std::pair<int, int> bands[] = {{99, 190}, {400, 190}, {250, 89}, {250, 290}};
        const std::pair<int, int> around[] = {{9, 190}, {490, 190}, {250, 9}, {250, 370}};
        for (size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(shot.At(corners[i].first, corners[i].second), 0u) << i;
            EXPECT_EQ(shot.At(bands[i].first, bands[i].second), 0u) << i;
            EXPECT_EQ(shot.At(around[i].first, around[i].second), outside) << i;
        }
        if (row.isDrawn) {
            EXPECT_EQ(shot.At(100, 90), Display().screen.front());
            EXPECT_EQ(shot.At(399, 289), Display().screen.back());
        }

        // Everything that allocates and renders into new buffers.
        for (const int id : {IDC_ZOOM_OUT, IDC_ZOOM_OUT, IDC_ZOOM_IN, IDC_ZOOM_IN, IDC_ZOOM_IN}) ClickOn(id);
        SetText(IDC_BIAS_EDIT, "50");
        PointAt(kPaneMiddle);
        Send(WM_LBUTTONDOWN);
        PointAt({20, 20});
        Send(WM_MOUSEMOVE);
        Send(WM_LBUTTONUP);
        EXPECT_EQ(Close(IDOK), kNoErr);
        EXPECT_TRUE(host.document.result == Smoothed(10, 70, 50));
        EXPECT_EQ(host.buffers.blocks.CountLive(), 0);
        EXPECT_EQ(Logged({"buffer.unlockProc"}).size(), Logged({"buffer.freeProc"}).size());
        Store(10, 70, 0);
    }
}

}  // namespace stairmelt
