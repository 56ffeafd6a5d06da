// photrak run: the Go command without a display.

#include "kernel/sweep_settings.h"
#include "photrak/commands.h"
#include "photrak/simulation.h"

namespace photrak {
namespace {

void PrepareRun(SimOptions& simOptions, const CommandOptions& options) {
    AskForSimulation(simOptions);
    if (options.prefix) simOptions.OUTPUTPREFIX = *options.prefix;
}

}  // namespace

int RunCommand(const CommandOptions& options) {
    return SimulateTopology(options, {"Simulation", PrepareRun});
}

}  // namespace photrak
