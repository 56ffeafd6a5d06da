// Open files: descriptors with an owner, and calls that go on after an interruption.
#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace photrak {

/// A file descriptor owned by a scope.
class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    bool Valid() const { return number_ >= 0; }
    int Number() const { return number_; }
    /// Leaves the descriptor to the caller.
    int Release() { return std::exchange(number_, -1); }
    /// False when the system reports a late write error. EINTR leaves the descriptor closed.
    bool Close();

  private:
    int number_;
};

/// A zero inside a path would silently name another file.
bool IsUsablePath(const std::string& path);

/// A descriptor, or -1 with errno. Waits for nobody: neither for the other end of a FIFO nor for a
/// terminal. Programs that are started do not inherit it.
int OpenFile(const std::string& path, int flags);

/// False with errno where the system takes no more.
bool WriteAll(int number, std::string_view text);

}  // namespace photrak
