// Where the files of SuperBlocks are, seen from a diagram's directory, and by what name a block
// refers to them.
#pragma once

#include <optional>
#include <string>

#include "kernel/workspace.h"

namespace photrak {

/// The file of that name: relative to the directory, else in the SuperBlock directory. Nothing if
/// neither has it.
std::optional<std::string> FindFromDiagram(const std::string& name, const std::string& directory,
                                           const Catalogue& catalogue);

/// What a block in a diagram of that directory keeps of a definition file: the stem if it finds the
/// very file, else the path without extension, relative to the directory where it can be.
std::string SuperBlockNameOf(const std::string& definition, const std::string& directory,
                             const Catalogue& catalogue);

/// A warning for each SuperBlock whose file, as seen from `former`, is not what its name finds from
/// `directory`.
std::string LostSuperBlocks(const Workspace& workspace, const std::string& former,
                            const std::string& directory, const Catalogue& catalogue);

/// Whether a topology can hold the name: no blank and no colon in it.
bool IsSuperBlockName(const std::string& name);

}  // namespace photrak
