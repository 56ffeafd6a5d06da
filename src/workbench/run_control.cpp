// The worker takes a working directory of its own before it enters the diagram's, so that opening
// and saving beside a run go on undisturbed. What the run tells goes through RunNotes.
#include "workbench/run_control.h"

#include <cmath>
#include <sched.h>

#include "base/log.h"
#include "base/memory.h"
#include "base/text.h"
#include "drawing/text_measure.h"
#include "files/topology_check.h"
#include "hierarchy/nested_run.h"
#include "kernel/driver.h"
#include "kernel/run_progress.h"
#include "kernel/run_record.h"
#include "kernel/workspace.h"
#include "platform/file_system.h"
#include "platform/host.h"
#include "platform/progress.h"
#include "workbench/run_consent.h"
#include "workbench/workbench.h"

namespace photrak {
namespace {

/// Boxes and status texts of the run, from its thread.
struct RunMessages : Messages {
    explicit RunMessages(RunNotes& target) : notes(target) {}
    void ShowStatusText(std::string_view text) override {
        NoteProgress(-1.0);
        notes.Add({RunNote::Kind::Status, {}, std::string(text)});
    }
    void ErrorBox(std::string_view text, std::string_view title) override {
        notes.Add({RunNote::Kind::Error, std::string(title), std::string(text)});
    }
    void InfoBox(std::string_view text, std::string_view title) override {
        notes.Add({RunNote::Kind::Information, std::string(title), std::string(text)});
    }
    /// A run asks nothing: the answer is no.
    bool QueryBox(std::string_view, std::string_view) override { return false; }

    RunNotes& notes;
};

/// Looks at the run from its own thread, and leaves numbers for the interface.
struct ShareNote : ProgressSink {
    ShareNote(RunShare& target, const SimOptions& ofRun) : share(target), options(ofRun) {
        CurrentProgress() = this;
    }
    ~ShareNote() { CurrentProgress() = nullptr; }
    ShareNote(const ShareNote&) = delete;
    ShareNote& operator=(const ShareNote&) = delete;
    void ShowFraction(double fraction) override {
        const ScanPosition at = PositionOf(options);
        share.point = at.point;
        share.points = at.points;
        share.fraction = fraction;
    }

