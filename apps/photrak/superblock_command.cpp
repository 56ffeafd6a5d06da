// photrak superblock: writes the definition beside a topology with In or Out blocks, so that it can
// stand as one block in others.

#include <filesystem>

#include "base/text.h"
#include "files/topology.h"
#include "hierarchy/superblock_check.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/session.h"

namespace photrak {

int SuperBlockCommand(const CommandOptions& options) {
    const ConsoleMessages messages;
    Session session;
    Status status = Status::Success;
    if (!OpenTopology(session, options, status)) return exitStatus::failed;
    const SuperBlockPorts ports = FindSuperBlockPorts(*session.workspace);
    if (ports.ins.empty() && ports.outs.empty()) {
        Report("error",
               Concat(options.file, ": it has no In or Out block, so it is no SuperBlock"));
        return exitStatus::failed;
    }
    std::string text;
    MergeStatus(status, CheckAsSuperBlock(*session.workspace, text));
    Report("warning", text);
    text.clear();
    if (WriteSuperBlockFile(session.fileName, ports, session.workspace->variables,
                            session.catalogue, text) == Status::Error) {
        Report("error", text);
        return exitStatus::failed;
    }
    const std::string stem = std::filesystem::path(session.fileName).stem().string();
    WriteOut(Concat(stem, ".dts\n"));
    return status == Status::Warning && options.strict ? exitStatus::warnings : exitStatus::success;
}

}  // namespace photrak
