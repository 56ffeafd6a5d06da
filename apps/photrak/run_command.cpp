// photrak run: the Go command without a display.

#include "kernel/sweep_settings.h"
#include "photrak/commands.h"
#include "photrak/memory_limit.h"
#include "photrak/simulation.h"

namespace photrak {
namespace {

void PrepareRun(SimOptions& simOptions, const CommandOptions& options) {
    AskForSimulation(simOptions);
    if (options.prefix) simOptions.OUTPUTPREFIX = *options.prefix;
}

}  // namespace

int RunCommand(const CommandOptions& options) {
    const SimulationKind kind{"Simulation", PrepareRun};
    if (const auto refused = RefuseByMemory(options, kind)) return *refused;
    return SimulateTopology(options, kind);
}

}  // namespace photrak
