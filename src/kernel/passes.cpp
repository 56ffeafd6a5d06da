// Nests the passes of a run: outer sweep, inner sweep, statistical runs, and in each the walk over
// the list of what must run then. Keeps the coordinates in the options.
#include "kernel/passes.h"

#include <algorithm>
#include <utility>

#include "base/hash.h"
#include "base/log.h"
#include "base/text.h"
#include "kernel/component_step.h"
#include "kernel/eval_param.h"
#include "kernel/graph.h"
#include "kernel/pass_lists.h"
#include "kernel/run_record.h"
#include "kernel/scan_points.h"
#include "kernel/statistics.h"
#include "kernel/sweep_settings.h"
#include "numeric/random.h"
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

/// The point that the component's result belongs to: what does not depend on a loop has its result
/// from that loop's first point, whenever it runs.
std::uint64_t SeedOf(const Component& component, const SimOptions& options) {
    const auto index = [&](std::uint16_t flag, std::int32_t present) {
        return (component.runFlags & flag) ? present : 1;
    };
    const std::string place =
        Concat(component.name, '\n', index(runFlag::outer, options.outerIndex), ' ',
               index(runFlag::inner, options.innerIndex), ' ',
               index(runFlag::draws, options.runIndex), ' ', options.loopIndex, options.loopSuffix);
    return Hash().Add(place).Value();
}

void StepWithSeeds(RunState& run) {
    SeedRandomState(SeedOf(*(*run.list)[run.place], *run.workspace.options));
    static_cast<void>(TakeNoiseNote());
    StepComponent(run);
    if (TakeNoiseNote()) CurrentRun().drewNoise = true;
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
    const bool isShared = run.models.points != nullptr;
    for (run.place = 0; run.place < list.size() && !run.MustEnd(); ++run.place) {
        isShared ? StepWithSeeds(run) : StepComponent(run);
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
            ++point_;
            run_.models.points ? SharePoint(*run_.models.points) : RunPass(run_);
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

    void SharePoint(ScanPoints& points) {
        const ScanPoints::Part part = points.PartOf(point_);
        if (part != ScanPoints::Part::Runs) {
            EvaluateDraws(*run_.list, run_.workspace);
            ranLast_ = false;
            if (part == ScanPoints::Part::Takes) TakePoint(points);
            return;
        }
        const Status before = std::exchange(run_.status, Status::Success);
        if (!ranLast_) MakeUp();
        ranLast_ = true;
        points.Begin(point_);
        if (run_.status != Status::Error) RunPass(run_);
        if (!run_.workspace.options->stop) {
            points.End(point_, {run_.status, CurrentRun().point,
                                run_.status == Status::Error ? Text() : std::string()});
        }
        MergeStatus(run_.status, before);
    }

    /// Runs what the list of the point leaves out because it ran at an earlier point, which another
    /// process has: its signals are on the nodes then. Nothing of it depends on where the scan is.
    void MakeUp() {
        RunOrder rest;
        for (Component* component : order_) {
            if (std::ranges::find(*run_.list, component) == run_.list->end())
                rest.push_back(component);
        }
        if (rest.empty()) return;
        const RunOrder* list = std::exchange(run_.list, &rest);
        const std::uint16_t mask = std::exchange(run_.mask, runFlag::ordered);
        WalkList(run_);
        run_.list = list;
        run_.mask = mask;
    }

    void TakePoint(ScanPoints& points) {
        tookPoints_ = true;
        RunRecord& record = CurrentRun();
        record.BeginPoint();
        record.testers = TesterWork::Take;
        const PointOutcome outcome =
            points.Take(point_, [this](const BerReading& reading) { TakeReading(reading); });
        record.testers = TesterWork::Write;
        MergeStatus(run_.status, outcome.status);
        record.point = outcome.blocks;
        if (outcome.status == Status::Error) {
            Text() += outcome.errorText;
            record.point = Status::Error;
        }
        ++record.points;
        if (record.observer) record.observer->PointDone(run_.workspace, record.point);
    }

    /// A tester stores what another process read and writes its files; those inside a SuperBlock
    /// have written theirs.
    void TakeReading(const BerReading& reading) {
        Component* tester = FindComponent(reading.component, run_.workspace.components);
        if (!tester) return CurrentRun().TakeReading(reading);
        CurrentRun().taken = &reading;
        options_.loopIndex = reading.loop;
        options_.loopReps = reading.loop > 0 ? 2 : 0;
        CallTester(*tester);
        options_.loopIndex = options_.loopReps = 0;
        CurrentRun().taken = nullptr;
    }

    void CallTester(Component& tester) {
        std::string unheard;  // it is in the log of the point
        static_cast<void>(EvalComponentParams(tester, &run_.workspace, unheard));
        static_cast<void>(DispatchModel(
            run_.models,
            {{tester.name, unheard, {}}, run_.workspace, tester, options_, nullptr, nullptr}));
    }

    /// Testers that took readings write their curves once.
    void FinishTesters() {
        if (!tookPoints_) return;
        CurrentRun().testers = TesterWork::Finish;
        for (Component* component : order_) {
            if (component->modelState) CallTester(*component);
        }
        CurrentRun().testers = TesterWork::Write;
    }

    void End() {
        FinishTesters();
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
    std::int64_t point_ = 0;  // of the walk, from 1
    bool tookPoints_ = false;
    bool ranLast_ = false;  // the point before this one ran here, so that its signals stand
};

}  // namespace

Status RunPasses(const RunOrder& order, Workspace& workspace, const ModelTable& models,
                 std::string& errorText) {
    return Passes(order, workspace, models, errorText).Run();
}

}  // namespace photrak
