// A fresh directory that is the working directory for as long as a scope lasts and then goes away
// with everything in it.
#pragma once

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"

namespace photrak {

class TempDir {
  public:
    TempDir() : former_(std::filesystem::current_path()) {
        std::string name = (std::filesystem::temp_directory_path() / "photrak-XXXXXX").string();
        if (!::mkdtemp(name.data()))
            throw std::filesystem::filesystem_error(
                "mkdtemp", std::error_code(errno, std::generic_category()));
        path_ = name + "/";
        std::filesystem::current_path(name);
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::current_path(former_, ignored);
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    /// With the last separator.
    const std::string& Path() const { return path_; }

    /// Writes a file, making directories on the way, and gives its full path.
    std::string Write(const std::string& name, std::string_view text) const {
        const std::string path = path_ + name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        EXPECT_TRUE(WriteWholeFile(path, text)) << path;
        return path;
    }
    /// The text of a file; an empty text, and no failure, if it is not there.
    std::string Read(const std::string& name) const {
        std::string text, error;
        return ReadWholeFile(path_ + name, text, error) ? text : std::string();
    }
    bool Has(const std::string& name) const { return std::filesystem::exists(path_ + name); }
    /// Names of all files below the directory, sorted.
    std::vector<std::string> Files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path_)) {
            if (!entry.is_directory()) names.push_back(entry.path().string().substr(path_.size()));
        }
        std::sort(names.begin(), names.end());
        return names;
    }

  private:
    std::filesystem::path former_;
    std::string path_;
};

}  // namespace photrak
