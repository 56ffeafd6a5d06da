// Files by way of POSIX calls. Only regular files are read: a device or a FIFO named in a topology
// must neither hang the program nor feed it without end.
#include "platform/file_system.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <new>
#include <set>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "platform/descriptor.h"
#include "platform/memory_shortage.h"
#include "platform/result_folder.h"
#include "platform/temporary_name.h"

namespace photrak {
namespace {

/// The folder of InputFolder, and what the program has written beside it since.
struct InputSearch {
    std::string folder;
    std::set<std::string> written;
};
InputSearch& CurrentInputs() {
    static InputSearch search;
    return search;
}

void NoteWritten(const std::string& path) {
    if (!CurrentInputs().folder.empty()) CurrentInputs().written.insert(path);
}

/// Where a file to be read is.
std::string Found(const std::string& path) {
    const InputSearch& search = CurrentInputs();
    if (search.folder.empty() || !IsUsablePath(path) || path.front() == '/') return path;
    if (search.written.contains(path)) return path;
    std::string beside = search.folder;
    beside.append("/").append(path);
    struct stat info {};
    return ::stat(beside.c_str(), &info) == 0 ? beside : path;
}

bool WriteWith(const std::string& path, std::string_view text, int flags) {
    const Doing doing("writing", path);
    Descriptor file(OpenFile(path, O_WRONLY | O_CREAT | flags));
    if (!file.Valid()) return false;
    const bool written = WriteAll(file.Number(), text);
    return file.Close() && written;
}

/// Reads to the end, `limit` bytes at most: the file may grow while it is read, and files of the
/// system claim a size of 0.
bool ReadAll(int number, std::size_t sizeHint, std::size_t limit, std::string& text) {
    constexpr std::size_t chunk = std::size_t{1} << 16;
    std::size_t length = 0;
    text.resize(sizeHint + 1);
    for (;;) {
        if (length == text.size()) text.resize(length + chunk);
        const ssize_t got = ::read(number, text.data() + length, text.size() - length);
        if (got == 0) break;
        if (got < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        length += static_cast<std::size_t>(got);
        if (length > limit) {
            errno = EFBIG;
            return false;
        }
    }
    text.resize(length);
    return true;
}

std::string DirectoryOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

/// Follows links at the end of the path, so that a save replaces the file and not the link to it.
/// False on a cycle of links.
bool FollowLinks(std::string& path) {
    constexpr int maxLinks = 40;
    std::array<char, PATH_MAX> target{};
    for (int i = 0; i < maxLinks; ++i) {
        const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
        if (length < 0) return true;  // no link, or nothing there
        const std::string name(target.data(), static_cast<std::size_t>(length));
        path = (name.starts_with('/') ? std::string() : DirectoryOf(path)).append(name);
    }
    return false;
}

/// A new file beside the target; its name is short, so that a long target name still fits.
int CreateTemporary(const std::string& directory, std::string& name) {
    constexpr int attempts = 1000;
    static std::atomic<unsigned> counter = 0;  // a run writes beside the interface
    std::string stem = directory;
    stem.append(TemporaryStem());
    for (int i = 0; i < attempts; ++i) {
        name = stem;
        name.append("-").append(std::to_string(++counter)).append(temporaryEnd);
        const int number = OpenFile(name, O_WRONLY | O_CREAT | O_EXCL);
        if (number >= 0 || errno != EEXIST) return number;
    }
    return -1;
}

/// The replaced file hands its owner and mode to the new one; a foreign owner cannot always be
/// kept.
bool KeepOwnerAndMode(int number, const struct stat& former) {
    [[maybe_unused]] const int ignored = ::fchown(number, former.st_uid, former.st_gid);
    return ::fchmod(number, former.st_mode & 07777) == 0;
}

void FlushDirectory(const std::string& directory) {
    const Descriptor folder(OpenFile(directory.empty() ? "." : directory, O_RDONLY | O_DIRECTORY));
    if (folder.Valid()) ::fsync(folder.Number());
}

}  // namespace

bool ReadWholeFile(const std::string& path, std::string& text, std::string& error,
                   std::size_t limit) {
    const Doing doing("reading", path);
    text.clear();
    const Descriptor file(OpenFile(Found(path), O_RDONLY));
    struct stat info {};
    if (!file.Valid() || ::fstat(file.Number(), &info) != 0) {
        error = std::strerror(errno);
        return false;
    }
    if (!S_ISREG(info.st_mode)) {
        error = "is not a regular file";
        return false;
    }
    const auto size = static_cast<std::size_t>(info.st_size);
    const std::string tooLarge = "is larger than " + std::to_string(limit) + " bytes";
    if (size > limit) {
        error = tooLarge;
        return false;
    }
    try {
        if (ReadAll(file.Number(), size, limit, text)) return true;
        error = errno == EFBIG ? tooLarge : std::strerror(errno);
    } catch (const std::bad_alloc&) {
        error = "does not fit in memory";
    }
    text.clear();
    return false;
}

bool ReadFileEnd(const std::string& path, std::size_t from, std::size_t most, std::string& text,
                 bool& isCut, std::string& error) {
    const Doing doing("reading", path);
    const Descriptor file(OpenFile(path, O_RDONLY | O_NOFOLLOW));
    struct stat info {};
    error = "is not a regular file";
    const bool isKnown = file.Valid() && ::fstat(file.Number(), &info) == 0;
    if (!isKnown) error = std::strerror(errno);
    if (!isKnown || !S_ISREG(info.st_mode)) return false;
    const auto size = static_cast<std::size_t>(info.st_size);
    if (from > size) from = 0;
    isCut = size - from > most;
    const std::size_t start = isCut ? size - most : from;
    if (::lseek(file.Number(), static_cast<off_t>(start), SEEK_SET) >= 0 &&
        ReadAll(file.Number(), size - start, maxInputFileBytes, text))
        return true;
    error = std::strerror(errno);
    text.clear();
    return false;
}

bool ListFolder(const std::string& path, std::vector<std::string>& names, std::string& error) {
    const Doing doing("listing", path);
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(
        IsUsablePath(path) ? ::opendir(path.c_str()) : nullptr, ::closedir);
    if (!folder) {
        NoteIfShortage(errno);
        error = std::strerror(errno);
        return false;
    }
    errno = 0;
    while (const dirent* entry = ::readdir(folder.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") names.emplace_back(name);
        errno = 0;
    }
    NoteIfShortage(errno);
    if (errno != 0) error = std::strerror(errno);
    return errno == 0;
}

bool WriteWholeFile(const std::string& path, std::string_view text) {
    return WriteWith(path, text, O_TRUNC);
}

bool AppendToFile(const std::string& path, std::string_view text) {
    return WriteWith(path, text, O_APPEND | O_NOFOLLOW);
}

bool IsBehindLink(const std::string& path) {
    if (!IsUsablePath(path)) return false;
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        struct stat info {};
        const std::string part = path.substr(0, end);
        if (::lstat(part.c_str(), &info) == 0 && S_ISLNK(info.st_mode)) return true;
        if (end == std::string::npos) return false;
    }
}

namespace {

enum class Durability { Flushed, Computable };

bool Replace(const std::string& path, std::string_view text, Durability durability) {
    const Doing doing("writing", path);
    std::string target = path;
    errno = ENOENT;
    if (!IsUsablePath(path) || !FollowLinks(target)) return false;
    struct stat former {};
    const bool exists = ::stat(target.c_str(), &former) == 0;
    // A rename asks for no leave of the file that it replaces: a write-protected one stays.
    if (exists && !S_ISREG(former.st_mode)) errno = EINVAL;
    if (exists && (!S_ISREG(former.st_mode) || ::access(target.c_str(), W_OK) != 0)) return false;
    const bool flushes = durability == Durability::Flushed;

    const std::string directory = DirectoryOf(target);
    std::string temporary;
    Descriptor file(CreateTemporary(directory, temporary));
    if (!file.Valid()) return false;
    const bool whole = WriteAll(file.Number(), text) &&
                       (!exists || KeepOwnerAndMode(file.Number(), former)) &&
                       (!flushes || ::fsync(file.Number()) == 0);
    int failure = errno;
    if (file.Close() && whole && ::rename(temporary.c_str(), target.c_str()) == 0) {
        if (flushes) FlushDirectory(directory);
        NoteWritten(path);
        return true;
    }
    if (whole) failure = errno;
    ::unlink(temporary.c_str());
    errno = failure;
    return false;
}

bool IsDevice(const std::string& path) {
    struct stat info {};
    return IsUsablePath(path) && ::stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode) &&
           !S_ISDIR(info.st_mode);
}

}  // namespace

bool ReplaceFile(const std::string& path, std::string_view text) {
    return Replace(path, text, Durability::Flushed);
}

bool WriteFileAtOnce(const std::string& path, std::string_view text, std::string& reason) {
    errno = 0;
    const bool written = IsDevice(path) ? WriteWith(path, text, O_TRUNC)
                                        : Replace(path, text, Durability::Computable);
    if (!written) reason = std::strerror(errno);
    return written;
}

bool AppendAtOnce(const std::string& path, std::string_view text, std::string& reason) {
    errno = 0;
    Descriptor file(OpenFile(path, O_WRONLY | O_CREAT | O_APPEND));
    struct stat former {};
    if (!file.Valid() || ::fstat(file.Number(), &former) != 0) {
        reason = std::strerror(errno);
        return false;
    }
    bool written = WriteAll(file.Number(), text);
    if (!written) {
        reason = std::strerror(errno);
        if (S_ISREG(former.st_mode) && ::ftruncate(file.Number(), former.st_size) != 0) {
            reason += ", and its last line is incomplete";
        }
        if (S_ISREG(former.st_mode) && former.st_size == 0) ::unlink(path.c_str());
    }
    if (!file.Close() && written) {
        reason = std::strerror(errno);
        written = false;
    }
    if (written) NoteWritten(path);
    return written;
}

bool ReplaceEnd(const std::string& path, std::size_t at, std::string_view end,
                std::string_view text, std::string& reason) {
    errno = 0;
    Descriptor file(OpenFile(path, O_WRONLY));
    const auto start = static_cast<off_t>(at);
    std::string tail(text);
    tail += end;
    struct stat former {};
    bool written = file.Valid() && ::fstat(file.Number(), &former) == 0;
    if (written && !S_ISREG(former.st_mode)) errno = EINVAL;
    written = written && S_ISREG(former.st_mode) &&
              ::lseek(file.Number(), start, SEEK_SET) == start && WriteAll(file.Number(), tail);
    if (written && file.Close()) return true;
    reason = std::strerror(errno);
    if (!file.Valid() || !S_ISREG(former.st_mode)) return false;
    const bool restored = ::lseek(file.Number(), start, SEEK_SET) == start &&
                          WriteAll(file.Number(), end) &&
                          ::ftruncate(file.Number(), former.st_size) == 0;
    if (!restored) reason += ", and its last line is incomplete";
    return false;
}

InputFolder::InputFolder(const std::string& folder) {
    CurrentInputs() = {folder, {}};
}

InputFolder::~InputFolder() {
    CurrentInputs() = {};
}

bool CopyWholeFile(const std::string& from, const std::string& to) {
    std::string text, error;
    return ReadWholeFile(from, text, error) && WriteWholeFile(to, text);
}

bool FileExists(const std::string& path) {
    struct stat info {};
    return IsUsablePath(path) && ::stat(Found(path).c_str(), &info) == 0 && !S_ISDIR(info.st_mode);
}

std::string ExecutableDirectory() {
    std::array<char, PATH_MAX> target{};
    const ssize_t length = ::readlink("/proc/self/exe", target.data(), target.size());
    if (length <= 0) return "./";
    return DirectoryOf(std::string(target.data(), static_cast<std::size_t>(length)));
}

WorkingDirectory::WorkingDirectory(const std::string& path) {
    std::array<char, PATH_MAX> present{};
    if (path.empty()) return;  // a file named without a directory
    errno = ENOENT;
    if (!IsUsablePath(path) || !::getcwd(present.data(), present.size()) ||
        ::chdir(path.c_str()) != 0) {
        reason_ = std::strerror(errno);
        return;
    }
    former_ = present.data();
}

WorkingDirectory::~WorkingDirectory() {
    if (former_.empty()) return;
    [[maybe_unused]] const int ignored = ::chdir(former_.c_str());
}

}  // namespace photrak
