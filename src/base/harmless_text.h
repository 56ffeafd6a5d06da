// Text from files and libraries on its way to a terminal or a log: UTF-8 sequences, control
// characters as escapes, lines of bounded length.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace photrak {

/// Bytes of the valid UTF-8 sequence at the start of `text`, which has at least one; 0 if there is
/// none (overlong forms, surrogates and what lies above U+10FFFF count as none).
std::size_t Utf8Length(std::string_view text);

/// The first `most` bytes of text, or fewer so that no UTF-8 sequence is cut through.
std::string_view CutAtCharacter(std::string_view text, std::size_t most);

/// Longest line that is shown, in bytes.
inline constexpr std::size_t mostShownBytes = 4096;

/// `text` with the control characters that could steer a terminal, those of U+0080 to U+009F and
/// bare bytes of that range too, as "\x1b" and "\u009b"; lines and tabs stay. A line that
/// would be longer than mostShownBytes ends with a word on how much is left out. Shown again, a
/// text stays as it is.
std::string HarmlessText(std::string_view text);

}  // namespace photrak
