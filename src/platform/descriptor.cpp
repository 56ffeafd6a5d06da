#include "platform/descriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace photrak {
bool Descriptor::Close() {
    const int number = Release();
    return number < 0 || ::close(number) == 0 || errno == EINTR;
}

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

}  // namespace photrak
