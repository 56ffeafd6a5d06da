// The ready SuperBlocks in words: which there are, and what one is made of.
#pragma once

#include <optional>
#include <string>

#include "kernel/workspace.h"

namespace photrak {

/// "SuperBlock:STEM" with the note of its topology, for each definition in the SuperBlock
/// directory, by name; empty if there is none.
std::string ListSuperBlocks(const Catalogue& catalogue);

/// Ports and parameters as for a model, then the blocks inside by their path
/// ("AmplifiedSpan:Fiber") through all levels. Nothing, with a text, if the path rule finds no
/// definition or it is faulty.
std::optional<std::string> DescribeSuperBlock(const std::string& stem, const Catalogue& catalogue,
                                              std::string& errorText);

}  // namespace photrak
