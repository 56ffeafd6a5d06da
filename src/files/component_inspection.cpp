// A COMPONENT block under inspection: the head, line for line, and its PARAM blocks
// (parameter_inspection.cpp).
#include "files/component_inspection.h"

#include <algorithm>

#include "base/nearest.h"
#include "base/text.h"
#include "files/catalogue.h"
#include "files/diagnostics.h"
#include "files/model_definition.h"
#include "files/superblock_file.h"
#include "files/topology_blocks.h"
#include "files/topology_words.h"
#include "kernel/order.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

namespace d = diagnostic;

constexpr std::string_view headWords[] = {"NOTE",       "ICON",      "NUMINPUTS",
                                          "NUMOUTPUTS", "INPUTFROM", "OUTPUTTO"};
constexpr std::size_t headLines = std::size(headWords);

class HeadInspector {
  public:
    explicit HeadInspector(InspectionContext& context) : context_(context), lines_(context.lines) {
        block_.place = lines_.Where();
    }

    /// False if the block ends with its head.
    bool Run() {
        Names();
        if (block_.name.empty()) return false;
        HeadLines();
        CheckCounts();
        return true;
    }
    const TypedComponent& Block() const { return block_; }

  private:
    void Names();
    void FindModelOf(std::string_view type);
    void FindSuperBlock();
    void HeadLines();
    bool HeadLine(std::size_t expected);
    void Take(std::size_t line);
    void CheckCounts();
    std::int32_t Ports(std::int32_t asked, std::int32_t own, std::int32_t least,
                       std::int32_t most) const {
        return std::min(std::max(asked == 0 ? own : asked, least), most);
    }

    InspectionContext& context_;
    LineReader& lines_;
    TypedComponent block_;
    std::int32_t counts_[2] = {0, 0}, nodes_[2] = {0, 0};
    std::string nodePlaces_[2];
};

void HeadInspector::Names() {
    block_.name = CleanWord(lines_.Word());
    const std::string type = CleanWord(lines_.Word());
    if (type.empty()) {
        context_.Tell(d::nameMissing,
                      block_.name.empty()
                          ? "COMPONENT has neither name nor model"
                          : Concat("COMPONENT '", block_.name, "' has no model after its name"),
                      block_.name);
        block_.model = FindModel(context_.catalogue, ModelOfWord(block_.name));
        context_.found.isCutShort |= block_.model == nullptr;
        return;
    }
    if (type == superBlockType) return FindSuperBlock();
    FindModelOf(ModelOfWord(type));
}

void HeadInspector::FindModelOf(std::string_view type) {
    block_.model = FindModel(context_.catalogue, type);
    if (block_.model || type.empty()) return;
    context_.found.isCutShort = true;
    context_.Tell(
        d::unknownModel, Concat("component '", block_.name, "': unknown model '", type, "'"), type,
        {},
        NearestOf(type, context_.catalogue.models, [](const auto& model) { return model->type; }));
}

void HeadInspector::FindSuperBlock() {
    block_.superBlock = CleanWord(lines_.Word());
    if (block_.superBlock.empty()) {
        context_.Tell(d::nameMissing, Concat("component '", block_.name, "': no SuperBlock named"),
                      {}, "'SuperBlock' counts");
        return;
    }
    const auto known = context_.found.superBlocks.find(block_.superBlock);
    if (known != context_.found.superBlocks.end()) {
        block_.model = known->second;
        return;
    }
    const std::string own = lines_.Name();
    const std::size_t slash = own.rfind('/');
    const auto path =
        FindSuperBlockFile(block_.superBlock + ".dts", context_.catalogue,
                           slash == std::string::npos ? std::string() : own.substr(0, slash));
    auto model = std::make_unique<Component>();
    model->name = model->type = superBlockType;
    std::string text, reason = "it is nowhere";
    if (path && ReadWholeFile(*path, text, reason, maxSuperBlockBytes)) {
        LineReader definition(text, *path);
        reason.clear();
        if (ReadModelDefinition(*model, definition, reason) != Status::Error) {
            block_.model = model.get();
            context_.found.superBlocks.emplace(block_.superBlock, block_.model);
            context_.found.definitions.push_back(std::move(model));
            return;
        }
    }
    context_.found.isCutShort = true;
    context_.Tell(d::unknownSuperBlock,
                  Concat("component '", block_.name, "': SuperBlock definition '",
                         block_.superBlock, ".dts': ", reason),
                  block_.superBlock);
}

