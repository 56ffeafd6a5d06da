// photrak check: loads a topology, tells every fault that can be seen without running, runs
// nothing.

#include <iostream>

#include "base/text.h"
#include "files/diagnostics.h"
#include "files/graph_inspection.h"
#include "files/topology.h"
#include "files/topology_check.h"
#include "hierarchy/superblock_check.h"
#include "kernel/graph.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/inspection.h"
#include "photrak/session.h"

namespace photrak {
namespace {

struct Tally {
    int errors = 0, warnings = 0;

    void Take(const LoadFindings& findings) {
        for (const LoadFinding& finding : findings) ++(finding.changesNumber ? errors : warnings);
    }
    void Take(Status status) {
        errors += status == Status::Error;
        warnings += status == Status::Warning;
    }
};

/// The load tells of unknown keywords there; the inspection has.
class QuietErrorStream {
  public:
    QuietErrorStream() : former_(std::cerr.rdstate()) { std::cerr.setstate(std::ios::failbit); }
    ~QuietErrorStream() { std::cerr.clear(former_); }
    QuietErrorStream(const QuietErrorStream&) = delete;
    QuietErrorStream& operator=(const QuietErrorStream&) = delete;

  private:
    std::ios::iostate former_;
};

/// The topology with the parameter files and symbols of the command line, in spite of faulty
/// blocks; false after a report.
bool Load(Session& session, const CommandOptions& options, Status& loaded) {
    const QuietErrorStream quiet;
    loaded = TopologyCheck(session.fileName, session.workspace, session.catalogue);
    if (!session.workspace) return false;
    session.workspace->fileName = session.fileName;
    std::string text;
    if (ApplyParamFiles(session, options, text) == Status::Error) {
        Report("error", text);
        return false;
    }
    ApplySymbols(*session.workspace, options);
    return true;
}

/// What the wires tell, unless a block is lost whose wires would be missed; then what the load and
/// the graph call an error without a finding of its own.
void CheckWires(Session& session, Inspection& inspection, Status loaded, Tally& tally) {
    inspection.findings.clear();  // told before
    if (!inspection.isCutShort) InspectGraph(*session.workspace, inspection);
    ReportFindings(inspection.findings);
    tally.Take(inspection.findings);
    std::string text = loaded == Status::Error ? session.workspace->errorText : std::string();
    const Status evaluated = CheckTopologyGraph(*session.workspace, text);
    if (tally.errors > 0 || (loaded != Status::Error && evaluated != Status::Error)) return;
    Report("error", Concat(diagnostic::notLoaded, ": ", text));
    tally.Take(Status::Error);
}

int Conclude(const Session& session, const CommandOptions& options, const Tally& tally) {
    if (!options.quiet) {
        const auto count = [](int number, std::string_view word) {
            return Concat(number, " ", word, number == 1 ? "" : "s");
        };
        const bool isFine = tally.errors + tally.warnings == 0;
        const std::size_t components =
            session.workspace ? session.workspace->components.size() : std::size_t{0};
        WriteOut(Concat(
            options.file, ": ", components, " components, ",
            isFine ? "no faults"
                   : Concat(count(tally.errors, "error"), ", ", count(tally.warnings, "warning")),
            "\n"));
    }
    if (tally.errors > 0) return exitStatus::failed;
    return tally.warnings > 0 && options.strict ? exitStatus::warnings : exitStatus::success;
}

}  // namespace

int CheckCommand(const CommandOptions& options) {
    const ConsoleMessages messages;
    Session session;
    Tally tally;
    if (!OpenCatalogue(session) || !EnterDirectory(session, options.file))
        return exitStatus::failed;
    Inspection inspection = InspectSession(session, options, Thoroughness::ForCheck);
    ReportFindings(inspection.findings);
    tally.Take(inspection.findings);
    tally.warnings += session.catalogueWarnings;
    Status loaded = Status::Success;
    if (!Load(session, options, loaded)) {
        tally.Take(Status::Error);
        return Conclude(session, options, tally);
    }
    CheckWires(session, inspection, loaded, tally);
    if (tally.errors == 0) {
        std::string inside;
        const Status status = CheckSuperBlocks(*session.workspace, session.catalogue, inside);
        Report(status == Status::Error ? "error" : "warning", inside);
        tally.Take(status);
    }
    return Conclude(session, options, tally);
}

}  // namespace photrak
