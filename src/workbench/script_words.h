// The words of a script's lines, and texts as its output quotes them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace photrak {

/// Words separated by blanks; one in double quotes may hold blanks and \" \\ \n \t \xHH. Nothing if
/// a quote does not end or an escape is unknown.
std::optional<std::vector<std::string>> SplitWords(std::string_view line);
/// In double quotes, with the same escapes.
std::string Quoted(std::string_view text);

}  // namespace photrak
