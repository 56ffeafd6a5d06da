// The component block of a topology file: head, appearance, port counts, nodes, parameters. A block
// whose status becomes an error ends there; what it has made so far stays in the workspace.
#include "files/topology_component.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "base/text.h"
#include "files/catalogue.h"
#include "files/model_definition.h"
#include "files/param_values.h"
#include "files/topology.h"
#include "files/topology_blocks.h"
#include "files/topology_words.h"
#include "kernel/graph.h"
#include "kernel/order.h"
#include "kernel/parameters.h"
#include "platform/file_system.h"

namespace photrak {

namespace {

/// Words of a file for block types that the catalog has under one name.
struct TypeAlias {
    std::string_view alias, type;
};
constexpr TypeAlias typeAliases[] = {
    {"Optical_Scope", "EyeDiagram"},    {"Elec_Scope", "EyeDiagram"},
    {"Elec_Plot", "SignalPlot"},        {"Optical_Plot", "SignalPlot"},
    {"Elec_Spectrum", "SignalSpectra"}, {"Optical_Spectrum", "SignalSpectra"},
};

/// The ports a component will get from a prototype: 0 asks for its default.
std::int64_t PortCount(std::int32_t asked, std::int32_t standard, std::int32_t least,
                       std::int32_t most) {
    const std::int32_t count = asked == 0 ? standard : asked;
    return std::min<std::int64_t>(std::max(count, least), most);
}

/// One block being read. Each step gives false when the block cannot go on; `status` tells how it
/// went.
class ComponentReader {
  public:
    explicit ComponentReader(TopologyContext& context)
        : context_(context),
          lines_(context.lines),
          startLine_(context.lines.LineNumber()),
          start_(context.lines.Where()) {}

    Status Read() {
        const bool whole = ReadHead() && ReadAppearance() && ReadCounts() && Create() &&
                           ReadNodes("INPUTFROM", "INPUT_FROM", inputNodes_) &&
                           ReadNodes("OUTPUTTO", "OUTPUTTO", outputNodes_) && CheckNodeCounts() &&
                           ReadValues() && Evaluate();
        if (whole) {
            Finish();
        } else if (context_.afterFault == AfterFault::GoOn) {
            Withdraw();
        }
        return status_;
    }

  private:
    bool ReadHead();
    bool ReadAppearance();
    bool ReadCounts();
    bool ReadCount(std::string_view keyword, std::int32_t& count);
    bool Create();
    bool CreateFrom(const Component* prototype);
    const Component* SuperBlockPrototype(std::string& reason);
    bool ReadNodes(std::string_view keyword, std::string_view field,
                   std::vector<std::int32_t>& numbers);
    bool CheckNodeCounts();
    bool ReadValues();
    bool Evaluate();
    void Finish();
    void Withdraw();

    bool Fail(std::string_view text) {
        status_ = Fault(context_, text);
        return false;
    }
    bool FailAtEnd() {
        status_ = EndsInside(context_, Concat("COMPONENT '", name_, "'"));
        return false;
    }

