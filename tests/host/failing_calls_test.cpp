// Runs without a dialog in which each call into the host fails in turn.
#include "tests/support/plugin_run.h"

namespace stairmelt {

using SilentFailures = PluginRun;

TEST_F(SilentFailures, LeaveNothingBehind) {
    const Drive drive = [this](RunKind kind, bool) { return Run(kind); };
    const struct {
        const char* name;
        std::vector<ScriptValue> played;
    } scripts[] = {
        {"all keys", {{kThsh, 40}, {kSftn, 90}, {kBias, 60}}},
        {"no threshold", {{kSftn, 90}, {kBias, 60}}},
        {"no softness", {{kThsh, 40}, {kBias, 60}}},
        {"no bias", {{kThsh, 40}, {kSftn, 90}}},
        {"a key that isn't taken", {{kThsh, 40}, {kPdpx, 7}, {kBias, 60}}},
        {"no keys", {}},
    };
    for (const auto& script : scripts) {
        host.script.played = script.played;
        host.script.playsWithoutValues = true;
        for (const int16_t playInfo : {kPlugInDialogDontDisplay, kPlugInDialogSilent}) {
            host.script.playInfo = playInfo;
            const std::string name =
                std::string("script, ") + script.name + (playInfo == kPlugInDialogSilent ? ", silent" : "");
            // A host with a silent mode leaves out Parameters.
            FailEachCall({(name + ", from the menu").c_str(), RunKind::kFromMenu, true, true}, drive);
            FailEachCall({(name + ", from Prepare").c_str(), RunKind::kRepeat, true, true}, drive);
        }
    }
}

}  // namespace stairmelt
