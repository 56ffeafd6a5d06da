// A lock held by an open file, and the sweep of what killed writers left.
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "platform/descriptor.h"
#include "platform/file_system.h"
#include "platform/result_folder.h"
#include "platform/temporary_name.h"

namespace photrak {
namespace {

constexpr const char* lockName = ".photrak.lock";

/// True if the open file still stands under its name: its former owner removes it.
bool StandsThere(int number) {
    struct stat open {
    }, named{};
    return ::fstat(number, &open) == 0 && ::stat(lockName, &named) == 0 &&
           open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

std::string FirstLine(int number) {
    std::array<char, 32> text{};
    const ssize_t length = ::pread(number, text.data(), text.size(), 0);
    std::string line(text.data(), static_cast<std::size_t>(length > 0 ? length : 0));
    return line.substr(0, line.find_first_not_of("0123456789"));
}

/// Removes what writers that were killed left in the working directory, which is ours alone.
void SweepLeftovers() {
    std::vector<std::string> names;
    std::string ignored;
    [[maybe_unused]] const bool listed = ListFolder(".", names, ignored);
    for (const std::string& name : names) {
        const pid_t owner = OwnerOfTemporary(name);
        if (owner == 0 || ::kill(owner, 0) == 0 || errno != ESRCH) continue;
        ::unlink(name.c_str());
    }
}

}  // namespace

FolderLock::FolderLock() {
    constexpr int attempts = 100;
    for (int i = 0; i < attempts; ++i) {
        Descriptor file(OpenFile(lockName, O_RDWR | O_CREAT));
        if (!file.Valid()) return;
        if (::flock(file.Number(), LOCK_EX | LOCK_NB) != 0) {
            const bool isHeld = errno == EWOULDBLOCK;
            if (isHeld) owner_ = FirstLine(file.Number());
            if (isHeld && owner_.empty()) owner_ = "unknown";
            return;
        }
        if (!StandsThere(file.Number())) continue;
        number_ = file.Release();
        const std::string own = std::to_string(::getpid()) + "\n";
        [[maybe_unused]] const bool told = ::ftruncate(number_, 0) == 0 && WriteAll(number_, own);
        SweepLeftovers();
        return;
    }
}

FolderLock::~FolderLock() {
    if (number_ < 0) return;
    ::unlink(lockName);
    ::close(number_);
}

}  // namespace photrak
