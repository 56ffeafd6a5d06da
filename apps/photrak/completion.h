// The words that a shell offers after `photrak`, from the tables of commands and options.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace photrak {

struct CompletedCommand {
    std::string_view name;
    unsigned bit;  // commandBit
};

/// A script for bash, to be sourced: commands, options, words of options, models, and of the
/// topology at hand its components and symbols.
std::string BashCompletion(std::span<const CompletedCommand> commands);

}  // namespace photrak
