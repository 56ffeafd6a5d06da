// Blocks whose result files would take each other's place, or that of a file which the link reads.
#pragma once

#include <string>

#include "files/load_finding.h"
#include "kernel/workspace.h"

namespace photrak {

/// Results go into the working directory; files are read from `inputFolder`, empty for the same.
/// A finding for each block that writes the files of a block before it, and for each SaveSigBlock
/// onto the file of a LoadSigBlock; `place` is left empty, `typed` is the block's name. Blocks that
/// are set to write nothing are passed over. Names are compared as paths with
/// links resolved.
LoadFindings FindResultClashes(const Workspace& workspace, const std::string& inputFolder = {});

}  // namespace photrak
