// Word tables of the topology format. The writer takes the first row of a code, so that the word
// to be written comes before its synonyms.
#include "files/topology_words.h"

#include <algorithm>

namespace photrak {

namespace {

constexpr FileWord sigTypeRows[] = {
    {"OpSigType", OpSigType},
    {"ElecSigType", ElecSigType},
    {"OpOrElecSigType", OpOrElecSigType},
    {"BinSigType", BinSigType},
    {"UnknownSigType", UnknownSigType},
    {"NoSigType", NoSigType},
    {"EtcSigType", EtcSigType},
    {"...", EtcSigType},
};

constexpr FileWord distributionRows[] = {
    {"GausProbDist", GausProbDist},
    {"TwoSigmaGausProbDist", TwoSigmaGausProbDist},
    {"UniformProbDist", UniformProbDist},
    {"NoProbDist", NoProbDist},
};

// The options know one word more than a node.
constexpr FileWord saveModeRows[] = {
    {"DeleteIntermediate", 0},
    {"SaveMemIntermediate", 1},
    {"SaveDiskIntermediate", 2},
    {"UseNodeSetting", optionUseNodeSetting},
};

constexpr FileWord plottingRows[] = {
    {"DoNotPlot", DoNotPlot},
    {"PlotToFilesOnly", PlotToFilesOnly},
    {"UsePlotIconSettings", UsePlotIconSettings},
    {"DisplayAllPlots", DisplayAllPlots},
};

using Option = TextOption;
// clang-format off
constexpr Option textOptionRows[] = {
    {"OUTERSWEEPVARIABLE", &SimOptions::OUTERSWEEPVARIABLE, Option::KeepsValue, Option::WithValue},
    {"OUTERSWEEPSTARTVAL", &SimOptions::OUTERSWEEPSTARTVAL, Option::KeepsValue, Option::WithValue},
    {"OUTERSWEEPSTEPVAL",  &SimOptions::OUTERSWEEPSTEPVAL,  Option::KeepsValue, Option::WithValue},
    {"OUTERSWEEPSTOPVAL",  &SimOptions::OUTERSWEEPSTOPVAL,  Option::KeepsValue, Option::WithValue},
    {"INNERSWEEPVARIABLE", &SimOptions::INNERSWEEPVARIABLE, Option::KeepsValue, Option::WithValue},
    {"INNERSWEEPSTARTVAL", &SimOptions::INNERSWEEPSTARTVAL, Option::KeepsValue, Option::WithValue},
    {"INNERSWEEPSTEPVAL",  &SimOptions::INNERSWEEPSTEPVAL,  Option::KeepsValue, Option::WithValue},
    {"INNERSWEEPSTOPVAL",  &SimOptions::INNERSWEEPSTOPVAL,  Option::KeepsValue, Option::WithValue},
    // By design: prefixes and tags belong to one run; a save keeps their lines, not their
    // texts, so that a shared topology does not write over another user's results.
    {"OUTPUTPREFIX",       &SimOptions::OUTPUTPREFIX,       Option::Empties,    Option::KeywordAlone},
    {"SCANPREFIX",         &SimOptions::SCANPREFIX,         Option::Empties,    Option::KeywordAlone},
    {"SCANMETA1",          &SimOptions::SCANMETA1,          Option::Empties,    Option::KeywordAlone},
    {"SCANMETA2",          &SimOptions::SCANMETA2,          Option::KeepsValue, Option::KeywordAlone},
    {"RUNMETA",            &SimOptions::RUNMETA,            Option::KeepsValue, Option::KeywordAlone},
    {"BINMETA",            &SimOptions::BINMETA,            Option::KeepsValue, Option::Never},
    {"SWEEPVARIABLE",      &SimOptions::INNERSWEEPVARIABLE, Option::KeepsValue, Option::Never},
    {"SWEEPSTARTVAL",      &SimOptions::INNERSWEEPSTARTVAL, Option::KeepsValue, Option::Never},
    {"SWEEPSTEPVAL",       &SimOptions::INNERSWEEPSTEPVAL,  Option::KeepsValue, Option::Never},
    {"SWEEPSTOPVAL",       &SimOptions::INNERSWEEPSTOPVAL,  Option::KeepsValue, Option::Never},
};
// clang-format on

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '\x7f';
}

}  // namespace

const WordTable sigTypeWords = sigTypeRows;
const WordTable distributionWords = distributionRows;
const WordTable nodeSaveModeWords = WordTable(saveModeRows).first(3);
const WordTable optionSaveModeWords = saveModeRows;
const WordTable plottingWords = plottingRows;
const std::span<const TextOption> textOptions = textOptionRows;

std::optional<std::int32_t> CodeOf(WordTable table, std::string_view word) {
    const auto row = std::ranges::find(table, word, &FileWord::word);
    if (row == table.end()) return std::nullopt;
    return row->code;
}

std::string_view WordOf(WordTable table, std::int32_t code, std::string_view fallback) {
    const auto row = std::ranges::find(table, code, &FileWord::code);
    return row == table.end() ? fallback : row->word;
}

std::string CleanLine(std::string_view text) {
    std::string line(text);
    const auto breaksLine = [](char c) { return c == '\n' || c == '\r' || c == '\0'; };
    std::ranges::replace_if(line, breaksLine, ' ');
    return line;
}

std::string CleanWord(std::string_view text) {
    std::string word(text);
    const auto breaksWord = [](char c) { return c == ' ' || c == ':' || IsControl(c); };
    std::ranges::replace_if(word, breaksWord, '_');
    return word;
}

std::string CleanName(std::string_view name, std::string_view endWord) {
    std::string word = CleanWord(name);
    if (word.empty() || word == endWord) word += '_';
    return word;
}

}  // namespace photrak
