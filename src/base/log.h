// log.txt in the working directory: opened for appending, written and closed at every call, so that
// it survives a crash. A failure ends nothing: whoever started the run asks for it afterward.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace photrak {

/// Appends `text`: no format; what could steer a terminal and lines beyond all measure as
/// HarmlessText has them.
void LogText(std::string_view text);

inline constexpr std::size_t mostLogBytes = std::size_t{1} << 24;

/// While it lasts, around a run, the thread logs at most `most` bytes in whole lines; then one line
/// tells that what follows is left out.
class LogBound {
  public:
    explicit LogBound(std::size_t most = mostLogBytes);
    ~LogBound();
    LogBound(const LogBound&) = delete;
    LogBound& operator=(const LogBound&) = delete;
};

/// The reason of the first text since the last call that could not be written whole; empty if none.
std::string TakeLogFailure();

/// What a text becomes that serves as a format without arguments: "%%" gives "%", everything else
/// stays as it is. Reads nothing beyond its input.
std::string InterpretPercent(std::string_view text);

}  // namespace photrak
