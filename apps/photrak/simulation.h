// What the run and the scan command share: from the topology file to the list of results.
#pragma once

#include <string_view>

#include "photrak/options.h"

namespace photrak {

struct SimulationKind {
    std::string_view name;  // as the log calls it
    /// Sets up mode, sweeps and names from the command line.
    void (*prepare)(SimOptions& simOptions, const CommandOptions& options);
};

/// Loads the topology, simulates it, lists its results. Gives the exit status.
int SimulateTopology(const CommandOptions& options, const SimulationKind& kind);

}  // namespace photrak
