// The definition file of a SuperBlock, written beside its topology: In and Out blocks become its
// ports, the variables of the topology its parameters.
#include "files/superblock_file.h"

#include <algorithm>
#include <set>

#include "base/text.h"
#include "files/topology.h"
#include "files/topology_words.h"
#include "kernel/external_commands.h"
#include "kernel/parameters.h"
#include "platform/file_system.h"
#include "platform/host.h"

namespace photrak {

namespace {

/// Names that belong to one SuperBlock.
struct SuperBlockNames {
    std::string definition;  // path of the .dts
    std::string stem;        // last part of the path, without extension
    std::string icon;
};

/// The extension is what stands after the last full stop of the last part, so that a directory
/// with a full stop in its name stays whole.
SuperBlockNames NamesFor(const std::string& topologyFile) {
    const std::size_t slash = topologyFile.find_last_of("/\\");
    const std::size_t part = slash == std::string::npos ? 0 : slash + 1;
    const std::size_t stop = topologyFile.rfind('.');
    const bool hasExtension = stop != std::string::npos && stop >= part;
    const std::string path = hasExtension ? topologyFile.substr(0, stop) : topologyFile;
    const std::string stem = path.substr(part);
    return {path + ".dts", stem, stem + ".bmp"};
}

/// The icon of a new SuperBlock: an empty one that an editor opens, or the common one. An icon that
/// is there already stays.
void ProvideIcon(const SuperBlockNames& names, const Catalogue& catalogue) {
    const bool draws =
        CurrentHost().messages->QueryBox("Create a new icon for this SuperBlock?", queryTitle);
    const std::string source = catalogue.modelDirectory + (draws ? "blanku.bmp" : "sprblku.bmp");
    // Beside the definition the path rule finds it, wherever that lies.
    const std::string target =
        names.definition.substr(0, names.definition.size() - (names.stem + ".dts").size()) +
        names.icon;
    // Without an icon the block shows as nothing and works all the same.
    const bool there = FileExists(target) || CopyWholeFile(source, target);
    if (draws && there) RunIconEditor(target, Wait::No);
}

std::string InputTypes(const std::vector<Component*>& ins) {
    if (ins.empty()) return "INSIGTYPES NoSigType\n";
    std::string line = "INSIGTYPES ";
    for (const Component* block : ins) {
        const std::string_view type = GetParamText(block->parameters, "signalType", "");
        line += Concat(type.empty() ? "UnknownSigType" : CleanWord(type), " ");
    }
    return line + "\n";
}

/// The node that the Out block takes its signal from, as far as its type has a word; or null.
const Node* NodeOf(const Component& outBlock) {
    const Node* node = outBlock.inputs.empty() ? nullptr : outBlock.inputs.front().node;
    return node && node->type >= OpSigType && node->type <= NoSigType ? node : nullptr;
}

std::string OutputTypes(const std::vector<Component*>& outs) {
    if (outs.empty()) return "OUTSIGTYPES NoSigType\n";
    std::string line = "OUTSIGTYPES ";
    for (const Component* block : outs) {
        if (const Node* node = NodeOf(*block)) {
            line += Concat(WordOf(sigTypeWords, node->type, ""), " ");
        }
    }
    return line + "\n";
}

std::string LimitLines(std::string_view widest) {
    if (widest.empty()) return {};
    return Concat("MINVALUE -", widest, " \nMAXVALUE ", widest, " \n");
}

std::string DeviationLines(Deviation deviation) {
    std::string lines;
    if (deviation != Deviation::None) lines += "STDDEV 0\nPROBDIST NoProbDist\n";
    if (deviation == Deviation::OfBothParts) lines += "ISTDDEV 0\nIPROBDIST NoProbDist\n";
    return lines;
}

/// A parameter that stands for the variable; a choice has the variable's text as its only word.
std::string VariableBlock(const Variable& variable) {
    const ParameterType& type = TypeOf(variable.type);
    const std::string head = Concat("\nPARAM ", CleanName(variable.name), " ");
    if (type.word.empty() || IsArray(type)) return head + "UnknownType\nENDPARAM\n";
    const std::string value = CleanLine(variable.value);
    std::string text = Concat(head, type.word, "\n", LimitLines(type.widestLimit), "VALUE ", value,
                              "\n", DeviationLines(type.deviation));
    if (type.unitsKeyword == "FIELD") text += Concat("FIELD ", value, "\n");
    if (type.unitsKeyword == "UNITS") text += "UNITS unknown\n";
    return text + "ENDPARAM\n";
}

}  // namespace

bool CanNameASuperBlock(const std::string& topologyFile) {
    return NamesFor(topologyFile).stem.find_first_of(" \t:\"'") == std::string::npos;
}

std::string SuperBlockText(const std::string& stem, const SuperBlockPorts& ports,
                           const std::vector<Variable>& variables) {
    const std::size_t ins = std::max<std::size_t>(ports.ins.size(), 1);
    const std::size_t outs = std::max<std::size_t>(ports.outs.size(), 1);
    const std::string clean = CleanLine(stem);
    std::string text =
        Concat("SuperBlock ", clean, "\nICON ", clean, ".bmp 0 0\nNOTE SuperBlock ", clean, "\n");
    text += Concat("MININPUTS ", ins, "\nMAXINPUTS ", ins, "\n");
    text += Concat("MINOUTPUTS ", outs, "\nMAXOUTPUTS ", outs, "\n");
    text += "NUMINEQNUMOUTNODES FALSE\n";
    text += Concat("NUMINPUTS ", ins, "\nNUMOUTPUTS ", outs, "\n");
    text += InputTypes(ports.ins) + OutputTypes(ports.outs);
    // Of equal names the first is the one that a look-up finds.
    std::set<std::string> written;
    for (const Variable& variable : variables) {
        if (written.insert(CleanName(variable.name)).second) text += VariableBlock(variable);
    }
    return text + "\nENDCOMPONENT\n";
}

Status WriteSuperBlockFile(const std::string& fileName, const SuperBlockPorts& ports,
                           const std::vector<Variable>& variables, const Catalogue& catalogue,
                           std::string& errorText) {
    const SuperBlockNames names = NamesFor(fileName);
    if (names.stem.empty() || !CanNameASuperBlock(fileName)) {
        errorText += Concat("ERROR saving SuperBlock: '", fileName,
                            "': the name of a SuperBlock's file may hold no blank, colon or "
                            "quote\n");
        return Status::Error;
    }
    if (!FileExists(names.definition)) ProvideIcon(names, catalogue);
    if (ReplaceFile(names.definition, SuperBlockText(names.stem, ports, variables)))
        return Status::Success;
    errorText += Concat("ERROR saving SuperBlock: cannot write '", names.definition, "'\n");
    return Status::Error;
}

bool HasPortsOf(const Component& definition, const SuperBlockPorts& ports) {
    std::vector<std::int32_t> ins, outs;
    for (const Component* block : ports.ins) {
        const std::string_view word = GetParamText(block->parameters, "signalType", "");
        ins.push_back(CodeOf(sigTypeWords, word).value_or(UnknownSigType));
    }
    for (const Component* block : ports.outs) {
        if (const Node* node = NodeOf(*block)) outs.push_back(node->type);
    }
    if (ports.ins.empty()) ins = {NoSigType};
    if (ports.outs.empty()) outs = {NoSigType};
    const auto type = [](const Port& port) { return port.sigType; };
    const auto count = [](const std::vector<Component*>& blocks) {
        return static_cast<std::int32_t>(std::max<std::size_t>(blocks.size(), 1));
    };
    return definition.NUMINPUTS == count(ports.ins) && definition.NUMOUTPUTS == count(ports.outs) &&
           std::ranges::equal(definition.inputs, ins, {}, type) &&
           std::ranges::equal(definition.outputs, outs, {}, type);
}

std::optional<std::string> FindSuperBlockFile(const std::string& name, const Catalogue& catalogue,
                                              const std::string& folder) {
    const std::string beside = folder.empty() ? name : Concat(folder, "/", name);
    for (const std::string& path : {name, catalogue.superBlockDirectory + name, beside}) {
        if (FileExists(path)) return path;
    }
    return std::nullopt;
}

}  // namespace photrak
