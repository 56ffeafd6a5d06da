// A folder for what a command needs in passing.
#pragma once

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace photrak {

/// A folder that goes away with all that is in it; it is made by whoever writes there first.
class ScratchFolder {
  public:
    explicit ScratchFolder(std::string path) : path_(std::move(path)) {}
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    const std::string& Path() const { return path_; }

  private:
    std::string path_;
};

/// A folder beside other users' temporary files, open to us alone and under a name that nobody
/// foresees. Throws std::system_error where none can be made.
inline ScratchFolder PrivateFolder(std::string_view word) {
    std::string path = std::filesystem::temp_directory_path().string();
    path.append("/photrak-").append(word).append("-XXXXXX");
    if (!::mkdtemp(path.data()))
        throw std::system_error(errno, std::generic_category(), "no folder '" + path + "'");
    return ScratchFolder(std::move(path));
}

}  // namespace photrak