    RunShare& share;
    const SimOptions& options;
};

void ClearResultsOf(DiagramView& view) {
    view.readings.clear();
    for (const auto& component : view.workspace->components) component->plots.clear();
    for (const auto& [number, node] : view.workspace->nodes) node->summaries.clear();
}

bool HasSweep(const std::string& variable, const std::string& start, const std::string& step,
              const std::string& stop) {
    return !variable.empty() && !start.empty() && !step.empty() && !stop.empty();
}

void SetScanMode(SimOptions& options) {
    const bool inner = HasSweep(options.INNERSWEEPVARIABLE, options.INNERSWEEPSTARTVAL,
                                options.INNERSWEEPSTEPVAL, options.INNERSWEEPSTOPVAL);
    const bool outer = HasSweep(options.OUTERSWEEPVARIABLE, options.OUTERSWEEPSTARTVAL,
                                options.OUTERSWEEPSTEPVAL, options.OUTERSWEEPSTOPVAL);
    if (options.NUMRUNSTODO < 1) options.NUMRUNSTODO = 0;
    options.innerCount = inner ? 1 : 0;
    options.outerCount = outer ? 1 : 0;
    const auto set = [&](std::int16_t flag, bool on) {
        options.mode = static_cast<std::int16_t>(on ? options.mode | flag : options.mode & ~flag);
    };
    set(simMode::innerSweep, inner);
    set(simMode::outerSweep, outer);
    set(simMode::statistical, options.NUMRUNSTODO > 0);
}

void SetGoMode(SimOptions& options) {
    options.mode = 0;
    options.innerCount = options.outerCount = 0;
}

std::string NoDirectoryText(const DiagramView& view) {
    return Concat("Cannot enter the directory '", view.directory, "'");
}

/// The run from its directory; the stop word was cleared by whoever started it.
void RunInDirectory(Workbench& workbench, DiagramView& view) {
    Host host = CurrentHost();
    RunMessages messages(workbench.run.notes);
    host.messages = &messages;
    if (workbench.run.processes) host.processes = workbench.run.processes;
    const HostScope scope(host);
    const WorkingDirectory there(view.directory);
    if (there.Failed()) {  // results must not land among those of another diagram
        workbench.run.notes.Add({RunNote::Kind::Error, errorTitle, NoDirectoryText(view)});
        workbench.run.status = Status::Error;
        return;
    }
    Workspace& workspace = *view.workspace;
    const ShareNote share(workbench.run.share, *workspace.options);
    std::string text;
    ResetRunRecord();
    const SuperBlockRuns nested(workbench.catalogue);
    const ModelTable models{workbench.services.builtInModels, &workbench.userModels, &nested};
    {
        const LogBound bound;
        workbench.run.status = Simulate(&workspace, models, text);
    }
    ReturnFreedMemory();
    workspace.errorText = text;
    if (CurrentRun().viewerMissing) {
        workbench.run.notes.Add(
            {RunNote::Kind::Information, informationTitle, std::string(viewerMissingText)});
    }
    LogRunEnd(workbench.run.completion, workbench.run.status, workspace.options->stop != 0);
    const std::string logFailure = TakeLogFailure();
    if (!logFailure.empty()) {
        workbench.run.notes.Add({RunNote::Kind::Information, informationTitle,
                                 Concat("could not write 'log.txt': ", logFailure)});
    }
}

void WorkerMain(Workbench& workbench, DiagramView& view) {
    // Without a directory of its own the worker would take the interface's along.
    if (::unshare(CLONE_FS) != 0) {
        workbench.run.notes.Add({RunNote::Kind::Error, errorTitle,
                                 "The system gives the run no working directory of its own."});
        workbench.run.status = Status::Error;
    } else {
        RunInDirectory(workbench, view);
    }
    workbench.run.ended = true;
}

void ShowNotes(Workbench& workbench) {
    for (const RunNote& note : workbench.run.notes.Take()) {
        if (note.kind == RunNote::Kind::Status) {
            workbench.pane = note.text;
        } else {
            workbench.desktop.Box(
                note.kind == RunNote::Kind::Error ? BoxKind::Error : BoxKind::Information,
                note.title, note.text);
        }
    }
}

std::string EndText(const RunControl& run) {
    if (run.status == Status::Error) return run.what + " failed";
    return run.stopAsked ? run.what + " stopped" : run.completion;
}

/// What the testers of the run found last: "Tester: BER 1.2e-09, Q 5.95".
std::string ReadingsText() {
    constexpr int digits = 3;
    std::string text;
    for (const BerReading& reading : CurrentRun().readings) {
        text += Concat(text.empty() ? "" : "\n", DrawableText(reading.component), ": BER ",
                       FormatSignificant(reading.BER, digits), ", Q ",
                       FormatSignificant(reading.Q, digits));
    }
    return text;
}

void EndRun(Workbench& workbench) {
    RunControl& run = workbench.run;
    DiagramView& view = *run.view;
    view.readings = ReadingsText();
    view.running = 0;
    run.active = false;
    run.view = nullptr;
    ShowNotes(workbench);
    workbench.pane = EndText(run);
    if (run.status == Status::Warning) {
        workbench.InfoBox(
            "Warnings occured during simulation.\n"
            "Please view log file for further information.");
    }
}

void Launch(Workbench& workbench) {
    RunControl& run = workbench.run;
    DiagramView& view = *run.view;
    run.launched = true;
    run.worker = std::thread([&workbench, &view] { WorkerMain(workbench, view); });
}

}  // namespace

void RunNotes::Add(RunNote note) {
    const std::lock_guard guard(lock_);
    notes_.push_back(std::move(note));
}

std::vector<RunNote> RunNotes::Take() {
    const std::lock_guard guard(lock_);
    return std::exchange(notes_, {});
}

void StartRun(Workbench& workbench, DiagramView& view, bool scan) {
    RunControl& run = workbench.run;
    if (run.active) {
        workbench.ErrorBox("Simulation already in progress.");
        return;
    }
    if (!HasRunConsent(workbench, view)) return;
    view.DropDrag();
    SimOptions& options = *view.workspace->options;
    {
        const WorkingDirectory there(view.directory);
        if (there.Failed()) {
            workbench.ErrorBox(NoDirectoryText(view));
            return;
        }
        LogText(scan ? "Starting Parameter Scan\n" : "Starting Simulation\n");
        const std::string warning = RepeatedNamesText(*view.workspace);
        LogText(warning);
        // The pane holds one line: the first pair is enough to send the user to the log.
        if (!warning.empty()) workbench.pane = warning.substr(0, warning.find('\n'));
    }
    scan ? SetScanMode(options) : SetGoMode(options);
    view.workspace->fileName = view.fileName;
    ClearResultsOf(view);
    run.view = &view;
    run.processes = CurrentHost().processes;
    run.what = scan ? "Parameter Scan" : "Simulation";
    run.completion = run.what + " Completed";
    run.status = Status::Success;
    run.stopAsked = run.launched = false;
    run.ended = false;
    run.share.fraction = -1.0;
    run.share.point = run.share.points = 1;
    run.share.start = std::chrono::steady_clock::now();
    options.stop = 0;
    run.active = true;
    view.running = 1;
    if (!workbench.multiThread) {
        RunInDirectory(workbench, view);
        EndRun(workbench);
    } else if (!run.holds) {
        Launch(workbench);
    }
}

void StopRun(Workbench& workbench) {
    RunControl& run = workbench.run;
    if (!run.active) return;
    const DiagramView& view = *run.view;
    if (workbench.desktop.Query(view.fileName, "Stop simulation in process") != Answer::Yes) return;
    if (!run.active || run.ended) return;
    run.stopAsked = true;
    view.workspace->options->stop = 1;
}

void FinishRun(Workbench& workbench) {
    RunControl& run = workbench.run;
    if (!run.active) return;
    if (!run.launched) Launch(workbench);
    run.worker.join();
    EndRun(workbench);
}

void PollRun(Workbench& workbench) {
    if (!workbench.run.active) return;
    if (workbench.run.launched && workbench.run.ended) {
        FinishRun(workbench);
    } else {
        ShowNotes(workbench);
    }
}

std::string RunStateText(const Workbench& workbench) {
    if (!workbench.run.active) return {};
    return workbench.run.stopAsked ? "Stopping" : "Running";
}

std::optional<double> RunShareDone(const Workbench& workbench) {
    const RunShare& share = workbench.run.share;
    if (!workbench.run.active) return std::nullopt;
    const double done = ShareDone({share.point, share.points}, share.fraction);
    return done > 0.0 ? std::optional<double>(done) : std::nullopt;
}

std::string RunProgressText(const Workbench& workbench) {
    if (!workbench.run.active) return {};
    const RunShare& share = workbench.run.share;
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - share.start;
    std::string text = DurationText(elapsed.count());
    if (share.points > 1)
        text = Concat("point ", share.point.load(), " of ", share.points.load(), ", ", text);
    const double left = SecondsLeft(RunShareDone(workbench).value_or(0.0), elapsed.count());
    return std::isnan(left) ? text : Concat(text, ", ", DurationText(left), " left");
}

}  // namespace photrak
