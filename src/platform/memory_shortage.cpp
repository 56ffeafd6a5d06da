// The operators new and delete of the program, which differ from those of the language in what they
// do about a failure. The sanitizers keep their own.
#include "platform/memory_shortage.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <mutex>
#include <new>
#include <unistd.h>

namespace photrak {
namespace {

constinit thread_local const Doing* presentDoing = nullptr;

/// A text in fixed memory; what does not fit is cut.
class FixedText {
  public:
    void Clear() { size_ = 0; }
    void Append(std::string_view text) {
        const std::size_t room = std::min(text.size(), text_.size() - size_);
        std::memcpy(text_.data() + size_, text.data(), room);
        size_ += room;
    }
    void AppendNumber(std::size_t number) {
        std::array<char, 24> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        Append({digits.data(), static_cast<std::size_t>(end - digits.data())});
    }
    std::string_view View() const { return {text_.data(), size_}; }

  private:
    std::array<char, 1000> text_{};
    std::size_t size_ = 0;
};

constinit std::mutex guard;  // of the text and of the reserve
constinit FixedText shortageText;
constinit std::atomic<bool> isOpen{false};
constinit std::atomic<std::uint64_t> count{0};

void WriteShortage(std::size_t bytes) {
    constexpr int mostLevels = 3;
    constexpr std::size_t mostName = 200;
    shortageText.Clear();
    shortageText.Append("out of memory");
    const char* joint = " while ";
    int level = 0;
    for (const Doing* doing = presentDoing; doing && level < mostLevels; doing = doing->outer) {
        shortageText.Append(joint);
        shortageText.Append(doing->verb);
        if (!doing->name.empty()) {
            shortageText.Append(" '");
            shortageText.Append(doing->name.substr(0, mostName));
            shortageText.Append("'");
        }
        joint = ", ";
        ++level;
    }
    if (bytes == 0) return;
    shortageText.Append(": ");
    shortageText.AppendNumber(bytes);
    shortageText.Append(" bytes were asked for");
}

/// True if this is the failure that opens the reserve.
bool Note(std::size_t bytes) {
    ++count;
    const std::lock_guard lock(guard);
    if (isOpen.exchange(true)) return false;
    WriteShortage(bytes);
    return true;
}

}  // namespace

Doing::Doing(const char* what, std::string_view whose) noexcept
    : verb(what), name(whose), outer(presentDoing) {
    presentDoing = this;
}

Doing::~Doing() {
    presentDoing = outer;
}

const Doing* PresentDoing() noexcept {
    return presentDoing;
}

void AdoptDoing(const Doing* doing) noexcept {
    presentDoing = doing;
}

void NoteShortage(std::size_t bytes) noexcept {
    Note(bytes);
}

void NoteIfShortage(int errorNumber) noexcept {
    if (errorNumber == ENOMEM) Note(0);
}

const char* ReasonOf(const std::exception& failure) noexcept {
    const bool isShortage = dynamic_cast<const std::bad_alloc*>(&failure) != nullptr;
    return isShortage ? "out of memory" : failure.what();
}

std::uint64_t ShortageCount() noexcept {
    return count;
}

std::string_view ShortageText() noexcept {
    return shortageText.View();
}

void CloseReserve() noexcept {
    isOpen = false;
}

namespace {

/// Blocks one after another; all of it is free again when the last one is given back.
class Reserve {
  public:
    void* Take(std::size_t bytes, std::size_t alignment) {
        constexpr std::size_t mostBytes = std::size_t{1} << 16;
        if (bytes > mostBytes || alignment > mostBytes) return nullptr;
        const std::lock_guard lock(guard);
        const std::size_t start = (used_ + alignment - 1) / alignment * alignment;
        if (start + bytes > memory_.size()) return nullptr;
        used_ = start + bytes;
        ++blocks_;
        return memory_.data() + start;
    }
    bool Has(const void* block) const {
        const auto at = reinterpret_cast<std::uintptr_t>(block);
        return at - reinterpret_cast<std::uintptr_t>(memory_.data()) < memory_.size();
    }
    void GiveBack() {
        const std::lock_guard lock(guard);
        if (--blocks_ == 0) used_ = 0;
    }

  private:
    alignas(4096) std::array<unsigned char, std::size_t{1} << 20> memory_;
    std::size_t used_ = 0, blocks_ = 0;
};
Reserve reserve;  // zero from the start: no code runs for it

[[noreturn]] void SpeakAndEnd() {
    if (ShortageCount() == 0) std::abort();
    std::array<std::string_view, 3> parts = {"photrak: error: ", ShortageText(), "\n"};
    for (const std::string_view part : parts) {
        if (::write(STDERR_FILENO, part.data(), part.size()) < 0) break;
    }
    ::_exit(1);
}

/// Before anything of the program's own is made. A failure where nothing may be thrown ends the
/// program by its last words; any other fault there by the usual way.
[[gnu::constructor(101)]] void SetLastWords() {
    static std::terminate_handler usual;
    usual = std::get_terminate();
    std::set_terminate([] {
        if (ShortageCount() == 0) usual();
        SpeakAndEnd();
    });
}

[[maybe_unused]] void* TakeReserve(std::size_t bytes, std::size_t alignment) {
    if (!Note(bytes)) {
        if (void* block = reserve.Take(std::max<std::size_t>(bytes, 1), alignment)) return block;
    }
    throw std::bad_alloc();
}

[[maybe_unused]] void GiveBack(void* block) {
    if (reserve.Has(block)) return reserve.GiveBack();
    std::free(block);
}

}  // namespace
}  // namespace photrak

#ifndef PHOTRAK_SANITIZED

// The other forms of the language call these.
void* operator new(std::size_t bytes) {
    if (void* block = std::malloc(bytes ? bytes : 1)) return block;
    return photrak::TakeReserve(bytes, alignof(std::max_align_t));
}

void operator delete(void* block) noexcept {
    photrak::GiveBack(block);
}

void operator delete(void* block, std::size_t) noexcept {
    photrak::GiveBack(block);
}

void* operator new(std::size_t bytes, std::align_val_t alignment) {
    const auto boundary = static_cast<std::size_t>(alignment);
    const std::size_t rounded = (bytes + boundary - 1) / boundary * boundary;
    void* block =
        rounded < bytes ? nullptr : std::aligned_alloc(boundary, std::max(rounded, boundary));
    return block ? block : photrak::TakeReserve(bytes, boundary);
}

void operator delete(void* block, std::align_val_t) noexcept {
    photrak::GiveBack(block);
}

void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    photrak::GiveBack(block);
}

#endif
