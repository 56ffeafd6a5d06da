// What can be known of a shared library before its code is taken into the process.
#pragma once

#include <string>

namespace photrak {

/// Why the file cannot be loaded: it is missing, no regular file, no shared library for this kind
/// of machine, or cut short, which would end the process later; empty if its headers are in order.
std::string LibraryFault(const std::string& path);

/// Why code of the file should not be run unasked: it belongs to somebody else, or somebody else
/// can write it; empty for a file of this user or of the system.
std::string LibraryDoubt(const std::string& path);

}  // namespace photrak
