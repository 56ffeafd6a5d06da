// Where results go and inputs come from when the two are not one folder, and the lock of a folder
// that a run writes into.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace photrak {

/// Writes a file so that nothing half written ever stands under its name: beside it, then renamed.
/// A device that stands there is written into. False with the system's reason; the file is then as
/// it was. Not flushed to the disk: a result can be computed again.
[[nodiscard]] bool WriteFileAtOnce(const std::string& path, std::string_view text,
                                   std::string& reason);
/// Appends; on failure the file has its former length.
[[nodiscard]] bool AppendAtOnce(const std::string& path, std::string_view text,
                                std::string& reason);

/// Inserts `text` before the end of a regular file, which is `end` and begins at byte `at`. On
/// failure the file is as it was.
[[nodiscard]] bool ReplaceEnd(const std::string& path, std::size_t at, std::string_view end,
                              std::string_view text, std::string& reason);

/// While one exists, files to be read are looked for in `folder` (a full path) before the working
/// directory, unless the program has written them there itself since.
class InputFolder {
  public:
    explicit InputFolder(const std::string& folder);
    ~InputFolder();
    InputFolder(const InputFolder&) = delete;
    InputFolder& operator=(const InputFolder&) = delete;
};

/// The lock of the working directory: a file with the process id, held by the open file, so that
/// the lock of a process that was killed holds nobody up. Without permission to make it there is no
/// lock: nothing can be written there either.
class FolderLock {
  public:
    FolderLock();
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;
    /// The process id of the other owner, as its file says; empty if the lock is ours.
    const std::string& Owner() const { return owner_; }

  private:
    int number_ = -1;
    std::string owner_;
};

}  // namespace photrak
