// Header lines, variables, options, node lists and nodes of a topology file.
#include "files/topology_blocks.h"

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "files/topology_words.h"
#include "kernel/graph.h"
#include "kernel/parameter_types.h"
#include "kernel/symbols.h"

namespace photrak {

void AppendLocated(std::string& errorText, std::string_view text, std::string_view where) {
    errorText += text;
    if (!text.ends_with('\n')) errorText += '\n';
    errorText += Concat("  at ", where, "\n");
}

Status Fault(TopologyContext& context, std::string_view text) {
    AppendLocated(context.workspace.errorText, text, context.lines.Where());
    return Status::Error;
}

Status Caution(TopologyContext& context, std::string_view text) {
    AppendLocated(context.workspace.errorText, text, context.lines.Where());
    return Status::Warning;
}

Status EndsInside(TopologyContext& context, std::string_view block) {
    return Fault(context, Concat("ERROR reading topology file: the file ends inside the ", block,
                                 " block\n"));
}

Status ReadNoteLine(TopologyContext& context) {
    context.workspace.NOTE = CleanLine(context.lines.Rest());
    return Status::Success;
}

Status ReadLockedLine(TopologyContext& context) {
    const std::string_view word = context.lines.Word();
    if (word == "YES") context.workspace.LOCKED = 1;
    if (word == "NO") context.workspace.LOCKED = 0;
    return Status::Success;
}

namespace {

constexpr std::int32_t unknownVariableType = -1;

/// "name type value"; a variable of an unknown type is reported and stored all the same, one beyond
/// the bound is reported and left out, once.
Status ReadVariable(TopologyContext& context, std::string_view name) {
    if (context.workspace.variables.size() == maxTopologyVariables) {
        if (std::exchange(context.isFullOfVariables, true)) return Status::Error;
        return Fault(context, "ERROR reading topology file: too many variables\n");
    }
    const std::string_view typeWord = context.lines.Word();
    const ParameterType* type = FindParameterType(typeWord);
    if (type && IsArray(*type)) type = nullptr;
    const Status status =
        type ? Status::Success
             : Fault(context,
                     Concat("Error loading topology: variable cannot be type ", typeWord, "\n"));
    AddVariable(context.workspace, CleanWord(name), type ? type->code : unknownVariableType,
                CleanLine(context.lines.Rest()));
    return status;
}

}  // namespace

Status ReadVariables(TopologyContext& context) {
    Status status = Status::Success;
    while (context.lines.Next()) {
        const std::string_view name = context.lines.Word();
        if (name == "ENDVARIABLES") {
            MergeStatus(status, BuildSymbolTable(context.workspace, context.workspace.errorText));
            return status;
        }
        if (!name.empty()) MergeStatus(status, ReadVariable(context, name));
    }
    return EndsInside(context, "BEGINVARIABLES");
}

namespace {

// What an option keyword does with its word; an empty word means that none stands there.
struct CodedOption {
    std::string_view keyword;
    void (*store)(SimOptions& options, std::string_view word);
};

void StoreMode(SimOptions& options, std::string_view word) {
    // By design: reading sets the bit that a run looks at, the writer looks at another
    // one, so a statistical setting does not survive a save by itself.
    if (word == "SpecifiedValueMode") options.mode = 0;
    if (word == "StatisticalMode") options.mode = simMode::statistical;
}

void StoreRuns(SimOptions& options, std::string_view word) {
    options.NUMRUNSTODO = ReadInt(word);
}

void StoreSaveParams(SimOptions& options, std::string_view word) {
    options.SAVEPARAMS = word == "TRUE" ? 1 : 0;
}

void StoreSaveMode(SimOptions& options, std::string_view word) {
    options.SIGSAVEMODE = CodeOf(optionSaveModeWords, word).value_or(optionUseNodeSetting);
}

void StorePlotting(SimOptions& options, std::string_view word) {
    options.PLOTTING =
        static_cast<std::int16_t>(CodeOf(plottingWords, word).value_or(DisplayAllPlots));
}

constexpr CodedOption codedOptions[] = {
    {"SIMMODE", StoreMode},         {"NUMRUNSTODO", StoreRuns},  {"SAVEPARAMS", StoreSaveParams},
    {"SIGSAVEMODE", StoreSaveMode}, {"PLOTTING", StorePlotting},
};

void StoreTextOption(SimOptions& options, const TextOption& option, std::string_view word) {
    if (word.empty() && option.missing == TextOption::KeepsValue) return;
    options.*option.field = CleanWord(word);
}

}  // namespace

Status ReadOptions(TopologyContext& context) {
    SimOptions& options = *context.workspace.options;
    while (context.lines.Next()) {
        const std::string_view keyword = context.lines.Word();
        if (keyword == "ENDSIMOPTIONS") return Status::Success;
        const auto coded = std::ranges::find(codedOptions, keyword, &CodedOption::keyword);
        const auto text = std::ranges::find(textOptions, keyword, &TextOption::keyword);
        if (coded != std::end(codedOptions)) coded->store(options, context.lines.Word());
        if (text != textOptions.end()) StoreTextOption(options, *text, context.lines.Word());
    }
    return EndsInside(context, "SIMOPTIONS");
}

namespace {

/// By design: the first new number of a line goes in front of the list, each later one
/// after the one before and cuts off what followed, so that with two or more numbers node 0 drops
/// out; a number already there is skipped.
void PlaceOnList(NodeListCells& list, Node& node, int placedBefore) {
    if (placedBefore == 0) {
        list.cells.push_front(&node);
    } else {
        if (placedBefore == 1) {
            list.cells.resize(1);
            list.numbers = {list.cells.front()->number};
        }
        list.cells.push_back(&node);
    }
    list.numbers.insert(node.number);
}

Status ReadNodeList(TopologyContext& context, NodeListCells& list, std::uint16_t flag) {
    for (int placed = 0;;) {
        const std::string_view token = context.lines.Word();
        if (token.empty()) return Status::Success;
        std::size_t used = 0;
        const std::int32_t number = ReadInt(token, &used);
        if (used == 0 || list.numbers.contains(number)) continue;
        if (context.workspace.nodes.size() >= maxTopologyNodes) {
            return Fault(context, "ERROR reading topology file: too many nodes\n");
        }
        Node& node = FindOrCreateNode(number, context.workspace);
        node.flags |= flag;
        PlaceOnList(list, node, placed++);
    }
}

/// LINE a b c d text
NodeLine ReadNodeLine(LineReader& lines) {
    NodeLine line;
    for (std::int32_t& number : line.numbers) number = ReadInt(lines.Word());
    line.text = CleanLine(lines.Rest());
    return line;
}

Status ReadNodeSaveMode(TopologyContext& context, Node& node) {
    const std::string_view word = context.lines.Word();
    const auto mode = CodeOf(nodeSaveModeWords, word);
    if (mode) {
        node.SIGNALSAVEMODE = *mode;
        return Status::Success;
    }
    return Fault(context,
                 Concat("Error loading topology: node signalsavemode cannot be ", word, "\n"));
}

/// The node of a NODEBEGIN line, with its type. By design: a node that has a type already
/// conflicts even with the same one, so a node is described once and before its components.
Status ReadNodeHead(TopologyContext& context, Node*& node) {
    const std::int32_t number = ReadInt(context.lines.Word());
    const std::string_view word = context.lines.Word();
    const auto type = CodeOf(sigTypeWords, word.empty() ? "UnknownSigType" : word);
    node = &FindOrCreateNode(number, context.workspace);
    if (!type) {
        return Fault(context,
                     Concat("Error loading topology: node signaltype cannot be type ", word, "\n"));
    }
    if (node->type != UnknownSigType) {
        return Fault(context, Concat("Error loading topology: node signaltype conflicts in node ",
                                     number, "\n"));
    }
    node->type = *type;
    return Status::Success;
}

}  // namespace

Status ReadBeginNodes(TopologyContext& context) {
    return ReadNodeList(context, context.beginNodes, nodeFlag::begin);
}

Status ReadEndNodes(TopologyContext& context) {
    return ReadNodeList(context, context.endNodes, nodeFlag::end);
}

Status ReadNodeBlock(TopologyContext& context) {
    if (context.workspace.nodes.size() >= maxTopologyNodes) {
        return Fault(context, "ERROR reading topology file: too many nodes\n");
    }
    Node* node = nullptr;
    Status status = ReadNodeHead(context, node);
    while (context.lines.Next()) {
        const std::string_view keyword = context.lines.Word();
        if (keyword == "ENDNODE") return status;
        if (keyword == "SIGNALSAVEMODE") MergeStatus(status, ReadNodeSaveMode(context, *node));
        if (keyword == "LINE") node->lines.push_back(ReadNodeLine(context.lines));
    }
    return EndsInside(context, "NODEBEGIN");
}

}  // namespace photrak
