// The only file that is compiled with the folders' names in it.
#include "support/paths.h"

namespace photrak {

std::string SourceDir() {
    return PHOTRAK_SOURCE_DIR;
}

std::string BinaryDir() {
    return PHOTRAK_BINARY_DIR;
}

}  // namespace photrak
