// The per-component step and what it does to the signals on the nodes.
#include "kernel/component_step.h"

#include <memory>
#include <new>

#include "base/log.h"
#include "base/text.h"
#include "kernel/graph.h"
#include "kernel/loops.h"
#include "kernel/parameters.h"
#include "kernel/run_record.h"
#include "kernel/signal_check.h"
#include "platform/host.h"
#include "platform/memory_shortage.h"
#include "platform/stop_point.h"

namespace photrak {
namespace {

/// Appends a cell after `tail` and moves the tail on; null when memory is exhausted.
Nodelist* AppendCell(Nodelist**& tail, std::int32_t sigType) {
    if (CreateNodelist(tail, sigType) != 0) return nullptr;
    Nodelist* cell = *tail;
    tail = &cell->next;
    return cell;
}

Status OutOfCells(const Component& component, std::string& errorText) {
    AppendPiece(errorText,
                Concat("ERROR: out of memory at the ports of component '", component.name, "'\n"));
    return Status::Error;
}

void AnnounceComponent(const Workspace& workspace, const Component& component) {
    const std::string line = Concat("Simulating component ", workspace.name, "'", component.name,
                                    "' of type '", component.type, "'");
    LogText(line + "\n");
    CurrentHost().messages->ShowStatusText(line);
}

/// The command files that a block writes in this run, each once: a window opens them from its icon.
void NotePlots(Component& component, std::size_t before) {
    const std::vector<std::string>& names = CurrentRun().written.Names();
    for (std::size_t i = before; i < names.size(); ++i) {
        const std::size_t dot = names[i].rfind('.');
        if (dot != std::string::npos && names[i].compare(dot, 3, ".pc") == 0) {
            component.plots.push_back(names[i]);
        }
    }
}

Status CallModel(RunState& run, const Step& step) {
    Component& component = *step.component;
    const std::size_t before = CurrentRun().written.Names().size();
    const std::uint64_t shortages = ShortageCount();
    try {
        Status status =
            DispatchModel(run.models, {{component.name, run.errorText, run.workspace.name},
                                       run.workspace,
                                       component,
                                       *run.workspace.options,
                                       step.inputs.get(),
                                       step.outputs.get()});
        NotePlots(component, before);
        if (status != Status::Error && ShortageCount() > shortages) {  // it took no notice
            AppendPiece(run.errorText, Concat("ERROR: ", ShortageText()));
            status = Status::Error;
        }
        return status;
    } catch (...) {
        NotePlots(component, before);
        throw;
    }
}

Status RunBlock(RunState& run, Step& step) {
    if (run.status == Status::Error) return Status::Success;  // nothing more is called
    Component& component = *step.component;
    if (component.type == loopBeginType) return BeginLoop(run, step);
    if (component.type == loopEndType) return EndLoop(run, step);
    try {
        return CallModel(run, step);
    } catch (const StopAsked&) {
        LogText("Stopped within the component\n");
        step.outputs.reset();  // half a signal is none
        return Status::Success;
    }
}

/// Warnings are logged once and forgotten; the text of an error stays for the final message.
void LogAndMerge(RunState& run, const Component& component, Status model) {
    if (run.status == Status::Success && model == Status::Success) return;
    MergeStatus(run.status, model);
    if (run.errorText.empty()) return;
    // The text of an error inside a SuperBlock goes on to the run outside, which logs it.
    if (model == Status::Error && !run.workspace.name.empty()) return;
    LogText(run.errorText + "\n");
    if (run.status == Status::Warning) {
        CurrentHost().messages->ShowWarnings(run.workspace.name + component.name, run.errorText);
        run.errorText.clear();
    }
    CurrentRun().clamps.clear();
}

bool CarriesSignal(std::int32_t sigType) {
    return sigType == OpSigType || sigType == ElecSigType || sigType == BinSigType;
}

std::unique_ptr<SigRecord> RecordOf(const Nodelist& cell, const SimOptions& options) {
    auto record = std::make_unique<SigRecord>();
    record->SET = options.set;
    record->INNERSWEEP = options.innerIndex;
    record->OUTERSWEEP = options.outerIndex;
    record->RUN = options.runIndex;
    record->LOOP = options.loopIndex;
    record->BIN = options.binIndex;
    record->sigType = cell.sigType;
    record->sig = cell.sig;
    return record;
}

void PutOnNode(std::unique_ptr<SigRecord> record, Nodelist& cell, Node& node) {
    cell.sig = nullptr;
    record->next = node.signals;
    node.signals = record.release();
    SetNodeSigType(node, node.signals->sigType);
}

/// Those inside a SuperBlock are not the observer's.
void TellObserver(const Workspace& workspace, const Node& node) {
    RunObserver* const observer = CurrentRun().observer;
    if (observer && workspace.name.empty()) {
        observer->SignalStored(workspace, node, *node.signals);
    }
}

/// The summaries come first: what they have measured needs no second look. `fault` tells why a
/// signal is not stored.
Status StoreOutput(Nodelist& cell, Node& node, const Workspace& workspace, std::string& errorText,
                   const char*& fault) {
    if (!CarriesSignal(cell.sigType)) {
        fault = "of no known signal type\n";
        return Status::Error;
    }
    std::unique_ptr<SigRecord> record = RecordOf(cell, *workspace.options);
    std::string text;
    SignalSummaries made;
    const Status status = SummarizeSignal(*record, workspace.options->mode, made, text);
    if (!HasFiniteValues(cell.sig, cell.sigType, made)) {
        fault = "with a value that is not finite, or too large to be squared\n";
        return Status::Error;
    }
    errorText += text;
    PutOnNode(std::move(record), cell, node);
    KeepSummaries(std::move(made), node);
    TellObserver(workspace, node);
    return status;
}

constexpr std::uint16_t lowFlags =
    runFlag::ordered | runFlag::outer | runFlag::inner | runFlag::draws;

/// True if components whose flags differ by these will not run again apart from each other.
bool AreDifferencesClosed(std::uint16_t differences, const SimOptions& options) {
    if ((differences & runFlag::outer) && options.outerIndex != options.outerCount) return false;
    if ((differences & runFlag::inner) && options.innerIndex != options.innerCount) return false;
    return !(differences & runFlag::draws) || options.runIndex == options.NUMRUNSTODO;
}

/// True if nothing in this pass or a later one will read what stands on the node.
bool IsSpent(const Node& node, const RunState& run) {
    const auto waits = [&](const Component* reader) {
        return (reader->runFlags & run.mask) && !(reader->runFlags & runFlag::hasRun);
    };
    // Readers run in the order of their list or against it: one of its ends is the last to run, and
    // a node of very many readers is not walked for each of them.
    if (!node.readers.empty() && (waits(node.readers.front()) || waits(node.readers.back())))
        return false;
    const std::uint16_t driverFlags = node.drivers.front()->runFlags & lowFlags;
    for (const Component* reader : node.readers) {
        const std::uint16_t flags = reader->runFlags;
        if (waits(reader)) return false;
        const auto differences = static_cast<std::uint16_t>((flags & lowFlags) ^ driverFlags);
        if (!AreDifferencesClosed(differences, *run.workspace.options)) return false;
    }
    return !IsReadAgain(node, run);
}

}  // namespace

Status GatherPorts(const Component& component, InputCells& inputs, Owned<Nodelist>& outputs,
                   std::string& errorText) {
    Nodelist* head = nullptr;
    Nodelist** tail = &head;
    bool complete = true;
    for (const Port& port : component.inputs) {
        const SigRecord* newest = port.node ? port.node->signals : nullptr;
        Nodelist* cell = AppendCell(tail, newest ? newest->sigType : port.sigType);
        if (!cell) complete = false;
        if (!complete) break;
        cell->sig = newest ? newest->sig : nullptr;
    }
    inputs.reset(head);
    head = nullptr;
    tail = &head;
    for (const Port& port : component.outputs) {
        if (complete && !AppendCell(tail, port.sigType)) complete = false;
    }
    outputs.reset(head);
    return complete ? Status::Success : OutOfCells(component, errorText);
}

Status StoreOutputs(Component& component, const Workspace& workspace, Owned<Nodelist> outputs,
                    std::string& errorText) {
    Status status = Status::Success;
    const auto refuse = [&](const char* why) {
        AppendPiece(errorText, Concat("ERROR: component '", workspace.name, component.name,
                                      "' left an output ", why));
        status = Status::Error;
    };
    Nodelist* cell = outputs.get();
    for (const Port& port : component.outputs) {
        if (port.node) port.node->FreeSignals();
        if (port.node && cell && cell->sig) {
            const char* fault = nullptr;
            MergeStatus(status, StoreOutput(*cell, *port.node, workspace, errorText, fault));
            if (fault) refuse(fault);
        }
        if (cell) cell = cell->next;
    }
    return status;
}

void ReclaimInputs(const Component& component, const RunState& run) {
    for (const Port& port : component.inputs) {
        if (!port.node || port.node->number == 0) return;
        if (!port.node->drivers.empty() && IsSpent(*port.node, run)) port.node->FreeSignals();
    }
}

void StepComponent(RunState& run) {
    Step step;
    step.component = (*run.list)[run.place];
    Component& reached = *step.component;
    const Doing doing("running the component", reached.name);
    Status own = EvalComponentParams(reached, &run.workspace, run.errorText);
    MergeStatus(own, CheckPorts(reached, run.errorText, run.workspace.name));
    MergeStatus(own, GatherPorts(reached, step.inputs, step.outputs, run.errorText));
    MergeStatus(run.status, own);
    AnnounceComponent(run.workspace, reached);
    const Status model = RunBlock(run, step);
    LogAndMerge(run, reached, model);

    Component& component = *step.component;  // a loop that went round is at its begin block now
    if (run.status != Status::Error) component.runFlags |= runFlag::hasRun;
    step.inputs.reset();
    const Status stored =
        StoreOutputs(component, run.workspace, std::move(step.outputs), run.errorText);
    if (stored != Status::Success) LogAndMerge(run, component, stored);
    MergeStatus(own, model);
    MergeStatus(own, stored);
    MergeStatus(CurrentRun().point, own);
    ReclaimInputs(component, run);
}

}  // namespace photrak
