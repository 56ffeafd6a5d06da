// Writing a topology: header, variables, options, node lists, nodes, components. The text is made
// in memory and replaces the file at once, so that no fault leaves half of one.
#include "files/topology_save.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/text.h"
#include "files/param_save.h"
#include "files/topology.h"
#include "files/topology_words.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "kernel/symbols.h"
#include "platform/file_system.h"

namespace photrak {

namespace {

/// Moves each run of equal names oldest first: loading puts a record in front of its equals, so
/// that the list comes back as it was.
template <class Record>
void PutOldestFirst(std::vector<Record*>& ascendingByName) {
    std::ranges::reverse(ascendingByName);
    std::ranges::stable_sort(ascendingByName, {}, &Record::name);
}

void WriteHeader(const Workspace& workspace, std::string& out) {
    out += Concat("NOTE ", CleanLine(workspace.NOTE), "\n");
    out += workspace.LOCKED ? "LOCKED YES\n" : "LOCKED NO\n";
}

void WriteVariables(const Workspace& workspace, std::string& out) {
    if (workspace.variables.empty()) return;
    std::vector<const Variable*> variables;
    for (const Variable& variable : workspace.variables) variables.push_back(&variable);
    PutOldestFirst(variables);
    out += "\nBEGINVARIABLES\n";
    for (const Variable* v : variables) {
        const ParameterType& type = TypeOf(v->type);
        const bool isKnown = !IsArray(type) && !type.word.empty();
        out += Concat(CleanName(v->name, "ENDVARIABLES"), " ", isKnown ? type.word : "UnknownType",
                      " ", CleanLine(v->value), "\n");
    }
    out += "ENDVARIABLES\n";
}

void WriteOptions(const SimOptions& options, std::string& out) {
    // By design: only the low bit counts here, while loading and running use another one.
    const bool statistical = options.mode & simMode::savedStatistical;
    out += "\nSIMOPTIONS\n";
    out += Concat("SIMMODE ", statistical ? "StatisticalMode" : "SpecifiedValueMode", "\n");
    out += Concat("NUMRUNSTODO ", options.NUMRUNSTODO, "\n");
    out += Concat("SAVEPARAMS ", options.SAVEPARAMS ? "TRUE" : "FALSE", "\n");
    out += Concat("SIGSAVEMODE ",
                  WordOf(optionSaveModeWords, options.SIGSAVEMODE, "UseNodeSetting"), "\n");
    out += Concat("PLOTTING ", WordOf(plottingWords, options.PLOTTING, "DisplayAllPlots"), "\n");
    for (const TextOption& option : textOptions) {
        if (option.saved == TextOption::Never) continue;
        out += Concat(option.keyword, " ");
        if (option.saved == TextOption::WithValue) out += CleanLine(options.*option.field);
        out += '\n';
    }
    out += "ENDSIMOPTIONS\n\n";
}

/// The list from its first node that is not the ground; nothing if there is none.
std::string NodeListLine(std::string_view keyword, const std::vector<Node*>& nodes) {
    const auto isGround = [](const Node* node) { return node->number == 0; };
    const auto first = std::ranges::find_if_not(nodes, isGround);
    if (first == nodes.end()) return {};
    std::string line(keyword);
    for (auto node = first; node != nodes.end(); ++node) line += Concat(" ", (*node)->number);
    return line + "\n";
}

void WriteNodeLists(const Workspace& workspace, std::string& out) {
    const std::string begin = NodeListLine("BEGINNODES", workspace.BEGINNODES);
    if (!begin.empty()) out += "\n" + begin;
    out += NodeListLine("ENDNODES", workspace.ENDNODES);
}

void WriteNode(const Node& node, std::string& out) {
    out += Concat("\nNODEBEGIN ", node.number, " ", WordOf(sigTypeWords, node.type, "SigTypeERROR"),
                  "\n");
    const std::string_view mode = WordOf(nodeSaveModeWords, node.SIGNALSAVEMODE, "");
    if (!mode.empty()) out += Concat("SIGNALSAVEMODE ", mode, "\n");
    for (const NodeLine& line : node.lines) {
        out += "LINE ";
        for (const std::int32_t number : line.numbers) out += Concat(number, " ");
        // By design: an empty text is written as a word and reads back as that word.
        out += Concat(line.text.empty() ? "NULL" : CleanLine(line.text), "\n");
    }
    out += "ENDNODE\n";
}

/// Node numbers of the ports in order; ports at the end that stand on no node are left out.
std::string PortLine(std::string_view keyword, const std::vector<Port>& ports) {
    std::string line(keyword);
    std::size_t count = ports.size();
    while (count > 0 && !ports[count - 1].node) --count;
    for (std::size_t i = 0; i < count; ++i) {
        line += Concat(" ", ports[i].node ? ports[i].node->number : 0);
    }
    return line + "\n";
}

void WriteComponent(const Component& c, std::string& out) {
    out += Concat("\nCOMPONENT ", CleanName(c.name), " ", CleanWord(c.type), " ",
                  c.type == superBlockType ? CleanWord(c.superBlockFile) : "", "\n");
    out += Concat("NOTE ", CleanLine(c.NOTE), "\n");
    out += Concat("ICON ", CleanWord(c.ICON), " ", c.x, " ", c.y, "\n");
    out += Concat("NUMINPUTS ", c.NUMINPUTS, "\nNUMOUTPUTS ", c.NUMOUTPUTS, "\n");
    out += PortLine("INPUTFROM", c.inputs);
    out += PortLine("OUTPUTTO", c.outputs);
    for (const Parameter& parameter : Items(c.parameters)) {
        out += '\n';
        WriteParamBlock(parameter, out);
    }
    if (c.parameters) out += '\n';
    out += "ENDCOMPONENT\n";
}

std::vector<Component*> ComponentsToSave(const Workspace& workspace) {
    std::vector<Component*> components;
    for (const auto& component : workspace.components) components.push_back(component.get());
    PutOldestFirst(components);
    return components;
}

/// Evaluates each component: the port numbers of In and Out blocks come from there. An error ends
/// the saving.
Status EvaluateComponents(Workspace& workspace) {
    Status status = Status::Success;
    for (Component* component : ComponentsToSave(workspace)) {
        std::string report;
        const Status evaluated = EvalComponentParams(*component, &workspace, report);
        MergeStatus(status, evaluated);
        if (evaluated == Status::Error) {
            workspace.errorText += Concat("ERROR saving topology: component '", component->name,
                                          "' of type '", component->type, "': ", report);
            return status;
        }
    }
    return status;
}

/// The blocks of one type, ascending by port number; of equal numbers the later block goes first.
std::vector<Component*> PortBlocks(const Workspace& workspace, std::string_view type) {
    const auto number = [](const Component* block) {
        return GetParamInt(block->parameters, "portNumber", 0);
    };
    std::vector<Component*> blocks;
    for (const auto& component : workspace.components) {
        if (component->type == type) blocks.insert(blocks.begin(), component.get());
    }
    std::ranges::stable_sort(blocks, {}, number);
    return blocks;
}

}  // namespace

SuperBlockPorts FindSuperBlockPorts(const Workspace& workspace) {
    return {PortBlocks(workspace, "InBlock"), PortBlocks(workspace, "OutBlock")};
}

void TopologyText(const Workspace& workspace, std::string& text) {
    WriteHeader(workspace, text);
    WriteVariables(workspace, text);
    WriteOptions(*workspace.options, text);
    WriteNodeLists(workspace, text);
    for (const auto& [number, node] : workspace.nodes) WriteNode(*node, text);
    for (const Component* component : ComponentsToSave(workspace)) WriteComponent(*component, text);
}

Status TopologySaveText(Workspace& workspace, std::string& text) {
    // More variables than the table holds are written all the same, evaluated without it.
    std::string report;
    Status status = Status::Success;
    if (workspace.variables.size() <= static_cast<std::size_t>(symbolTableCapacity)) {
        status = BuildSymbolTable(workspace, report);
    }
    MergeStatus(status, EvaluateComponents(workspace));
    FreeSymbolTable(workspace);
    TopologyText(workspace, text);
    return status;
}

Status TopologySave(const std::string& fileName, Workspace* workspace, const Catalogue& catalogue) {
    if (fileName.empty() || !workspace) return Status::Error;
    std::string text;
    Status status = TopologySaveText(*workspace, text);
    if (status == Status::Error) return status;
    if (!ReplaceFile(fileName, text)) {
        workspace->errorText += Concat("ERROR saving topology: cannot write '", fileName,
                                       "': ", std::strerror(errno), "\n");
        return Status::Error;
    }
    const SuperBlockPorts ports = FindSuperBlockPorts(*workspace);
    if (ports.ins.empty() && ports.outs.empty()) return status;
    MergeStatus(status, WriteSuperBlockFile(fileName, ports, workspace->variables, catalogue,
                                            workspace->errorText));
    return status;
}

}  // namespace photrak
