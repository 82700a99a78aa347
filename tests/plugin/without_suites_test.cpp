// The dialog's refusal to open in a host without suites, which the built library alone can show.
#include "tests/support/plugin_run.h"

namespace stairmelt {

using WithoutSuites = PluginRun;

TEST_F(WithoutSuites, TheDialogCountsAsCancelled) {
    host.failures.noBasicSuite = true;
    EXPECT_EQ(Run(RunKind::kFromMenu), kUserCanceledErr);
    EXPECT_EQ(host.pixels.advances, 1) << "the preview's input";
    host.log.clear();
    EXPECT_EQ(Run(RunKind::kRepeat), kUserCanceledErr) << "the flag byte stays set";
}

}  // namespace stairmelt
