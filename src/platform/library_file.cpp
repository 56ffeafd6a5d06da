// The headers of an ELF file, as elf(5) has them.
#include "platform/library_file.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <elf.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace photrak {
namespace {

#if defined(__x86_64__)
constexpr std::uint16_t ownMachine = EM_X86_64;
#elif defined(__aarch64__)
constexpr std::uint16_t ownMachine = EM_AARCH64;
#else
constexpr std::uint16_t ownMachine = EM_NONE;  // whatever the loader makes of it
#endif

constexpr const char* cutShort = "is cut short";

class OpenLibrary {
  public:
    explicit OpenLibrary(const std::string& path)
        : number_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~OpenLibrary() {
        if (number_ >= 0) ::close(number_);
    }
    OpenLibrary(const OpenLibrary&) = delete;
    OpenLibrary& operator=(const OpenLibrary&) = delete;

    bool Stat(struct stat& info) const { return number_ >= 0 && ::fstat(number_, &info) == 0; }
    bool Read(void* to, std::size_t bytes, std::uint64_t at) const {
        return ::pread(number_, to, bytes, static_cast<off_t>(at)) == static_cast<ssize_t>(bytes);
    }

  private:
    int number_;
};

/// Whether `count` entries of `size` bytes from `at` on lie within the file.
bool IsWithin(std::uint64_t at, std::uint64_t count, std::uint64_t size, std::uint64_t fileSize) {
    return at <= fileSize && (size == 0 || count <= (fileSize - at) / size);
}

std::string HeaderFault(const Elf64_Ehdr& header) {
    if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_type != ET_DYN)
        return "is no shared library";
    const bool isForeign = header.e_ident[EI_CLASS] != ELFCLASS64 ||
                           header.e_ident[EI_DATA] != ELFDATA2LSB ||
                           (ownMachine != EM_NONE && header.e_machine != ownMachine);
    if (isForeign) return "is a library for another kind of machine";
    return header.e_phentsize == sizeof(Elf64_Phdr) ? "" : "has headers of an unknown size";
}

}  // namespace

std::string LibraryFault(const std::string& path) {
    const OpenLibrary file(path);
    struct stat info {};
    if (!file.Stat(info)) return std::string("cannot be read: ") + std::strerror(errno);
    if (!S_ISREG(info.st_mode)) return "is no regular file";
    const auto size = static_cast<std::uint64_t>(info.st_size);
    Elf64_Ehdr header{};
    if (size < sizeof header || !file.Read(&header, sizeof header, 0))
        return "is no shared library";
    if (std::string fault = HeaderFault(header); !fault.empty()) return fault;
    if (!IsWithin(header.e_phoff, header.e_phnum, sizeof(Elf64_Phdr), size) ||
        !IsWithin(header.e_shoff, header.e_shnum, header.e_shentsize, size)) {
        return cutShort;
    }
    for (std::uint64_t i = 0; i < header.e_phnum; ++i) {
        Elf64_Phdr part{};
        if (!file.Read(&part, sizeof part, header.e_phoff + i * sizeof part)) return cutShort;
        const bool isOfFile = part.p_type == PT_LOAD || part.p_type == PT_DYNAMIC;
        if (isOfFile && !IsWithin(part.p_offset, part.p_filesz, 1, size)) return cutShort;
    }
    return {};
}

std::string LibraryDoubt(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return {};  // the loader tells
    if (info.st_uid != 0 && info.st_uid != ::geteuid()) return "belongs to another user";
    const bool othersWrite =
        (info.st_mode & S_IWOTH) || ((info.st_mode & S_IWGRP) && info.st_gid != ::getegid());
    return othersWrite ? "can be changed by other users" : "";
}

}  // namespace photrak
