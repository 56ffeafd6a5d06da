// Names of files made whole: from the root, and with links resolved. A shortage of memory on the
// way is noted, since the library's own functions tell it by an error number only.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace photrak {

/// The name as it holds in every folder, links kept; as it stands where that cannot be known. An
/// empty name stays empty.
std::string FullPath(const std::string& path);

/// Where a path leads from the root, links resolved as far as it is there. Where that cannot be
/// known `failed` tells why, and the path is the full one without its dots.
std::filesystem::path ResolvedPath(const std::filesystem::path& path, std::error_code& failed);
std::string ResolvedPath(const std::string& path);

}  // namespace photrak
