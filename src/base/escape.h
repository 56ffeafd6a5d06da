// The failure path that unwinds: numeric code that cannot go on, exhausted memory in numeric
// arrays, a full symbol table. One exception type, thrown by TakeEscape (and by NumericFailure),
// caught only where a level was pushed.
#pragma once

#include <exception>
#include <string>
#include <string_view>

#include "base/status.h"

namespace photrak {

/// The escape itself; `message` is the text of the failure, for the owner of the level.
struct Escape : std::exception {
    explicit Escape(std::string text) : message(std::move(text)) {}
    const char* what() const noexcept override { return message.c_str(); }
    std::string message;
};

inline constexpr int maxEscapeLevels = 16;

/// Raises the current level and stores its flag; false (and no change) when all levels are in use.
bool PushEscape(bool armed);
void PopEscape();
/// Throws Escape if the current level is armed, otherwise returns. Level 0 is never armed.
void TakeEscape(std::string_view message = {});
int EscapeLevelCount();

/// A level that lasts as long as a scope. Refused() tells that the stack was full.
class EscapeLevel {
  public:
    explicit EscapeLevel(bool armed) : pushed_(PushEscape(armed)) {}
    ~EscapeLevel() {
        if (pushed_) PopEscape();
    }
    EscapeLevel(const EscapeLevel&) = delete;
    EscapeLevel& operator=(const EscapeLevel&) = delete;
    bool Refused() const { return !pushed_; }

  private:
    bool pushed_;
};

/// Shows the text, cut to 255 bytes (at a character boundary), in the error box titled "Photrak
/// Error" and takes the escape. Returns only if no level is armed.
void FatalError(std::string_view text);

/// The failure of numeric code: three lines in `pherror.txt`, then FatalError's box, then Escape
/// with the message. Never returns; without an armed level it throws all the same.
[[noreturn]] void NumericFailure(std::string_view message);

/// A trace in `pherror.txt`: "Photrak runtime error:\n", the text and a newline, an empty line.
void RuntimeError(std::string_view text);

}  // namespace photrak
