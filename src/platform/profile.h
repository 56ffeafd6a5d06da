// The profile file: sections in brackets, "KEY=VALUE" lines. Works on the text of the file, so that
// unknown lines, comments and their order survive a write.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace photrak {

/// The integer at `key` of `section`, if both are there and the value starts with one. Names are
/// compared without regard to case.
std::optional<int> FindProfileInt(std::string_view text, std::string_view section,
                                  std::string_view key);
/// The keys of a section in order, each with the integer that its value starts with, else 0.
std::vector<std::pair<std::string, int>> ProfileInts(std::string_view text,
                                                     std::string_view section);
/// The text with the value replaced, or added at the end of its section or in a new section.
std::string WithProfileInt(std::string_view text, std::string_view section, std::string_view key,
                           int value);

}  // namespace photrak