void HeadInspector::HeadLines() {
    std::size_t expected = 0;
    while (expected < headLines && context_.Advance()) {
        if (lines_.Line().find("ENDCOMPONENT") != std::string_view::npos ||
            StartsTopologyBlock(lines_.Word())) {
            lines_.Rewind();
            context_.Tell(d::missingLine,
                          Concat("component '", block_.name, "': ", headWords[expected],
                                 " is missing before this line"),
                          lines_.Line());
            context_.found.isCutShort = true;
            context_.lineIsUnread = true;
            return;  // the parameters tell of a missing end
        }
        lines_.Rewind();
        if (!HeadLine(expected)) context_.lineIsUnread = true;
        ++expected;
    }
}

/// False if the line is not the expected one but one after it.
bool HeadInspector::HeadLine(std::size_t expected) {
    const std::string word(lines_.Word());
    if (word == headWords[expected]) {
        Take(expected);
        return true;
    }
    const bool isLater =
        std::find(headWords + expected, headWords + headLines, word) != headWords + headLines ||
        word == "PARAM";
    if (isLater) {
        context_.Tell(d::missingLine,
                      Concat("component '", block_.name, "': ", headWords[expected],
                             " is missing before this line"),
                      word);
        context_.found.isCutShort |= expected > 1;
        return false;
    }
    context_.found.isCutShort |= expected > 1;
    context_.Tell(d::unknownKeyword,
                  Concat("component '", block_.name, "': unknown keyword '", word, "', ",
                         headWords[expected], " stands here"),
                  word, {}, std::string(headWords[expected]));
    Take(expected);
    return true;
}

void HeadInspector::Take(std::size_t line) {
    if (line < 2) return;
    const bool isCount = line < 4;
    const std::size_t side = line % 2;
    nodePlaces_[side] = lines_.Where();
    std::int32_t words = 0;
    for (std::string_view word = lines_.Word(); !word.empty(); word = lines_.Word()) {
        ++words;
        if (isCount) counts_[side] = ReadInt(word);
        if (WholeInt(word)) continue;
        context_.Tell(d::noNumber,
                      Concat("component '", block_.name, "': '", word, "' after ", headWords[line],
                             " is no number"),
                      word, Concat(ReadInt(word), " counts"));
    }
    if (!isCount) nodes_[side] = words;
    if (isCount && words == 0) {
        context_.Tell(d::noNumber,
                      Concat("component '", block_.name, "': no number after ", headWords[line]),
                      {});
    }
}

void HeadInspector::CheckCounts() {
    if (!block_.model || context_.found.isCutShort) return;
    const Component& model = *block_.model;
    const std::int32_t ports[2] = {
        Ports(counts_[0], model.NUMINPUTS, model.MININPUTS, model.MAXINPUTS),
        Ports(counts_[1], model.NUMOUTPUTS, model.MINOUTPUTS, model.MAXOUTPUTS)};
    constexpr std::string_view sides[2] = {"inputs", "outputs"};
    for (std::size_t side = 0; side < 2; ++side) {
        const std::string who = Concat("component '", block_.name, "': ");
        if (nodes_[side] > ports[side]) {
            context_.TellAt(nodePlaces_[side], d::portCount,
                            Concat(who, nodes_[side], " nodes for ", ports[side], " ", sides[side]),
                            Concat(nodes_[side]));
        } else if (counts_[side] != 0 && counts_[side] != ports[side]) {
            context_
                .TellAt(nodePlaces_[side], d::portCount,
                        Concat(who, counts_[side], " ", sides[side], " asked for"),
                        Concat(counts_[side]), Concat(ports[side], " count"))
                .changesNumber = false;
        }
    }
    if (model.NUMINEQNUMOUTNODES == 1 && nodes_[0] != nodes_[1]) {
        context_.TellAt(nodePlaces_[1], d::portCount,
                        Concat("component '", block_.name, "': ", nodes_[0], " inputs and ",
                               nodes_[1], " outputs, which must be as many"),
                        Concat(nodes_[1]));
    }
}

}  // namespace

void InspectComponent(InspectionContext& context) {
    HeadInspector head(context);
    if (!head.Run()) return;
    context.found.components.push_back(head.Block());
    InspectParameters(context, head.Block());
}

}  // namespace photrak
