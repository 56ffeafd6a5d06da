// The run of a SuperBlock: its topology is loaded, given copies of the inputs, run within the run
// of which it is a block, and what its Out blocks hold becomes the outputs.
#pragma once

#include <string>
#include <vector>

#include "kernel/driver.h"

namespace photrak {

class SuperBlockRuns : public NestedRuns {
  public:
    /// The catalogue is borrowed.
    explicit SuperBlockRuns(const Catalogue& catalogue) : catalogue_(catalogue) {}
    /// Loads the topology anew for each execution. Faults name blocks by their path
    /// ("Link:Span:Fiber").
    Status Run(const ModelCall& call, const ModelTable& models) const override;

  private:
    Status RunFile(const ModelCall& call, const ModelTable& models, const std::string& file) const;

    const Catalogue& catalogue_;
    mutable std::vector<std::string> open_;  // files of the runs under way, outermost first
};

/// The models InBlock, which hands the signal of its port on, and OutBlock, which takes it up.
std::vector<ParamSpec> InBlockParamSpecs();
std::vector<ParamSpec> OutBlockParamSpecs();
Status RunInBlock(const ModelCall& call);
Status RunOutBlock(const ModelCall& call);

/// The prefix of result files within a SuperBlock of that name: the outer prefix, the name and the
/// tags of the loops that run outside, each followed by an underscore.
std::string NestedPrefix(const SimOptions& outer, std::string_view name);

/// The topology of a SuperBlock that a workspace holds, by the path rule; empty if it is nowhere.
std::string NestedTopology(const Component& block, const Workspace& workspace,
                           const Catalogue& catalogue);

}  // namespace photrak
