// photrak params: the values of one component as a parameter file.

#include "base/text.h"
#include "files/param_file.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/session.h"

namespace photrak {
namespace {

/// To the file that was asked for, whose name is then printed, or to standard output.
Status WriteParams(const Component& component, const CommandOptions& options, std::string& text) {
    if (options.paramFile.empty()) {
        std::string out;
        const Status status = ParamFileText(component, out);
        if (status == Status::Error) text = "Error saving parameters.";
        WriteOut(out);
        return status;
    }
    const std::string name = ParamFileName(options.paramFile, {});
    const Status status = SaveParamFile(component, name, text);
    if (status == Status::Error) {
        text = Concat(name, ": ", text);
    } else if (!options.quiet) {
        WriteOut(name + "\n");
    }
    return status;
}

}  // namespace

int ParamsCommand(const CommandOptions& options) {
    const ConsoleMessages messages;
    Session session;
    Status status = Status::Success;
    if (!OpenTopology(session, options, status)) return exitStatus::failed;
    Component* component = FindNamed(session, options.component, options);
    if (!component) return exitStatus::failed;

    // A value that does not evaluate is reported and saved all the same.
    std::string text;
    const Status evaluated = EvaluateForParamFile(*component, *session.workspace, text);
    Report("warning", text);
    if (evaluated != Status::Success) MergeStatus(status, Status::Warning);
    text.clear();
    if (WriteParams(*component, options, text) == Status::Error) {
        Report("error", text);
        return exitStatus::failed;
    }
    return status == Status::Warning && options.strict ? exitStatus::warnings : exitStatus::success;
}

}  // namespace photrak