    TopologyContext& context_;
    LineReader& lines_;
    int startLine_;
    std::string start_;  // "FILE:LINE" of the COMPONENT line
    Status status_ = Status::Success;
    std::string name_, type_, superBlock_, note_, icon_;
    std::int32_t x_ = 0, y_ = 0, inputs_ = 0, outputs_ = 0;
    std::vector<std::int32_t> inputNodes_, outputNodes_;
    Component* component_ = nullptr;
    bool isBodyRead_ = false;  // through ENDCOMPONENT
};

bool ComponentReader::ReadHead() {
    name_ = CleanWord(lines_.Word());
    if (name_.empty()) return Fail("Error loading topology: component name and type missing\n");
    type_ = CleanWord(lines_.Word());
    if (type_.empty()) {
        type_ = name_;
        status_ = Caution(
            context_,
            Concat("Warning loading topology: component name missing; set to '", name_, "'\n"));
    }
    if (type_ == superBlockType) {
        superBlock_ = CleanWord(lines_.Word());
        if (superBlock_.empty()) {
            superBlock_ = type_;
            status_ = Caution(context_,
                              Concat("Warning loading topology: superblock name missing; set to '",
                                     type_, "'\n"));
        }
    }
    type_ = std::string(ModelOfWord(type_));
    return true;
}

/// NOTE and ICON, each on a line of its own; any other line in their places is used up.
bool ComponentReader::ReadAppearance() {
    if (!lines_.Next()) return FailAtEnd();
    if (lines_.Word() == "NOTE") note_ = CleanLine(lines_.Rest());
    if (!lines_.Next()) return FailAtEnd();
    if (lines_.Word() != "ICON") return true;
    std::array<std::string_view, 3> words;
    for (std::string_view& word : words) word = lines_.Word();
    // A block without an icon writes its position alone: two numbers, no name.
    std::size_t used = 0;
    ReadInt(words[0], &used);
    if (words[2].empty() && !words[1].empty() && used == words[0].size()) {
        words = {"", words[0], words[1]};
    }
    icon_ = CleanWord(words[0]);
    x_ = ReadInt(words[1]);
    y_ = ReadInt(words[2]);
    return true;
}

bool ComponentReader::ReadCounts() {
    return ReadCount("NUMINPUTS", inputs_) && ReadCount("NUMOUTPUTS", outputs_);
}

/// An empty line or a missing number counts as 0, and is an error; the component is made all the
/// same. Another keyword ends the block.
bool ComponentReader::ReadCount(std::string_view keyword, std::int32_t& count) {
    if (!lines_.NextEvenIfBlank()) return FailAtEnd();
    const std::string_view word = lines_.Word();
    if (!word.empty() && word != keyword) {
        return Fail(Concat("ERROR reading topology file: component '", name_, "' needs ", keyword,
                           " here\n"));
    }
    const std::string_view number = lines_.Word();
    count = ReadInt(number);
    if (number.empty()) {
        Fail(Concat("ERROR reading topology file: component '", name_, "' has no number of ",
                    keyword, "\n"));
    }
    return true;
}

/// Reads the definition of the SuperBlock once for all its copies.
const Component* ComponentReader::SuperBlockPrototype(std::string& reason) {
    SuperBlockPrototypes& all = context_.superBlocks;
    const auto [place, isNew] = all.byFile.try_emplace(superBlock_);
    SuperBlockPrototypes::Entry& entry = place->second;
    if (isNew) {
        const std::string file = superBlock_ + ".dts";
        const std::string own(context_.lines.Name());
        const std::size_t slash = own.rfind('/');
        const auto path =
            FindSuperBlockFile(file, context_.catalogue,
                               slash == std::string::npos ? std::string() : own.substr(0, slash));
        std::string text, error = "No such file or directory";
        auto prototype = std::make_unique<Component>();
        prototype->name = prototype->type = superBlockType;
        if (!path || !ReadWholeFile(*path, text, error, maxSuperBlockBytes)) {
            entry.reason = Concat("cannot read '", file, "': ", error, "\n");
        } else {
            LineReader definition(text, *path);
            entry.bytes = text.size();
            const Status read = ReadModelDefinition(*prototype, definition, entry.reason);
            if (read != Status::Error) entry.prototype = std::move(prototype);
        }
    }
    reason = entry.reason;
    if (entry.prototype && entry.bytes > all.bytesLeft) {
        reason = "too many copies of large SuperBlocks\n";
        return nullptr;
    }
    all.bytesLeft -= entry.prototype ? entry.bytes : 0;
    return entry.prototype.get();
}

bool ComponentReader::Create() {
    if (context_.workspace.components.size() >= maxTopologyComponents) {
        return Fail("ERROR reading topology file: too many components\n");
    }
    if (type_ == superBlockType) {
        std::string reason;
        const Component* prototype = SuperBlockPrototype(reason);
        if (prototype) return CreateFrom(prototype);
        return Fail(Concat("ERROR reading topology file: Cannot create component '", name_,
                           "' of model type SuperBlock:'", superBlock_, "'\n", reason));
    }
    const Component* prototype = FindModel(context_.catalogue, type_);
    if (prototype) return CreateFrom(prototype);
    return Fail(Concat("ERROR reading topology file: Cannot create component '", name_,
                       "' of model type '", type_, "'\n"));
}

bool ComponentReader::CreateFrom(const Component* prototype) {
    const auto limit = static_cast<std::int64_t>(maxNodeTokens);
    if (PortCount(inputs_, prototype->NUMINPUTS, prototype->MININPUTS, prototype->MAXINPUTS) >
            limit ||
        PortCount(outputs_, prototype->NUMOUTPUTS, prototype->MINOUTPUTS, prototype->MAXOUTPUTS) >
            limit) {
        return Fail(Concat("ERROR reading topology file: component '", name_,
                           "' would have more ports than a file can wire (", limit, ")\n"));
    }
    // Into its place among the others it comes with all of them, at the end of the load.
    ComponentList made;
    component_ = CreateComponentFrom(*prototype, name_, inputs_, outputs_, made);
    if (!component_) {
        return Fail(Concat("ERROR reading topology file: Cannot create component '", name_,
                           "' of model type '", type_, "'\n"));
    }
    component_->superBlockFile = superBlock_;
    context_.workspace.components.push_back(std::move(made.front()));
    return true;
}

bool ComponentReader::ReadNodes(std::string_view keyword, std::string_view field,
                                std::vector<std::int32_t>& numbers) {
    if (!lines_.Next()) return FailAtEnd();
    if (lines_.Word() != keyword) {
        return Fail(Concat("TopologyLoad: Error in Component ", field, " field\n"));
    }
    while (numbers.size() < maxNodeTokens) {
        const std::string_view token = lines_.Word();
        if (token.empty()) break;
        numbers.push_back(ReadInt(token));
    }
    return true;
}

bool ComponentReader::CheckNodeCounts() {
    const auto i = static_cast<std::int32_t>(inputNodes_.size());
    const auto o = static_cast<std::int32_t>(outputNodes_.size());
    const Component& c = *component_;
    if (c.MAXINPUTS < 0 || c.MAXOUTPUTS < 0 || (c.NUMINEQNUMOUTNODES == 1 && i != o) ||
        i > c.MAXINPUTS || o > c.MAXOUTPUTS) {
        return Fail(Concat("\nTopology load ERROR in ", name_, " input or output node counts\n"));
    }
    if (inputNodes_.size() > c.inputs.size() || outputNodes_.size() > c.outputs.size()) {
        return Fail(Concat("ERROR reading topology file: component '", name_, "' has ",
                           c.inputs.size(), " input and ", c.outputs.size(), " output ports, but ",
                           i, " and ", o, " nodes\n"));
    }
    return status_ != Status::Error;
}

bool ComponentReader::ReadValues() {
    std::string report;
    const Status read = ReadParamValues(*component_, lines_, report);
    isBodyRead_ = true;
    if (read == Status::Error && report.empty()) {
        report = "ERROR reading topology file: a parameter does not fit its model\n";
    }
    if (!report.empty()) {
        AppendLocated(context_.workspace.errorText, Concat(report, "in component '", name_, "'\n"),
                      start_);
    }
    MergeStatus(status_, read);
    return status_ != Status::Error;
}

bool ComponentReader::Evaluate() {
    const std::string prefix = Concat("Component '", name_, "' of type '", type_, "': ");
    std::string report = prefix;
    MergeStatus(status_, EvalComponentParams(*component_, &context_.workspace, report));
    if (report.size() > prefix.size()) {
        AppendLocated(context_.workspace.errorText, report, start_);
    }
    return status_ != Status::Error;
}

void ComponentReader::Finish() {
    component_->NOTE = std::move(note_);
    component_->ICON = std::move(icon_);
    component_->x = x_;
    component_->y = y_;
    for (std::size_t i = inputNodes_.size(); i > 0; --i) {
        AttachInput(*component_, static_cast<std::int32_t>(i), inputNodes_[i - 1],
                    context_.workspace);
    }
    for (std::size_t i = outputNodes_.size(); i > 0; --i) {
        AttachOutput(*component_, static_cast<std::int32_t>(i), outputNodes_[i - 1],
                     context_.workspace);
    }
}

/// Takes a faulty component out of the workspace and moves to the end of its block, or to the line
/// that starts another one if the end is missing.
void ComponentReader::Withdraw() {
    std::erase_if(context_.workspace.components,
                  [this](const auto& component) { return component.get() == component_; });
    if (isBodyRead_) return;
    do {
        lines_.Rewind();
        if (lines_.Line().find("ENDCOMPONENT") != std::string_view::npos) return;
        const std::string_view word = lines_.Word();
        if (lines_.LineNumber() != startLine_ && (word == "COMPONENT" || word == "NODEBEGIN")) {
            context_.lineIsUnread = true;
            return;
        }
    } while (lines_.Next());
}

}  // namespace

std::string_view ModelOfWord(std::string_view word) {
    const auto row = std::ranges::find(typeAliases, word, &TypeAlias::alias);
    return row == std::end(typeAliases) ? word : row->type;
}

Status ReadComponentBlock(TopologyContext& context) {
    return ComponentReader(context).Read();
}

}  // namespace photrak
