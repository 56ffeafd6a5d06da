// log.txt in the working directory: opened for appending, written and closed at every call, so that
// it survives a crash. A failure ends nothing: whoever started the run asks for it afterward.
#pragma once

#include <string>
#include <string_view>

namespace photrak {

/// Appends `text` as it stands (no format, any length).
void LogText(std::string_view text);

/// The reason of the first text since the last call that could not be written whole; empty if none.
std::string TakeLogFailure();

/// What a text becomes that serves as a format without arguments: "%%" gives "%", everything else
/// stays as it is. Reads nothing beyond its input.
std::string InterpretPercent(std::string_view text);

}  // namespace photrak
