// A run from end to end: the escape level, the order, the symbols, the passes, and the last word.
#include "kernel/simulate.h"

#include <exception>

#include "base/escape.h"
#include "base/log.h"
#include "base/text.h"
#include "kernel/driver.h"
#include "kernel/graph.h"
#include "kernel/loops.h"
#include "kernel/passes.h"
#include "kernel/symbols.h"
#include "numeric/factor_cache.h"
#include "platform/host.h"
#include "platform/memory_shortage.h"
#include "platform/stop_point.h"

namespace photrak {
namespace {

void ShowError(std::string_view text) {
    CurrentHost().messages->ErrorBox(text, errorTitle);
}

void AppendLine(std::string& text, std::string_view line) {
    text += line;
    if (!text.empty() && text.back() != '\n') text += '\n';
}

Status RunInOrder(Workspace& workspace, const ModelTable& models, std::string& errorText) {
    RunOrder order;
    NodeSet nodes;
    Status status = OrderWorkspace(workspace, order, nodes, errorText);
    if (status != Status::Error) MergeStatus(status, BuildSymbolTable(workspace, errorText));
    workspace.options->loopReps = 0;
    if (status == Status::Error) return status;
    PrepareLoopCounts(order, workspace);
    MergeStatus(status, RunPasses(order, workspace, models, errorText));
    return status;
}

/// A run that reaches its end, well or not, leaves nothing behind.
Status RunWorkspace(Workspace* workspace, const ModelTable& models, std::string& errorText) {
    if (!workspace) {
        errorText += "The workspace is NULL. No simulation\n";
        return Status::Error;
    }
    ClearNodeSignals(*workspace);  // of a run that took the escape
    const StopScope stop(&workspace->options->stop);
    const Status status = RunInOrder(*workspace, models, errorText);
    FreeSymbolTable(*workspace);
    for (const auto& component : workspace->components) component->runFlags = 0;
    workspace->options->loopReps = 0;
    ClearNodeSignals(*workspace);
    return status;
}

/// A shortage that a block took no notice of makes the run an error all the same.
Status WithShortage(Status status, std::uint64_t before, std::string& errorText) {
    if (status == Status::Error || ShortageCount() == before) return status;
    AppendLine(errorText, std::string("ERROR: ").append(ShortageText()));
    return Status::Error;
}

void SpeakLastWord(Status status, std::string& errorText) {
    if (status == Status::Error) FatalError(InterpretPercent(errorText));
    if (status != Status::Warning) return;
    LogText(InterpretPercent(errorText));
    CurrentHost().messages->ShowWarnings({}, InterpretPercent(errorText));
    errorText.clear();
}

/// What must not reach into the next run when the escape was taken.
// By design: nothing else is cleaned up here, since the failure may be exhausted memory;
// the signals stay on the nodes until the next run begins.
void Abandon(Workspace* workspace) {
    if (!workspace) return;
    SimOptions& options = *workspace->options;
    options.loopReps = options.innerCount = options.outerCount = 0;
    for (const auto& component : workspace->components) component->modelState.reset();
}

}  // namespace

Status SimulateNested(Workspace& workspace, const ModelTable& models, std::string& errorText) {
    const EscapeLevel level(/*armed=*/true);
    if (level.Refused()) {
        errorText += "ERROR: simulations nested too deep\n";
        return Status::Error;
    }
    try {
        ModelTable inside = models;
        inside.points = nullptr;  // only the outermost scan is shared
        return RunWorkspace(&workspace, inside, errorText);
    } catch (const Escape& escape) {
        AppendLine(errorText, escape.message);
    } catch (const std::exception& failure) {
        AppendLine(errorText,
                   std::string("ERROR: the simulation was given up: ") + ReasonOf(failure));
    }
    Abandon(&workspace);
    return Status::Error;
}

Status Simulate(Workspace* workspace, const ModelTable& models, std::string& errorText) {
    const EscapeLevel level(/*armed=*/true);
    if (level.Refused()) {
        errorText += "ERROR: simulations nested too deep\n";
        ShowError(errorText);
        return Status::Error;
    }
    bool atLastWord = false;
    const FactorCacheScope factors;
    try {
        CloseReserve();
        const std::uint64_t before = ShortageCount();
        const Status status =
            WithShortage(RunWorkspace(workspace, models, errorText), before, errorText);
        atLastWord = true;
        SpeakLastWord(status, errorText);
        return status;
    } catch (const Escape& escape) {
        // The box has been shown where the escape was taken.
        if (!atLastWord) AppendLine(errorText, escape.message);
    } catch (const std::exception& failure) {
        AppendLine(errorText,
                   std::string("ERROR: the simulation was given up: ") + ReasonOf(failure));
        ShowError(errorText);
    }
    Abandon(workspace);
    return Status::Error;
}

Status RunSimulation(Workspace* workspace, const ModelTable& models) {
    std::string noWorkspaceText;
    if (!workspace) return Simulate(workspace, models, noWorkspaceText);
    workspace->options->stop = 0;
    workspace->errorText.clear();
    return Simulate(workspace, models, workspace->errorText);
}

void LogRunEnd(std::string_view completion, Status status, bool stopped) {
    std::string text = Concat(completion, "\n");
    if (status == Status::Error) {
        text += "The run failed before its end\n";
    } else if (stopped) {
        text += "The run was stopped before its end\n";
    }
    LogText(text);
}

}  // namespace photrak
