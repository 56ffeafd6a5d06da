// What run and scan share: a loaded topology is run, its results are listed, its status becomes the
// exit status.
#include "photrak/simulation.h"

#include <chrono>
#include <filesystem>

#include "base/log.h"
#include "base/text.h"
#include "files/result_clashes.h"
#include "kernel/external_commands.h"
#include "kernel/run_record.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/inspection.h"
#include "photrak/outcome.h"
#include "photrak/point_rows.h"
#include "photrak/report.h"
#include "photrak/report_sources.h"
#include "photrak/scan_shards.h"
#include "photrak/session.h"

namespace photrak {
namespace {

void TellBeforeRun(const Session& session, const CommandOptions& options) {
    if (!options.verbose) return;
    const Workspace& workspace = *session.workspace;
    WriteError(Concat("photrak: ", session.catalogue.models.size(), " models from ",
                      session.catalogue.modelDirectory, "\n"));
    WriteError(Concat("photrak: ", session.fileName, ": ", workspace.components.size(),
                      " components, ", workspace.nodes.size(), " nodes\n"));
    for (const Variable& variable : workspace.variables) {
        WriteError(Concat("photrak: symbol ", variable.name, " = ", variable.value, "\n"));
    }
}

/// True after a report of result files that would be lost.
bool RefusesClashes(const Session& session, const CommandOptions& options) {
    LoadFindings clashes = FindResultClashes(*session.workspace, session.inputFolder);
    for (LoadFinding& clash : clashes) clash.place = options.file;
    if (ReportFindings(clashes) == 0) return false;
    Report("error", Concat(options.file, ": nothing was run; '--lenient' goes on all the same"));
    return true;
}

/// Many a model's text tells its fault but not its block, and the status line is gone by then.
std::string FailureText(const Session& session, const std::string& file,
                        const std::string& component) {
    return Concat(file, ": the run failed", component.empty() ? "" : " at ", component, "; see ",
                  session.resultFolder, "log.txt");
}

/// What the testers of the run found last.
void TellReadings() {
    constexpr int digits = 3;
    for (const BerReading& reading : CurrentRun().readings) {
        WriteOut(Concat("BER ", reading.component, ": ", FormatSignificant(reading.BER, digits),
                        "  Q: ", FormatSignificant(reading.Q, digits), "\n"));
    }
}

/// A failing run has a page too: of what it wrote, and why it ended.
bool ReportRun(const CommandOptions& options, const Session& session,
               const ConsoleMessages& messages, std::uintmax_t logBefore, Status status) {
    if (!options.report) return true;
    const RunRecord& record = CurrentRun();
    RunForReport run{session.fileName, record.written.Names(), {}, logBefore};
    if (status == Status::Error) {
        const std::string& text = session.workspace->errorText;
        run.warnings.push_back(Concat(
            "The run failed: ", text.empty() ? messages.ErrorText() : InterpretPercent(text)));
    }
    if (StopOnSignal::Received()) run.warnings.push_back("The run was stopped before its end.");
    if (!record.failed.Names().empty())
        run.warnings.push_back("Some result files could not be written.");
    return WriteRunReport(run);
}

/// The table of --table, for as long as the run lasts.
class TableOfRun {
  public:
    TableOfRun(const CommandOptions& options, const Workspace& workspace, const RunGuest* guest)
        : name_(guest ? std::string() : options.table) {
        if (name_.empty()) return;
        table_ = std::make_unique<PointTable>(options.tablePath, workspace);
        CurrentOutcome().SetTable(name_);
    }
    RunObserver* Observer() const { return table_.get(); }
    /// False, after a report, if the table is not whole.
    bool Tell() const {
        if (!table_ || table_->Failure().empty()) return true;
        Report("error", Concat("could not write '", name_, "': ", table_->Failure()));
        return false;
    }
    void List() const {
        if (table_ && table_->Failure().empty()) WriteOut(name_ + "\n");
    }

