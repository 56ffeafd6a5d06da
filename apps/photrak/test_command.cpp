// photrak test: what the Test button of a block's dialog does, on the command line.

#include "base/text.h"
#include "kernel/external_commands.h"
#include "kernel/run_record.h"
#include "models/block_tests.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/session.h"

namespace photrak {
namespace {

/// The block to test, or null after a report.
Component* FindTestable(const Session& session, const CommandOptions& options) {
    Component* component = FindNamed(session, options.component, options);
    if (!component) return nullptr;
    if (HasBlockTest(component->type, session.userModels)) return component;
    Report("error", Concat("component '", component->name, "' of type '", component->type,
                           "': ", noModelTestText));
    return nullptr;
}

/// The plots; a test that draws none (a user model's) says that it went well.
Status TellFiles(const Session& session, const CommandOptions& options, Status status) {
    if (status == Status::Success && CurrentRun().written.Names().empty() && !options.quiet) {
        WriteOut(Concat(options.component, ": no faults\n"));
    }
    return ListResultFiles(session);
}

}  // namespace

int TestCommand(const CommandOptions& options) {
    const ConsoleMessages messages;
    Session session;
    Status status = Status::Success;
    if (!OpenTopology(session, options, status, FaultsFor(options))) return exitStatus::failed;
    Component* component = FindTestable(session, options);
    if (!component) return exitStatus::failed;
    Workspace& workspace = *session.workspace;
    if (options.plotting) workspace.options->PLOTTING = *options.plotting;
    AllowExternalCommands(!options.noCommands);
    session.userModels.SetPolicy(PolicyFor(options));

    ResetRunRecord();
    std::string text;
    const Status tested = TestComponent(*component, workspace, session.userModels, text);
    MergeStatus(status, tested);
    MergeStatus(status, TellFiles(session, options, tested));
    Report(tested == Status::Error ? "error" : "warning", text);
    if (status == Status::Error) return exitStatus::failed;
    return status == Status::Warning && options.strict ? exitStatus::warnings : exitStatus::success;
}

}  // namespace photrak
