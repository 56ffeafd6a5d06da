// What becomes of an allocation that fails. The first one throws, or gives null, as everywhere; it
// is also noted once and for all with what the thread was at, so that whoever started the work
// learns of it even where somebody on the way took no notice. From then on small blocks come from a
// reserve that was set aside at the start: the words about the failure do not fail themselves.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string_view>

namespace photrak {

/// While it lasts, what the thread is at: "reading", "link.top". Both texts are borrowed. The one
/// made last is told first.
class Doing {
  public:
    explicit Doing(const char* verb, std::string_view name = {}) noexcept;
    ~Doing();
    Doing(const Doing&) = delete;
    Doing& operator=(const Doing&) = delete;

    const char* const verb;
    const std::string_view name;
    const Doing* const outer;
};

/// What this thread is at, to be handed to those who help it; null for nothing.
const Doing* PresentDoing() noexcept;
/// Lets a helping thread speak of what the other is at.
void AdoptDoing(const Doing* doing) noexcept;

/// An allocation of so many bytes failed; 0 for a number that only the C library knows. Opens the
/// reserve. Allocates nothing.
void NoteShortage(std::size_t bytes) noexcept;
/// Notes a shortage if that is what the error number of a system call says.
void NoteIfShortage(int errorNumber) noexcept;
/// What an exception says, "out of memory" for that.
const char* ReasonOf(const std::exception& failure) noexcept;
/// How many failures were noted since the program began.
std::uint64_t ShortageCount() noexcept;
/// "out of memory while reading 'link.top': 70000 bytes were asked for", of the first failure since
/// the reserve was last closed; empty if there was none. Stands until the next failure.
std::string_view ShortageText() noexcept;
/// The next failure will throw again, and be told. At the start of a piece of work.
void CloseReserve() noexcept;

}  // namespace photrak