  private:
    std::string name_;
    std::unique_ptr<PointTable> table_;
};

int Conclude(Status status, bool warned, const Session& session, const ConsoleMessages& messages,
             const CommandOptions& options) {
    const Status listed = ListResultFiles(session);
    warned = warned || listed == Status::Warning;
    TellReadings();
    if (CurrentRun().viewerMissing) Report("note", viewerMissingText);
    if (status == Status::Error) {
        const std::string& text = session.workspace->errorText;
        Report("error", text.empty() ? messages.ErrorText() : InterpretPercent(text));
        Report("error", FailureText(session, options.file, messages.LatestComponent()));
        return exitStatus::failed;
    }
    if (const int signal = StopOnSignal::Received()) {
        Report("note", "stopped on request; the result files above are those of what had finished");
        return exitStatus::stoppedBase + signal;
    }
    if (status == Status::Warning && listed == Status::Success) {
        Report("note", Concat("warnings occurred during the simulation; see ", session.resultFolder,
                              "log.txt"));
    }
    if (listed == Status::Error) return exitStatus::failed;
    return (warned || status == Status::Warning) && options.strict ? exitStatus::warnings
                                                                   : exitStatus::success;
}

Status RunBounded(Workspace& workspace, const ModelTable& models) {
    const LogBound bound;
    return RunSimulation(&workspace, models);
}

}  // namespace

int SimulateTopology(const CommandOptions& options, const SimulationKind& kind, RunGuest* guest) {
    ConsoleMessages messages(StyleOf(options.progress, options.quiet));
    Session session;
    const std::uintmax_t logBefore =
        LogSize(options.out.empty() ? std::filesystem::path(options.file).parent_path().string()
                                    : options.out);
    Status loaded = Status::Success;
    if (!OpenTopology(session, options, loaded, FaultsFor(options))) return exitStatus::failed;
    SimOptions& simOptions = *session.workspace->options;
    if (options.plotting) simOptions.PLOTTING = *options.plotting;
    kind.prepare(simOptions, options);
    if (!options.lenient && RefusesClashes(session, options)) return exitStatus::failed;
    if (kind.adapt) kind.adapt(*session.workspace);
    AllowExternalCommands(!options.noCommands);
    session.userModels.SetPolicy(PolicyFor(options));
    TellBeforeRun(session, options);

    ResetRunRecord();
    const TableOfRun table(options, *session.workspace, guest);
    if (!table.Tell() || (guest && !guest->Begin(session))) return exitStatus::failed;
    CurrentRun().observer = guest ? guest : table.Observer();
    const StopOnSignal stop(simOptions);
    const auto start = std::chrono::steady_clock::now();
    LogText(Concat("Starting ", kind.name, "\n"));
    messages.Follow(session.workspace.get(), &session.places);
    ModelTable models = session.Models();
    const auto points = kind.points ? kind.points(session, options) : nullptr;
    models.points = points.get();
    const Status status = RunBounded(*session.workspace, models);
    messages.TellRepeats();
    messages.Follow(nullptr, nullptr);
    LogRunEnd(Concat(kind.name, " Completed"), status, simOptions.stop != 0);
    messages.EndStatusLine();
    CurrentRun().observer = nullptr;
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    if (options.verbose) WriteError(Concat("photrak: the run took ", elapsed.count(), " s\n"));
    const bool isGuestDone = !guest || status == Status::Error || guest->End();
    CurrentOutcome().TakeRun(session.resultFolder, CurrentRun().points, elapsed.count());
    const bool isWhole = table.Tell() && isGuestDone;
    int exit = Conclude(status, loaded == Status::Warning, session, messages, options);
    if (points && !points->Conclude() && exit == exitStatus::success) exit = exitStatus::failed;
    table.List();
    if (guest) guest->Tell();
    if (!isWhole && exit <= exitStatus::warnings) exit = exitStatus::failed;
    const bool reported = ReportRun(options, session, messages, logBefore, status);
    return exit == exitStatus::success && !reported ? exitStatus::failed : exit;
}

}  // namespace photrak
