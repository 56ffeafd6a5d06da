// The catalogue in words, for a user who sets a block by hand.
#pragma once

#include <string>

#include "kernel/workspace.h"

namespace photrak {

/// All that a user needs to set a block: what the model is for, its ports, and each parameter with
/// type, default, limits, units or words, and description.
std::string DescribeModel(const Component& prototype);
/// A block of the model for a topology: wired to nothing yet (node 0), every parameter at its
/// default.
std::string BlockOf(const Component& prototype);
/// The models by category, each with its note.
std::string ListModels(const Catalogue& catalogue);

}  // namespace photrak
