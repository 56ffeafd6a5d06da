// The fuzzer's input as a file in memory, for readers that take a path.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

#include "fuzz_support.h"

namespace photrak {

class InputFile {
  public:
    InputFile(const std::uint8_t* data, std::size_t size) : file_(::memfd_create("input", 0)) {
        Require(file_ >= 0);
        Require(::write(file_, data, size) == static_cast<::ssize_t>(size));
    }
    ~InputFile() { ::close(file_); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    std::string Path() const { return "/proc/self/fd/" + std::to_string(file_); }

  private:
    int file_;
};

}  // namespace photrak
