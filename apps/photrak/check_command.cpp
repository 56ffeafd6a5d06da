// photrak check: loads a topology, tells every fault that can be seen without running, runs
// nothing.

#include "base/text.h"
#include "files/topology.h"
#include "files/topology_check.h"
#include "hierarchy/superblock_check.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/session.h"

namespace photrak {
namespace {

/// Parameter files and symbols of the command line come after the load; what depends on them is
/// looked at again.
void CheckWithOptions(const Session& session, const CommandOptions& options, Status& status) {
    if (options.symbols.empty() && options.loadParams.empty()) return;
    if (!ApplyParamFiles(session, options, status)) {
        status = Status::Error;
        return;
    }
    Workspace& workspace = *session.workspace;
    ApplySymbols(workspace, options);
    std::string text;
    MergeStatus(status, CheckTopologyGraph(workspace, text));
    Report(options.symbols.empty() ? "with --load-params" : "with --set", text);
}

}  // namespace

int CheckCommand(const CommandOptions& options) {
    const ConsoleMessages messages(Progress::Silent);
    Session session;
    if (!OpenCatalogue(session) || !EnterDirectory(session, options.file))
        return exitStatus::failed;
    Status status = TopologyCheck(session.fileName, session.workspace, session.catalogue);
    if (!session.workspace) return exitStatus::failed;
    session.workspace->fileName = session.fileName;
    Report(status == Status::Error ? "error" : "warning", session.workspace->errorText);
    CheckWithOptions(session, options, status);
    // Last, so that values of the command line are handed down too.
    std::string inside;
    MergeStatus(status, CheckSuperBlocks(*session.workspace, session.catalogue, inside));
    Report(status == Status::Error ? "error" : "warning", inside);
    if (status == Status::Error) return exitStatus::failed;
    if (!options.quiet) {
        WriteOut(Concat(options.file, ": ", session.workspace->components.size(), " components, ",
                        status == Status::Warning ? "warnings" : "no faults", "\n"));
    }
    return status == Status::Warning && options.strict ? exitStatus::warnings : exitStatus::success;
}

}  // namespace photrak
