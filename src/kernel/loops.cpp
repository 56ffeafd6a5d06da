// Opening, closing and going round of repetition loops.
#include "kernel/loops.h"

#include <algorithm>

#include "base/log.h"
#include "base/text.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "platform/host.h"

namespace photrak {
namespace {

constexpr const char* notLooping = "ERROR: Loop End encountered when not looping\n";

/// The value of NumReps for the loop preparation: 1 if it never got one or lies outside its limits.
std::int32_t PreparedCount(Component& block, Workspace& workspace) {
    Parameter* parameter = FindParameter("NumReps", block.parameters);
    if (!parameter) return 1;
    std::string scratch;
    (void)EvalParam(parameter, &workspace, scratch);
    if (!parameter->valactual || parameter->type != IntType) return 1;
    const std::int32_t count = *static_cast<const std::int32_t*>(parameter->valactual);
    const auto* least = static_cast<const std::int32_t*>(parameter->min);
    const auto* greatest = static_cast<const std::int32_t*>(parameter->max);
    if ((!least || count >= *least) && (!greatest || count <= *greatest)) return count;
    const std::string text = Concat("\nWARNING: number of loop repetitions for component '",
                                    workspace.name, block.name, "' outside limits.\n");
    LogText(text);
    CurrentHost().messages->ShowWarnings({}, text);
    return 1;
}

/// Tells the result writers where the run stands: the innermost loop, and a name over all of them.
void SetLoopCoordinates(RunState& run) {
    SimOptions& options = *run.workspace.options;
    options.loopReps = run.frames.empty() ? 0 : run.frames.back().reps;
    options.loopIndex = run.frames.empty() ? 0 : run.frames.back().begin->iteration;
    options.loopSuffix.clear();
    for (const LoopFrame& frame : run.frames) {
        AppendPiece(options.loopSuffix, GetParamText(frame.begin->parameters, "Name", ""));
        AppendPiece(options.loopSuffix, frame.rep);
    }
}

Status FailCopy(const RunState& run, const Component& component) {
    AppendPiece(run.errorText, Concat("ERROR: out of memory copying the signals of component '",
                                      run.workspace.name, component.name, "'\n"));
    return Status::Error;
}

/// Deep copies of the inputs, port by port; a port without a signal copies nothing.
Status CopyThrough(const RunState& run, Step& step) {
    Nodelist* output = step.outputs.get();
    for (const Nodelist* input = step.inputs.get(); input && output; input = input->next) {
        if (input->sig) {
            if (CopySignal(&output->sig, input->sig, input->sigType) != 0) {
                return FailCopy(run, *step.component);
            }
            output->sigType = input->sigType;
        }
        output = output->next;
    }
    return Status::Success;
}

bool StandsInList(const RunState& run, const LoopFrame& frame) {
    return frame.place < run.list->size() && (*run.list)[frame.place] == frame.begin;
}

/// Types that may stand on the two ends of a loop's way back.
bool AreLoopTypesCompatible(std::int32_t a, std::int32_t b) {
    if (a == b) return true;
    if (a > b) std::swap(a, b);
    if (a == OpSigType || a == ElecSigType) return b == OpOrElecSigType || b == UnknownSigType;
    return a == BinSigType && b == UnknownSigType;
}

Status ComparePorts(const Nodelist* atEnd, const Nodelist* atBegin, std::string& errorText) {
    for (; atEnd && atBegin; atEnd = atEnd->next, atBegin = atBegin->next) {
        if (AreLoopTypesCompatible(atEnd->sigType, atBegin->sigType)) continue;
        errorText += "ERROR: Loop End port signal types do not match Loop Begin signal types\n";
        return Status::Error;
    }
    if (!atEnd && !atBegin) return Status::Success;
    errorText += "Loop End port count does not match Loop Begin port count\n";
    return Status::Error;
}

/// Moves the signals from the nodes before the end block into the begin block's cells. Two ports on
/// one node share a signal: the first takes it, the second a copy.
Status MoveSignals(RunState& run, Step& step, Nodelist* target) {
    Nodelist* cell = step.inputs.get();
    for (const Port& port : step.component->inputs) {
        if (!cell || !target) break;
        SigRecord* newest = port.node ? port.node->signals : nullptr;
        if (newest && newest->sig == cell->sig) {
            target->sig = newest->sig;
            newest->sig = nullptr;
        } else if (CopySignal(&target->sig, cell->sig, cell->sigType) != 0) {
            return FailCopy(run, *step.component);
        }
        if (cell->sig) target->sigType = cell->sigType;
        if (port.node) port.node->FreeSignals();
        cell = cell->next;
        target = target->next;
    }
    return Status::Success;
}

/// The next repetition: from here on the step is the begin block's.
Status GoRound(RunState& run, Step& step) {
    LoopFrame& frame = run.frames.back();
    InputCells unused;
    Owned<Nodelist> outputs;
    Status status = GatherPorts(*frame.begin, unused, outputs, run.errorText);
    if (status == Status::Success) {
        status = ComparePorts(step.inputs.get(), outputs.get(), run.errorText);
    }
    if (status == Status::Success) status = MoveSignals(run, step, outputs.get());
    if (status != Status::Success) return status;
    status = StoreOutputs(*step.component, run.workspace, std::move(step.outputs), run.errorText);
    for (std::size_t place = frame.place; place <= run.place; ++place) {
        (*run.list)[place]->runFlags &= static_cast<std::uint16_t>(~runFlag::hasRun);
    }
    ++frame.rep;
    ++frame.begin->iteration;
    SetLoopCoordinates(run);
    run.place = frame.place;
    step.component = frame.begin;
    step.inputs.reset();
    step.outputs = std::move(outputs);
    return status;
}

}  // namespace

void PrepareLoopCounts(const RunOrder& order, Workspace& workspace) {
    std::vector<std::int32_t> counts;
    for (Component* component : order) {
        if (component->type == loopBeginType) {
            counts.push_back(PreparedCount(*component, workspace));
            component->reps = counts.back();
        } else if (component->type == loopEndType && !counts.empty()) {
            component->reps = counts.back();
            counts.pop_back();
        }
    }
}

Status BeginLoop(RunState& run, Step& step) {
    LoopFrame frame;
    frame.reps = GetParamInt(step.component->parameters, "NumReps", 1);
    frame.begin = step.component;
    frame.place = run.place;
    run.frames.push_back(frame);
    ++step.component->iteration;
    SetLoopCoordinates(run);
    return CopyThrough(run, step);
}

Status EndLoop(RunState& run, Step& step) {
    // A frame that an earlier list left open has no place to go back to in this one.
    if (run.frames.empty() || !StandsInList(run, run.frames.back())) {
        run.errorText += notLooping;
        return Status::Error;
    }
    const LoopFrame& frame = run.frames.back();
    if (frame.rep < frame.reps) return GoRound(run, step);
    // By design: with no repetition asked for the loop neither goes round nor ends, and
    // nothing leaves it.
    if (frame.rep > frame.reps) return Status::Success;
    const Status status = CopyThrough(run, step);
    run.frames.pop_back();
    SetLoopCoordinates(run);
    return status;
}

bool IsReadAgain(const Node& node, const RunState& run) {
    const auto again = std::find_if(run.frames.begin(), run.frames.end(), [&](const LoopFrame& f) {
        return f.rep < f.reps && StandsInList(run, f);
    });
    if (again == run.frames.end()) return false;
    // The frames stand in the order of the list: the outermost that goes round reaches back
    // farthest.
    return std::any_of(node.readers.begin(), node.readers.end(), [&](const Component* reader) {
        return reader->place > again->place && reader->place < run.list->size() &&
               (*run.list)[reader->place] == reader;
    });
}

}  // namespace photrak
