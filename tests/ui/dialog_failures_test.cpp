// Runs of the built plug-in with its dialogs in which each call into the host fails once.
#include "tests/support/dialog_session.h"

namespace stairmelt {

namespace {

class DialogFailures : public DialogSession {
protected:
    DialogFailures() { host.document = DocumentOf(kAllKernels[4], 60, 50, 3); }

    // A complete run of a newly loaded library. In the dialog the user zooms, changes a value and moves the pointer.
    int16_t Visit(RunKind kind, bool isAccepted) {
        Unload();
        Load();
        if (Show(kind) == nullptr) return WaitForEnd();
        if (kind == RunKind::kAbout) return Close(IDCANCEL);
        ClickOn(IDC_ZOOM_OUT);
        SetText(IDC_BIAS_EDIT, "50");
        PointAt(kPaneMiddle);
        Send(WM_MOUSEMOVE);
        return Close(isAccepted ? IDOK : IDCANCEL);
    }
};

}  // namespace

TEST_F(DialogFailures, LeaveNothingBehind) {
    const Drive visit = [this](RunKind kind, bool isAccepted) { return Visit(kind, isAccepted); };
    FailEachCall({"about", RunKind::kAbout, true, false, true}, visit);
    // Of all runs with the dialog, one that a script starts makes the most calls.
    host.script.played = {{kThsh, 40}, {kSftn, 90}};
    FailEachCall({"script, display", RunKind::kFromMenu, true, true, true}, visit);
}

// Any routine of the preview's and the cursors' tables is missing, or all from one on.
TEST_F(DialogFailures, NullRoutinesAreDoneWithout) {
    const struct {
        void* table;
        size_t size, firstSlot;
    } tables[] = {{&host.buffers.procs, sizeof(BufferProcs), 1}, {&host.ui.hooks, sizeof(PSUIHooksSuite1), 0}};
    for (const auto& row : tables) {
        auto* const table = static_cast<uint8_t*>(row.table);
        const std::vector<uint8_t> whole(table, table + row.size);
        for (size_t slot = row.firstSlot; slot < row.size / 8; ++slot) {
            for (const size_t end : {slot + 1, row.size / 8}) {
                std::fill(table + slot * 8, table + end * 8, uint8_t{0});
                EXPECT_EQ(Visit(RunKind::kFromMenu, true), kNoErr) << slot << " to " << end;
                std::copy(whole.begin(), whole.end(), table);
                EXPECT_TRUE(host.document.result == Smoothed(10, 70, 50));
                EXPECT_EQ(host.buffers.blocks.CountLive(), 0);
                host.registry.persistent.clear();
            }
        }
    }
}

}  // namespace stairmelt
