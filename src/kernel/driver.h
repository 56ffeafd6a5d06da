// The run of a workspace from outside: what the driver may call, and the entry points.
#pragma once

#include <span>
#include <vector>

#include "base/status.h"
#include "kernel/order.h"
#include "kernel/param_table.h"
#include "kernel/simulate.h"

namespace photrak {

/// What a model gets for one execution. It fails through Refuse, Fail and Warn of the report.
struct ModelCall : ModelReport {
    Workspace& workspace;
    Component& component;
    SimOptions& options;
    Nodelist* inputs;   // one cell per input port, sig borrowed from its node
    Nodelist* outputs;  // one cell per output port, sig empty: the model stores and hands over
};

struct ModelEntry {
    std::string_view type;
    Status (*run)(const ModelCall& call);
    std::vector<ParamSpec> (*params)() = nullptr;  // all rows of its tables
};

/// User models, searched after the built-in ones. Supplied from above the files.
struct UserModels {
    virtual ~UserModels() = default;
    virtual bool Knows(std::string_view type) const = 0;
    virtual Status Run(const ModelCall& call) const = 0;
};

struct ModelTable;
class ScanPoints;

/// Runs a block of type SuperBlock, whose model is a topology. Supplied from above the files.
struct NestedRuns {
    virtual ~NestedRuns() = default;
    virtual Status Run(const ModelCall& call, const ModelTable& models) const = 0;
};

/// What the driver may call: handed down from above. Searched in order, the first match is called.
struct ModelTable {
    std::span<const ModelEntry> entries;
    const UserModels* userModels = nullptr;  // may be null
    const NestedRuns* nestedRuns = nullptr;  // may be null
    ScanPoints* points = nullptr;            // of a scan shared among processes; may be null
};

/// Calls the component's model. An unknown type gives an error, and so does any exception of a
/// model but the escape.
Status DispatchModel(const ModelTable& models, const ModelCall& call);

}  // namespace photrak
