// The run: orders the components, calls each model over the signals on its nodes, stores what it
// made and reclaims what nobody needs any more.
#pragma once

#include <span>

#include "base/status.h"
#include "kernel/order.h"

namespace photrak {

/// What a model gets for one execution.
struct ModelCall {
    Workspace& workspace;
    Component& component;
    SimOptions& options;
    Nodelist* inputs;   // one cell per input port, sig borrowed from its node
    Nodelist* outputs;  // one cell per output port, sig empty: the model stores and hands over
    std::string& errorText;
};

struct ModelEntry {
    std::string_view type;
    Status (*run)(const ModelCall& call);
};

/// User models, searched after the built-in ones. Supplied from above the files.
struct UserModels {
    virtual ~UserModels() = default;
    virtual bool Knows(std::string_view type) const = 0;
    virtual Status Run(const ModelCall& call) const = 0;
};

/// What the driver may call: handed down from above. Searched in order, the first match is called.
struct ModelTable {
    std::span<const ModelEntry> entries;
    const UserModels* userModels = nullptr;  // may be null
};

/// Calls the component's model. An unknown type gives an error.
Status DispatchModel(const ModelTable& models, const ModelCall& call);

/// Clears the stop request, runs the workspace with an empty error text and returns its status. The
/// error text of the run is left in workspace->errorText.
Status RunSimulation(Workspace* workspace, const ModelTable& models);
/// The whole run. Error: the box has been shown. Nothing is thrown past it.
Status Simulate(Workspace* workspace, const ModelTable& models, std::string& errorText);

/// The per-component step: evaluate, check, run, log, store, reclaim.
struct StepContext {
    Workspace& workspace;
    const ModelTable& models;
    std::string& errorText;
    Status& status;      // the run's
    std::uint16_t mask;  // of the present pass: 1, 2, 4 or 8
};

/// Lists of port cells for a component; an error when memory is exhausted.
Status GatherPorts(Component& component, Owned<Nodelist>& outputs, Nodelist** inputs);
/// Moves the cells' signals onto the output nodes; what stood there is deleted. Frees the cells.
Status StoreOutputs(Component& component, std::int32_t loopIteration, const SimOptions& options,
                    Nodelist* outputs);

}  // namespace photrak
