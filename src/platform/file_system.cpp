// Files by way of POSIX calls. Only regular files are read: a device or a FIFO named in a topology
// must neither hang the program nor feed it without end.
#include "platform/file_system.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace photrak {
namespace {

/// A file descriptor owned by a scope.
class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    bool Valid() const { return number_ >= 0; }
    int Number() const { return number_; }
    /// False when the system reports a late write error. EINTR leaves the descriptor closed.
    bool Close() {
        const int number = std::exchange(number_, -1);
        return number < 0 || ::close(number) == 0 || errno == EINTR;
    }

  private:
    int number_;
};

/// A zero inside a path would silently name another file.
bool IsUsablePath(const std::string& path) {
    return !path.empty() && path.find('\0') == std::string::npos;
}

int OpenFile(const std::string& path, int flags) {
    if (!IsUsablePath(path)) {
        errno = ENOENT;
        return -1;
    }
    constexpr mode_t readWriteForAll = 0666;  // less the umask
    int number = -1;
    do {
        // Without O_NONBLOCK, opening a FIFO waits for its other end.
        number = ::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, readWriteForAll);
    } while (number < 0 && errno == EINTR);
    return number;
}

bool WriteAll(int number, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(number, text.data(), text.size());
        if (written > 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool WriteWith(const std::string& path, std::string_view text, int flags) {
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
    static unsigned counter = 0;
    const std::string stem = directory + ".photrak-" + std::to_string(::getpid());
    for (int i = 0; i < attempts; ++i) {
        name = stem;
        name.append("-").append(std::to_string(++counter)).append(".tmp");
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
    text.clear();
    const Descriptor file(OpenFile(path, O_RDONLY));
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

bool WriteWholeFile(const std::string& path, std::string_view text) {
    return WriteWith(path, text, O_TRUNC);
}

bool AppendToFile(const std::string& path, std::string_view text) {
    return WriteWith(path, text, O_APPEND);
}

bool ReplaceFile(const std::string& path, std::string_view text) {
    std::string target = path;
    if (!IsUsablePath(path) || !FollowLinks(target)) return false;
    struct stat former {};
    const bool exists = ::stat(target.c_str(), &former) == 0;
    // A rename asks for no leave of the file that it replaces: a write-protected one stays.
    if (exists && (!S_ISREG(former.st_mode) || ::access(target.c_str(), W_OK) != 0)) return false;

    const std::string directory = DirectoryOf(target);
    std::string temporary;
    Descriptor file(CreateTemporary(directory, temporary));
    if (!file.Valid()) return false;
    const bool whole = WriteAll(file.Number(), text) &&
                       (!exists || KeepOwnerAndMode(file.Number(), former)) &&
                       ::fsync(file.Number()) == 0;
    if (file.Close() && whole && ::rename(temporary.c_str(), target.c_str()) == 0) {
        FlushDirectory(directory);
        return true;
    }
    ::unlink(temporary.c_str());
    return false;
}

bool CopyWholeFile(const std::string& from, const std::string& to) {
    std::string text, error;
    return ReadWholeFile(from, text, error) && WriteWholeFile(to, text);
}

bool FileExists(const std::string& path) {
    struct stat info {};
    return IsUsablePath(path) && ::stat(path.c_str(), &info) == 0 && !S_ISDIR(info.st_mode);
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
    if (path.find('\0') != std::string::npos || !::getcwd(present.data(), present.size()) ||
        ::chdir(path.c_str()) != 0) {
        failed_ = true;
        return;
    }
    former_ = present.data();
}

WorkingDirectory::~WorkingDirectory() {
    if (former_.empty()) return;
    [[maybe_unused]] const int ignored = ::chdir(former_.c_str());
}

}  // namespace photrak
