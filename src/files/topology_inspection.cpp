// The top level of a topology under inspection: header, variables, options, nodes. A keyword that
// is mistyped still opens or ends what it was meant for, so that its lines are no further findings.
#include "files/topology_inspection.h"

#include <algorithm>
#include <set>

#include "base/nearest.h"
#include "base/text.h"
#include "files/component_inspection.h"
#include "files/diagnostics.h"
#include "files/topology_blocks.h"
#include "files/topology_words.h"
#include "kernel/parameter_types.h"

namespace photrak {
namespace {

namespace d = diagnostic;

class TopologyInspector {
  public:
    explicit TopologyInspector(InspectionContext& context)
        : context_(context), lines_(context.lines) {}

    void Run() {
        while (context_.Advance()) Block();
    }

  private:
    struct BlockWord {
        std::string_view word;
        void (TopologyInspector::*inspect)();
    };
    static const BlockWord blockWords[];

    void Block();
    void Nothing() {}
    void Locked();
    void Variables();
    void Variable(std::string_view name);
    void Options();
    void Option(std::string_view keyword);
    void NodeNumbers();
    void NodeBlock();
    void NodeHead();
    void NodeLine(std::string_view keyword);
    void ComponentBlock() { InspectComponent(context_); }
    bool EndsEarly(std::string_view end, std::string_view word);
    void UnknownLine(std::string_view word, std::string_view inside,
                     const std::vector<std::string_view>& known);
    void OneOf(std::string_view keyword, WordTable table, std::string_view counts);

