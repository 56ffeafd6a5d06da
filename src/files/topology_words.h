// The words of the topology format: one table for each kind of word, shared by reader and writer,
// the table of the text options of a run, and the cleaning that keeps a text or a word on the line
// where it was written.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "kernel/workspace.h"

namespace photrak {

struct FileWord {
    std::string_view word;
    std::int32_t code;
};
using WordTable = std::span<const FileWord>;

/// The first row with this word; empty if there is none.
std::optional<std::int32_t> CodeOf(WordTable table, std::string_view word);
/// The first row with this code, or `fallback`.
std::string_view WordOf(WordTable table, std::int32_t code, std::string_view fallback);

extern const WordTable sigTypeWords;         // ports and nodes
extern const WordTable distributionWords;    // PROBDIST, IPROBDIST
extern const WordTable nodeSaveModeWords;    // SIGNALSAVEMODE of a node
extern const WordTable optionSaveModeWords;  // SIGSAVEMODE of the options
extern const WordTable plottingWords;

inline constexpr std::int32_t optionUseNodeSetting = 3;  // SIGSAVEMODE

/// A text field of the run options in a file.
struct TextOption {
    enum Missing { KeepsValue, Empties };           // what a keyword without a token does
    enum Saved { WithValue, KeywordAlone, Never };  // what the writer does
    std::string_view keyword;
    std::string SimOptions::*field;
    Missing missing;
    Saved saved;
};
/// In the order of a written file; names that are read and never written come last.
extern const std::span<const TextOption> textOptions;

/// A text as it can stand at the end of a line: line ends, carriage returns and NULs become blanks.
std::string CleanLine(std::string_view text);
/// A text as it can stand as one word: blanks, colons and control characters become underscores.
std::string CleanWord(std::string_view text);
/// The same for a name, which is never empty and never the word that ends its block.
std::string CleanName(std::string_view name, std::string_view endWord = {});

}  // namespace photrak
