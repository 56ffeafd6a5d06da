#include "platform/full_path.h"

#include "platform/memory_shortage.h"

namespace photrak {

std::string FullPath(const std::string& path) {
    std::error_code failed;
    const std::filesystem::path full = std::filesystem::absolute(path, failed);
    NoteIfShortage(failed.value());
    return failed || path.empty() ? path : full.string();
}

std::filesystem::path ResolvedPath(const std::filesystem::path& path, std::error_code& failed) {
    const std::filesystem::path full = std::filesystem::absolute(path, failed);
    NoteIfShortage(failed.value());
    if (failed) return path.lexically_normal();
    std::filesystem::path whole = std::filesystem::weakly_canonical(full, failed);
    NoteIfShortage(failed.value());
    return failed ? full.lexically_normal() : whole;
}

std::string ResolvedPath(const std::string& path) {
    std::error_code failed;
    return ResolvedPath(std::filesystem::path(path), failed).string();
}

}  // namespace photrak