    InspectionContext& context_;
    LineReader& lines_;
    std::set<std::int32_t> typedNodes_;
};

const TopologyInspector::BlockWord TopologyInspector::blockWords[] = {
    {"NOTE", &TopologyInspector::Nothing},
    {"LOCKED", &TopologyInspector::Locked},
    {"BEGINVARIABLES", &TopologyInspector::Variables},
    {"SIMOPTIONS", &TopologyInspector::Options},
    {"BEGINNODES", &TopologyInspector::NodeNumbers},
    {"ENDNODES", &TopologyInspector::NodeNumbers},
    {"NODEBEGIN", &TopologyInspector::NodeBlock},
    {"COMPONENT", &TopologyInspector::ComponentBlock},
};

std::string_view Self(std::string_view word) {
    return word;
}

void TopologyInspector::Block() {
    const std::string word(lines_.Word());
    if (word.empty()) return;
    for (const BlockWord& row : blockWords) {
        if (row.word == word) return (this->*row.inspect)();
    }
    const std::string nearest =
        NearestOf(word, blockWords, [](const auto& row) { return row.word; });
    context_.Tell(d::unknownKeyword, Concat("unknown keyword '", word, "'"), word,
                  "the line is skipped", nearest);
    for (const BlockWord& row : blockWords) {
        if (row.word == nearest) (this->*row.inspect)();
    }
}

void TopologyInspector::Locked() {
    const std::string_view word = lines_.Word();
    if (word == "YES" || word == "NO" || word.empty()) return;
    context_
        .Tell(d::unknownWord, Concat("LOCKED '", word, "' is neither YES nor NO"), word,
              "the line is skipped")
        .changesNumber = false;
}

/// True at the line that starts another block, and at the end of the text.
bool TopologyInspector::EndsEarly(std::string_view end, std::string_view word) {
    if (!StartsTopologyBlock(word)) return false;
    context_.Tell(d::missingEnd, Concat(end, " is missing before this line"), word,
                  "a load takes what follows as part of the block");
    context_.lineIsUnread = true;
    context_.found.isCutShort = true;
    return true;
}

void TellEndOfText(InspectionContext& context, std::string_view end) {
    context.Tell(d::missingEnd, Concat("the file ends without ", end), {});
    context.found.isCutShort = true;
}

void TopologyInspector::UnknownLine(std::string_view word, std::string_view inside,
                                    const std::vector<std::string_view>& known) {
    context_.Tell(d::unknownKeyword, Concat("unknown keyword '", word, "' in ", inside), word,
                  "the line is skipped", NearestOf(word, known, Self));
}

void TopologyInspector::Variables() {
    while (context_.Advance()) {
        const std::string name(lines_.Word());
        if (name == "ENDVARIABLES") return;
        if (name.empty()) continue;
        const std::string_view second = lines_.Word();
        lines_.Rewind();
        lines_.Word();
        if (!FindParameterType(second)) {
            if (EndsEarly("ENDVARIABLES", name)) return;
            if (second.empty() && TypingDistance(name, "ENDVARIABLES") <= 6) {
                context_.Tell(d::missingEnd, Concat("unknown keyword '", name, "'"), name,
                              "a load takes what follows as part of the block", "ENDVARIABLES");
                return;
            }
        }
        Variable(name);
    }
    TellEndOfText(context_, "ENDVARIABLES");
}

void TopologyInspector::Variable(std::string_view name) {
    const std::string_view typeWord = lines_.Word();
    const ParameterType* type = FindParameterType(typeWord);
    if (!type || IsArray(*type)) {
        const auto one = [](const ParameterType& row) {
            return IsArray(row) ? std::string_view() : row.word;
        };
        context_.Tell(d::variableType,
                      Concat("variable '", name, "' cannot be of type '", typeWord, "'"), typeWord,
                      {}, NearestOf(typeWord, parameterTypes, one));
        type = nullptr;
    }
    if (context_.found.variables.size() == maxTopologyVariables) return;  // the load tells
    context_.found.variables.push_back(
        {CleanWord(name), CleanLine(lines_.Rest()), lines_.Where(), type ? type->code : -1});
}

constexpr FileWord simModes[] = {{"SpecifiedValueMode", 0}, {"StatisticalMode", 1}};
constexpr FileWord truths[] = {{"TRUE", 1}, {"FALSE", 0}};

void TopologyInspector::OneOf(std::string_view keyword, WordTable table, std::string_view counts) {
    const std::string word(lines_.Word());
    if (word.empty() || CodeOf(table, word)) return;
    std::string all;
    for (const FileWord& row : table) all += Concat(all.empty() ? "" : ", ", row.word);
    context_.Tell(d::unknownWord, Concat(keyword, " '", word, "' is none of ", all), word,
                  std::string(counts),
                  NearestOf(word, table, [](const FileWord& row) { return row.word; }));
}

void TopologyInspector::Options() {
    while (context_.Advance()) {
        const std::string keyword(lines_.Word());
        if (keyword == "ENDSIMOPTIONS") return;
        if (keyword.empty()) continue;
        if (EndsEarly("ENDSIMOPTIONS", keyword)) return;
        if (TypingDistance(keyword, "ENDSIMOPTIONS") <= 6) {
            context_.Tell(d::missingEnd, Concat("unknown keyword '", keyword, "'"), keyword,
                          "a load takes what follows as part of the block", "ENDSIMOPTIONS");
            return;
        }
        Option(keyword);
    }
    TellEndOfText(context_, "ENDSIMOPTIONS");
}

void TopologyInspector::Option(std::string_view keyword) {
    if (keyword == "SIMMODE") return OneOf(keyword, simModes, "the line is skipped");
    if (keyword == "SAVEPARAMS") return OneOf(keyword, truths, "FALSE counts");
    if (keyword == "SIGSAVEMODE") {
        return OneOf(keyword, optionSaveModeWords, "UseNodeSetting counts");
    }
    if (keyword == "PLOTTING") return OneOf(keyword, plottingWords, "DisplayAllPlots counts");
    if (keyword == "NUMRUNSTODO") {
        const std::string_view word = lines_.Word();
        if (word.empty() || WholeInt(word)) return;
        context_.Tell(d::noNumber, Concat("NUMRUNSTODO '", word, "' is no number"), word,
                      Concat(ReadInt(word), " counts"));
        return;
    }
    const auto row = std::ranges::find(textOptions, keyword, &TextOption::keyword);
    if (row == textOptions.end()) {
        std::vector<std::string_view> known = {"SIMMODE", "NUMRUNSTODO", "SAVEPARAMS",
                                               "SIGSAVEMODE", "PLOTTING"};
        for (const TextOption& option : textOptions) known.push_back(option.keyword);
        return UnknownLine(keyword, "SIMOPTIONS", known);
    }
    const std::string word(lines_.Word());
    context_.found.options.push_back({std::string(keyword), word, lines_.Where()});
    const std::string_view rest = lines_.Rest();
    if (rest.find_first_not_of(" \t:") == std::string_view::npos) return;
    context_
        .Tell(d::extraWords, Concat(keyword, " '", word, " ", rest, "' is more than one word"),
              rest, Concat("'", word, "' counts"))
        .changesNumber = keyword.find("SWEEP") != std::string_view::npos;
}

void TopologyInspector::NodeNumbers() {
    for (;;) {
        const std::string_view token = lines_.Word();
        if (token.empty()) return;
        if (WholeInt(token)) continue;
        context_.Tell(d::noNumber, Concat("node '", token, "' is no number"), token,
                      Concat(ReadInt(token), " counts"));
    }
}

void TopologyInspector::NodeHead() {
    const std::string_view number = lines_.Word();
    const auto node = WholeInt(number);
    if (!node) {
        context_.Tell(d::noNumber, Concat("node '", number, "' is no number"), number,
                      Concat(ReadInt(number), " counts"));
    }
    const std::string word(lines_.Word());
    const auto type = CodeOf(sigTypeWords, word.empty() ? "UnknownSigType" : word);
    if (!type) {
        context_.Tell(d::unknownWord, Concat("'", word, "' is no signal kind"), word, {},
                      NearestOf(word, sigTypeWords, [](const FileWord& row) { return row.word; }));
    }
    if (type == UnknownSigType || !node || typedNodes_.insert(*node).second) return;
    context_.Tell(d::doubleNode, Concat("node ", *node, " is described twice"), number);
}

void TopologyInspector::NodeLine(std::string_view keyword) {
    if (keyword == "LINE") return;
    if (keyword != "SIGNALSAVEMODE") {
        return UnknownLine(keyword, "NODEBEGIN", {"SIGNALSAVEMODE", "LINE", "ENDNODE"});
    }
    const std::string word(lines_.Word());
    if (CodeOf(nodeSaveModeWords, word)) return;
    lines_.Rewind();
    lines_.Word();
    OneOf(keyword, nodeSaveModeWords, {});
}

void TopologyInspector::NodeBlock() {
    NodeHead();
    while (context_.Advance()) {
        const std::string keyword(lines_.Word());
        if (keyword == "ENDNODE") return;
        if (keyword.empty()) continue;
        if (keyword != "ENDNODES" && TypingDistance(keyword, "ENDNODE") <= 3) {
            UnknownLine(keyword, "NODEBEGIN", {"ENDNODE"});
            return;
        }
        if (EndsEarly("ENDNODE", keyword)) return;
        NodeLine(keyword);
    }
    TellEndOfText(context_, "ENDNODE");
}

}  // namespace

bool InspectionContext::Advance() {
    if (!lineIsUnread) return lines.Next();
    lineIsUnread = false;
    lines.Rewind();
    return true;
}

LoadFinding& InspectionContext::TellAt(std::string place, const char* code, std::string text,
                                       std::string_view typed, std::string counts,
                                       std::string nearest) {
    if (found.findings.size() == mostLoadFindings) found.findings.pop_back();
    found.findings.push_back({code, std::move(place), std::move(text), std::string(typed),
                              std::move(counts), std::move(nearest)});
    return found.findings.back();
}

LoadFinding& InspectionContext::Tell(const char* code, std::string text, std::string_view typed,
                                     std::string counts, std::string nearest) {
    return TellAt(lines.Where(), code, std::move(text), typed, std::move(counts),
                  std::move(nearest));
}

bool StartsTopologyBlock(std::string_view word) {
    constexpr std::string_view words[] = {"BEGINVARIABLES", "SIMOPTIONS", "BEGINNODES",
                                          "ENDNODES",       "NODEBEGIN",  "COMPONENT"};
    return std::ranges::find(words, word) != std::end(words);
}

Inspection InspectTopologyText(std::string_view text, const std::string& fileName,
                               const Catalogue& catalogue) {
    Inspection inspection;
    LineReader lines(text, fileName);
    InspectionContext context{lines, catalogue, inspection};
    TopologyInspector(context).Run();
    return inspection;
}

std::string FindingLine(const LoadFinding& finding) {
    std::string line = Concat(finding.place, ": ", finding.code, ": ", finding.text);
    if (!finding.counts.empty()) line += Concat("; ", finding.counts);
    return line + DidYouMean(finding.nearest);
}

}  // namespace photrak
