// What the run and the scan command share: from the topology file to the list of results.
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "kernel/run_record.h"
#include "photrak/options.h"
#include "photrak/session.h"

namespace photrak {

struct Session;
struct SharedScan;

struct SimulationKind {
    std::string_view name;  // as the log calls it
    /// Sets up mode, sweeps and names from the command line.
    void (*prepare)(SimOptions& simOptions, const CommandOptions& options);
    /// Of a scan that is shared among processes: which points this one runs. May be empty.
    std::function<std::unique_ptr<SharedScan>(const Session& session,
                                              const CommandOptions& options)>
        points = {};
    /// Changes the loaded topology before it runs. May be empty.
    std::function<void(Workspace& workspace)> adapt = {};
};

/// What a command does with a run beyond its results.
class RunGuest : public RunObserver {
  public:
    /// Before the run; false after a report if there is nothing to do.
    virtual bool Begin(const Session& session) = 0;
    /// When the run has ended well; false after a report if something is missing.
    virtual bool End() = 0;
    /// What was found, after the list of results.
    virtual void Tell() const = 0;
};

/// Loads the topology, simulates it, lists its results. Gives the exit status.
int SimulateTopology(const CommandOptions& options, const SimulationKind& kind,
                     RunGuest* guest = nullptr);

}  // namespace photrak
