// Walks the lists of components in the passes of a run and keeps the coordinates in the options.
#include "kernel/passes.h"

#include "base/text.h"
#include "kernel/component_step.h"

namespace photrak {
namespace {

void WarnOfEmptyList(RunState& run) {
    const SimOptions& options = *run.workspace.options;
    AppendPiece(run.errorText,
                Concat("WARNING: nothing to simulate in outer sweep ", options.outerIndex,
                       ", inner sweep ", options.innerIndex, ", run ", options.runIndex, "\n"));
    MergeStatus(run.status, Status::Warning);
}

/// One walk of run.list under run.mask. The loop blocks set run.place back.
void RunPass(RunState& run) {
    const RunOrder& list = *run.list;
    if (list.empty()) WarnOfEmptyList(run);
    for (const auto& component : run.workspace.components) {
        component->runFlags &= static_cast<std::uint16_t>(~runFlag::hasRun);
        component->iteration = 0;
    }
    for (std::size_t place = 0; place < list.size(); ++place) list[place]->place = place;
    for (run.place = 0; run.place < list.size() && !run.MustEnd(); ++run.place) {
        StepComponent(run);
    }
}

}  // namespace

Status RunPasses(const RunOrder& order, Workspace& workspace, const ModelTable& models,
                 std::string& errorText) {
    SimOptions& options = *workspace.options;
    RunState run(workspace, models, errorText);
    ++options.set;
    options.outerCount = options.innerCount = 0;
    options.outerIndex = options.innerIndex = options.runIndex = 1;
    options.loopIndex = 0;
    options.loopSuffix.clear();
    run.mask = runFlag::ordered;
    run.list = &order;
    RunPass(run);
    return run.status;
}

}  // namespace photrak
