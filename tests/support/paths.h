// Where the tests find the tree and what was built from it.
#pragma once

#include <string>

namespace photrak {

/// Top of the source tree, without a slash at the end.
std::string SourceDir();
/// Top of the build folder, likewise.
std::string BinaryDir();

}  // namespace photrak
