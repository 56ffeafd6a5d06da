// The run of a SuperBlock: its topology is loaded, given copies of the inputs, run within the run
// of which it is a block, and what its Out blocks hold becomes the outputs.
#pragma once

#include <set>
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
    /// What the runs under way share.
    struct Stack {
        std::vector<std::string> open;  // files, outermost first
        const Workspace* outermost = nullptr;
        std::int32_t set = 0;             // which run of it
        bool draws = false;               // it is a statistical one
        std::set<std::string> undrawn{};  // deviations inside that were reported in this run
    };

    Status RunFile(const ModelCall& call, const ModelTable& models, const std::string& file) const;
    Status WarnOfDeviation(const ModelCall& call, const Workspace& inner) const;

    const Catalogue& catalogue_;
    mutable Stack stack_;
};

/// Levels of SuperBlocks below the outermost topology; each takes an escape level.
inline constexpr std::size_t deepestNesting = 12;

/// The models InBlock, which hands the signal of its port on, and OutBlock, which takes it up.
std::vector<ParamSpec> InBlockParamSpecs();
std::vector<ParamSpec> OutBlockParamSpecs();
Status RunInBlock(const ModelCall& call);
Status RunOutBlock(const ModelCall& call);

/// The prefix of result files within a SuperBlock of that name: the outer prefix, the name and the
/// tags of the loops that run outside, each followed by an underscore.
std::string NestedPrefix(const SimOptions& outer, std::string_view name);

/// A file (".top", ".dts") of a SuperBlock that a workspace holds, by the path rule; empty if it is
/// nowhere.
std::string NestedFile(const Component& block, std::string_view extension,
                       const Workspace& workspace, const Catalogue& catalogue);

}  // namespace photrak
