// One step of a run: evaluate a component, check it, run its model, log, store what it made,
// reclaim what nobody needs any more. The walk over a list of components is in kernel/passes.h.
#pragma once

#include "kernel/driver.h"

namespace photrak {

/// An open repetition loop.
struct LoopFrame {
    std::int32_t rep = 1, reps = 1;  // present repetition, from 1, and the number asked for
    Component* begin = nullptr;      // its LoopBeginBlock
    std::size_t place = 0;           // of the block in the list being walked
};

/// Where a run stands.
struct RunState {
    RunState(Workspace& ofRun, const ModelTable& handedDown, std::string& text)
        : workspace(ofRun), models(handedDown), errorText(text) {}

    Workspace& workspace;
    const ModelTable& models;
    std::string& errorText;
    Status status = Status::Success;        // of the run so far
    std::uint16_t mask = runFlag::ordered;  // of the present pass: 1, 2, 4 or 8
    const RunOrder* list = nullptr;         // being walked
    std::size_t place = 0;                  // of the present component in it
    std::vector<LoopFrame> frames;          // outermost first

    bool MustEnd() const { return status == Status::Error || workspace.options->stop != 0; }
};

/// Cells of input ports: their signals belong to the nodes.
struct CellsDeleter {
    void operator()(Nodelist* p) const { FreeNodelistCells(&p); }
};
using InputCells = std::unique_ptr<Nodelist, CellsDeleter>;

/// The component of a step with its ports. A loop that goes round changes the component under way.
struct Step {
    Component* component = nullptr;
    InputCells inputs;
    Owned<Nodelist> outputs;
};

/// Runs the component at run.place; the loop blocks move run.place.
void StepComponent(RunState& run);

/// Lists of port cells for a component; an error when memory is exhausted.
Status GatherPorts(const Component& component, InputCells& inputs, Owned<Nodelist>& outputs,
                   std::string& errorText);
/// Moves the cells' signals onto the output nodes; what stood there is deleted.
Status StoreOutputs(Component& component, const Workspace& workspace, Owned<Nodelist> outputs,
                    std::string& errorText);
/// Frees the signals on the component's input nodes that nothing in this run will read again.
void ReclaimInputs(const Component& component, const RunState& run);

}  // namespace photrak
