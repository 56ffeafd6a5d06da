// A small link whose blocks add a number of theirs, for sweeps, statistical runs and pass lists.
#pragma once

#include <string>
#include <vector>

#include "kernel/sweep_settings.h"
#include "support/small_link.h"

namespace photrak {

struct SweepLink : SmallLink {
    explicit SweepLink(std::size_t loopPorts = 1) {
        LoopModels(loopPorts);
        models.byType["Step"] = [](const ModelCall& call) {
            return Emit(call.outputs, ValueOf(call.inputs) + Number(call.component));
        };
    }

    static double Number(const Component& component) {
        return GetParamDouble(component.parameters, "number", 1);
    }
    SimOptions& Options() const { return *workspace->options; }
    void Sweep(const SweepFields& fields, const std::string& name, const std::string& start,
               const std::string& stop, const std::string& step) const {
        Options().*fields.variable = name;
        Options().*fields.start = start;
        Options().*fields.stop = stop;
        Options().*fields.step = step;
    }
    template <class... Texts>
    void Outer(const Texts&... texts) const {
        Sweep(outerSweepFields, texts...);
    }
    template <class... Texts>
    void Inner(const Texts&... texts) const {
        Sweep(innerSweepFields, texts...);
    }
    Status Scan() {
        AskForScan(Options());
        return Run();
    }
    /// How often each component ran, in the order of `names`.
    std::vector<long> RunsOf(const std::vector<std::string>& names) const {
        std::vector<long> counts;
        for (const std::string& name : names) {
            counts.push_back(std::count(models.calls.begin(), models.calls.end(), name));
        }
        return counts;
    }
};

/// Where a run stands, as "outer inner run".
inline std::string Coordinates(const SimOptions& options) {
    return Concat(options.outerIndex, " ", options.innerIndex, " ", options.runIndex);
}

}  // namespace photrak
