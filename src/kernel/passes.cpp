// Nests the passes of a run: outer sweep, inner sweep, statistical runs, and in each the walk over
// the list of what must run then. Keeps the coordinates in the options.
#include "kernel/passes.h"

#include "base/log.h"
#include "base/text.h"
#include "kernel/component_step.h"
#include "kernel/pass_lists.h"
#include "kernel/run_record.h"
#include "kernel/statistics.h"
#include "kernel/sweep_settings.h"
#include "platform/host.h"

namespace photrak {
namespace {

/// Told at once: a long sweep over nothing would gather a text without end.
void WarnOfEmptyList(RunState& run) {
    const SimOptions& options = *run.workspace.options;
    AppendPiece(run.errorText,
                Concat("WARNING: nothing to simulate in outer sweep ", options.outerIndex,
                       ", inner sweep ", options.innerIndex, ", run ", options.runIndex, "\n"));
    MergeStatus(run.status, Status::Warning);
    if (run.status != Status::Warning) return;
    LogText(run.errorText);
    CurrentHost().messages->ShowWarnings({}, run.errorText);
    run.errorText.clear();
}

/// One walk of run.list under run.mask. The loop blocks set run.place back.
void WalkList(RunState& run) {
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

void RunPass(RunState& run) {
    RunRecord& record = CurrentRun();
    if (!run.workspace.name.empty()) {  // a run inside a point of another
        WalkList(run);
        return;
    }
    record.BeginPoint();
    try {
        WalkList(run);
    } catch (...) {
        if (record.observer) record.observer->PointDone(run.workspace, Status::Error);
        throw;
    }
    if (run.status == Status::Error) record.point = Status::Error;
    if (run.workspace.options->stop != 0) return;
    ++record.points;
    if (record.observer) record.observer->PointDone(run.workspace, record.point);
}

/// One of the three nested loops around the passes.
struct PassLevel {
    std::int32_t SimOptions::*index = nullptr;  // its coordinate
    std::uint16_t flag = 0;                     // of the passes after its first point
    std::int32_t points = 1;
    const Sweep* sweep = nullptr;  // null for the statistical runs
    RunOrder list;                 // what runs at the points after the first
};

class Passes {
  public:
    Passes(const RunOrder& order, Workspace& workspace, const ModelTable& models,
           std::string& errorText)
        : order_(order), options_(*workspace.options), run_(workspace, models, errorText) {}

    Status Run() {
        ++options_.set;
        FreeDraws(order_);  // of a run that took the escape
        if (IsStatistical()) DrawStatistics(order_, run_.workspace);
        MergeStatus(run_.status, ReadSweep(outerSweepFields, run_.workspace, outer_, Text()));
        MergeStatus(run_.status, ReadSweep(innerSweepFields, run_.workspace, inner_, Text()));
        MakeLevels();
        run_.mask = runFlag::ordered;
        run_.list = &order_;
        options_.loopIndex = 0;
        options_.loopSuffix.clear();
        Walk(0);
        End();
        return run_.status;
    }

  private:
    bool IsStatistical() const { return (options_.mode & simMode::statistical) != 0; }
    std::string& Text() { return run_.errorText; }

    /// From the outside in. What depends on an inner loop runs again at each point of an outer one
    /// too, where the inner loop begins anew.
    void MakeLevels() {
        const std::int32_t runs = IsStatistical() ? options_.NUMRUNSTODO : 1;
        levels_[0] = {&SimOptions::outerIndex, runFlag::outer, outer_.points, &outer_, {}};
        levels_[1] = {&SimOptions::innerIndex, runFlag::inner, inner_.points, &inner_, {}};
        levels_[2] = {&SimOptions::runIndex, runFlag::draws, runs, nullptr, {}};
        PassChange change{.symbols = {}, .draws = IsStatistical()};
        for (std::size_t depth = std::size(levels_); depth-- > 0;) {
            PassLevel& level = levels_[depth];
            if (level.sweep && level.sweep->IsAsked()) {
                change.symbols.emplace_back(level.sweep->name, run_.workspace.symbols);
            }
            if (level.points < 2) continue;
            change.flag = level.flag;
            level.list = CollectPassList(change, order_);
        }
    }

    /// Mask and list stay as the last point that moved left them: the first point of an inner loop
    /// runs what the loop around it asks for.
    void Walk(std::size_t depth) {
        if (depth == std::size(levels_)) {
            RunPass(run_);
            return;
        }
        const PassLevel& level = levels_[depth];
        for (std::int32_t point = 1;; ++point) {
            options_.*level.index = point;
            if (level.sweep) SetSweepPoint(*level.sweep, point, run_.workspace.symbols);
            if (point > 1) {
                run_.mask = level.flag;
                run_.list = &level.list;
            }
            Walk(depth + 1);
            if (point >= level.points || run_.MustEnd()) return;
        }
    }

    void End() {
        RestoreSymbol(inner_, run_.workspace.symbols);
        RestoreSymbol(outer_, run_.workspace.symbols);
        FreeDraws(order_);
        constexpr std::uint16_t ofPasses = runFlag::outer | runFlag::inner | runFlag::draws |
                                           runFlag::independent | runFlag::visited;
        for (const auto& component : run_.workspace.components) {
            component->runFlags &= static_cast<std::uint16_t>(~ofPasses);
            component->modelState.reset();
        }
        options_.innerCount = options_.outerCount = 0;
    }

    const RunOrder& order_;
    SimOptions& options_;
    RunState run_;
    Sweep outer_, inner_;
    PassLevel levels_[3];
};

}  // namespace

Status RunPasses(const RunOrder& order, Workspace& workspace, const ModelTable& models,
                 std::string& errorText) {
    return Passes(order, workspace, models, errorText).Run();
}

}  // namespace photrak
