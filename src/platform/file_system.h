// Whole files in and out. Readers get a text in memory; writers hand over a whole text, and what
// must survive a crash is written beside its target, flushed and renamed.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace photrak {

inline constexpr std::size_t maxInputFileBytes = std::size_t{1} << 30;

/// Reads a regular file of at most `limit` bytes. False with a reason in `error` ("No such file or
/// directory", "is not a regular file", "is larger than ...").
[[nodiscard]] bool ReadWholeFile(const std::string& path, std::string& text, std::string& error,
                                 std::size_t limit = maxInputFileBytes);
/// Reads what stands after byte `from` of a regular file, all of it where the file has become
/// shorter than that; only the end of it, about `most` bytes, where `isCut`. Follows no link. False
/// with a reason in `error`.
[[nodiscard]] bool ReadFileEnd(const std::string& path, std::size_t from, std::size_t most,
                               std::string& text, bool& isCut, std::string& error);
/// Appends the names of what lies in a folder, in no order; false with a reason in `error`.
/// By design: not by the iterators of the standard library, which touch what is not theirs when
/// memory runs out under them.
[[nodiscard]] bool ListFolder(const std::string& path, std::vector<std::string>& names,
                              std::string& error);
/// Creates or truncates; false when it cannot be opened or written whole.
[[nodiscard]] bool WriteWholeFile(const std::string& path, std::string_view text);
/// Opens for appending, writes, closes. False for a symbolic link, which is not followed.
[[nodiscard]] bool AppendToFile(const std::string& path, std::string_view text);
/// True if the file itself, or a folder on the way to it, is a symbolic link.
[[nodiscard]] bool IsBehindLink(const std::string& path);
/// Writes a temporary file in the same directory, flushes it to the disk, renames it over `path`.
/// On failure the target is as it was and no temporary stays.
[[nodiscard]] bool ReplaceFile(const std::string& path, std::string_view text);
[[nodiscard]] bool CopyWholeFile(const std::string& from, const std::string& to);
bool FileExists(const std::string& path);

/// Directory of the running executable, with the last separator.
std::string ExecutableDirectory();
/// Changes the working directory for as long as a scope lasts.
class WorkingDirectory {
  public:
    explicit WorkingDirectory(const std::string& path);
    ~WorkingDirectory();
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;
    bool Failed() const { return !reason_.empty(); }
    /// Why it failed, in the system's words.
    const std::string& Reason() const { return reason_; }

  private:
    std::string former_, reason_;
};

}  // namespace photrak
