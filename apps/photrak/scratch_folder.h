// A folder for what a command needs in passing.
#pragma once

#include <filesystem>
#include <string>
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

}  // namespace photrak
