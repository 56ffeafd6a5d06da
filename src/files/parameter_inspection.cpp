// PARAM blocks under inspection, against the definition of the model.
#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>

#include "base/nearest.h"
#include "base/text.h"
#include "files/component_inspection.h"
#include "files/diagnostics.h"
#include "files/number_fault.h"
#include "files/param_values.h"
#include "files/topology_words.h"
#include "kernel/graph.h"
#include "kernel/parameter_types.h"
#include "kernel/parameters.h"

namespace photrak {
namespace {

namespace d = diagnostic;

std::string_view TextOf(const char* text) {
    return text ? text : std::string_view();
}

std::string_view Self(std::string_view word) {
    return word;
}

/// The words of a choice, whose list lies in the units text.
std::vector<std::string_view> ChoiceWords(const Parameter& parameter) {
    constexpr std::string_view separators = " ,:\t\n";
    std::vector<std::string_view> words;
    const std::string_view fields = TextOf(parameter.UNITS);
    std::size_t at = fields.find_first_not_of(separators);
    while (at < fields.size()) {
        const std::size_t end = std::min(fields.find_first_of(separators, at), fields.size());
        words.push_back(fields.substr(at, end - at));
        at = fields.find_first_not_of(separators, end);
    }
    return words;
}

class ParameterInspector {
  public:
    ParameterInspector(InspectionContext& context, const TypedComponent& component)
        : context_(context), lines_(context.lines), component_(component) {}

    void Run();

  private:
    enum class Line { GoesOn, Ends };

    void Block();
    const Parameter* Definition();
    const ParameterType* TypeOfLine(const Parameter* definition);
    void Body();
    Line BodyLine(const std::string& word);
    void BodyWord(const std::string& word);
    void Value(const std::string& keyword);
    void Choice(const std::string& text);
    void Distribution(const std::string& keyword);
    void Unit();
    void Data();
    void Elements(std::int64_t& count);
    void CheckCount(std::int64_t count);
    bool IsUnfinished(const std::string& word, std::string_view end);

    std::vector<std::string_view> BodyWords() const;
    std::string Who() const {
        return Concat("component '", component_.name, "', parameter '", name_, "': ");
    }

    InspectionContext& context_;
    LineReader& lines_;
    const TypedComponent& component_;
    std::set<std::string> given_;
    // Of the block under way:
    std::string name_;
    const Parameter* definition_ = nullptr;
    const ParameterType* type_ = nullptr;
    std::set<std::string> keywords_;
    std::map<std::string, std::int32_t, std::less<>> shape_;  // ROWS, COLS
};

void ParameterInspector::Run() {
    while (context_.Advance()) {
        if (lines_.Line().find("ENDCOMPONENT") != std::string_view::npos) return;
        const std::string word(lines_.Word());
        if (word.empty()) continue;
        if (word == "PARAM") {
            Block();
            continue;
        }
        if (IsUnfinished(word, "ENDCOMPONENT")) return;
        const std::string nearest =
            NearestOf(word, std::array<std::string_view, 2>{"PARAM", "ENDCOMPONENT"}, Self);
        context_.Tell(nearest == "ENDCOMPONENT" ? d::missingEnd : d::unknownKeyword,
                      Concat("component '", component_.name, "': unknown keyword '", word, "'"),
                      word,
                      nearest == "ENDCOMPONENT" ? "a load takes what follows as part of the block"
                                                : "the line is skipped",
                      nearest);
        if (nearest == "ENDCOMPONENT") return;
        if (nearest == "PARAM") Block();
    }
    context_.Tell(d::missingEnd, Concat("the file ends inside component '", component_.name, "'"),
                  {});
    context_.found.isCutShort = true;
}

/// True, with a finding, at the start of another block.
bool ParameterInspector::IsUnfinished(const std::string& word, std::string_view end) {
    const bool starts = StartsTopologyBlock(word) || (end == "ENDPARAM" && word == "PARAM");
    if (!starts) return false;
    context_.Tell(d::missingEnd,
                  Concat(end == "ENDPARAM" ? Who() : Concat("component '", component_.name, "': "),
                         end, " is missing before this line"),
                  word, "a load takes what follows as part of the block");
    context_.found.isCutShort |= end != "ENDPARAM";
    context_.lineIsUnread = true;
    return true;
}

/// The parameter of the model, or null after a finding.
const Parameter* ParameterInspector::Definition() {
    if (!component_.model) return nullptr;
    Parameter* list = component_.model->parameters;
    if (const Parameter* parameter = FindByNameOrAlias(name_, list)) return parameter;
    NearestName nearest(name_);
    for (const Parameter& parameter : Items(list)) nearest.Offer(TextOf(parameter.name));
    const Parameter* meant = FindParameter(nearest.Found(), list);
    context_.Tell(d::unknownParameter,
                  Concat("component '", component_.name, "': '", component_.model->type,
                         "' has no parameter '", name_, "'"),
                  name_,
                  meant ? Concat("the default ", TextOf(meant->value), " of '", TextOf(meant->name),
                                 "' counts")
                        : std::string("the block is skipped"),
                  nearest.Found());
    return nullptr;
}

const ParameterType* ParameterInspector::TypeOfLine(const Parameter* definition) {
    const std::string word(lines_.Word());
    const ParameterType* type = FindParameterType(word);
    const ParameterType* own = definition ? &TypeOf(definition->type) : nullptr;
    if (!type) {
        const std::string right =
            own ? std::string(own->word)
                : NearestOf(word, parameterTypes,
                            [](const ParameterType& row) { return row.word; });
        context_.Tell(d::unknownType, Concat(Who(), "unknown type '", word, "'"), word, {}, right);
        return own;
    }
    if (own && own->code != type->code) {
        context_.Tell(d::otherType, Concat(Who(), "type '", word, "' is not the model's"), word,
                      "the block is read as that type", std::string(own->word));
        return own;
    }
    return type;
}

void ParameterInspector::Block() {
    name_ = lines_.Word();
    keywords_.clear();
    shape_.clear();
    definition_ = Definition();
    type_ = definition_ ? TypeOfLine(definition_) : nullptr;
    if (definition_ && !given_.insert(std::string(TextOf(definition_->name))).second) {
        context_.Tell(d::givenTwice, Concat(Who(), "given twice"), name_, "the later one counts");
    }
    Body();
}

void ParameterInspector::Body() {
    while (context_.Advance()) {
        const std::string word(lines_.Word());
        if (word == "ENDPARAM") return;
        if (word.empty()) continue;
        if (lines_.Line().find("ENDCOMPONENT") != std::string_view::npos) {
            context_.Tell(d::missingEnd, Concat(Who(), "ENDPARAM is missing before this line"),
                          word, "a load takes what follows as part of the block");
            context_.lineIsUnread = true;
            return;
        }
        if (IsUnfinished(word, "ENDPARAM")) return;
        if (BodyLine(word) == Line::Ends) return;
    }
    context_.Tell(d::missingEnd, Concat(Who(), "the file ends without ENDPARAM"), {});
    context_.found.isCutShort = true;
}

std::vector<std::string_view> ParameterInspector::BodyWords() const {
    if (IsArray(*type_)) {
        return {"ROWS",         "COLS",         "ROWSTEP",      "COLSTEP",
                "ROWSTEPTITLE", "COLSTEPTITLE", "ROWSTEPUNITS", "COLSTEPUNITS",
                "XUNITS",       "YUNITS",       "DATA"};
    }
    std::vector<std::string_view> words = {"VALUE", "UNITS", "FIELD"};
    if (type_->deviation != Deviation::None) words.insert(words.end(), {"STDDEV", "PROBDIST"});
    if (type_->deviation == Deviation::OfBothParts) {
        words.insert(words.end(), {"ISTDDEV", "IPROBDIST"});
    }
    return words;
}

ParameterInspector::Line ParameterInspector::BodyLine(const std::string& word) {
    if (!type_) return Line::GoesOn;  // told already
    std::vector<std::string_view> known = BodyWords();
    if (std::ranges::find(known, word) != known.end()) {
        BodyWord(word);
        return Line::GoesOn;
    }
    known.push_back("ENDPARAM");
    const std::string nearest = NearestOf(word, known, Self);
    if (nearest == "ENDPARAM") {
        context_.Tell(d::missingEnd, Concat(Who(), "unknown keyword '", word, "'"), word,
                      "a load takes what follows as part of the block", nearest);
        return Line::Ends;
    }
    const bool isValue = nearest == "VALUE" && definition_;
    context_.Tell(d::unknownBodyWord, Concat(Who(), "unknown keyword '", word, "'"), word,
                  isValue ? Concat("the default ", TextOf(definition_->value), " counts")
                          : std::string("the line is skipped"),
                  nearest);
    return Line::GoesOn;
}

void ParameterInspector::BodyWord(const std::string& word) {
    if (!keywords_.insert(word).second) {
        context_.Tell(d::givenTwice, Concat(Who(), word, " stands there twice"), word,
                      "the later one counts");
    }
    if (word == "VALUE" || word == "STDDEV" || word == "ISTDDEV") return Value(word);
    if (word == "PROBDIST" || word == "IPROBDIST") return Distribution(word);
    if (word == "UNITS") return Unit();
    if (word == "DATA") return Data();
    if (word != "ROWS" && word != "COLS") return;
    const std::string_view number = lines_.Word();
    shape_[word] = ReadInt(number);
    if (WholeInt(number)) return;
    context_.Tell(d::noNumber, Concat(Who(), "'", number, "' after ", word, " is no number"),
                  number, Concat(ReadInt(number), " counts"));
}

void ParameterInspector::Value(const std::string& keyword) {
    if (!definition_) return;
    const std::string text(lines_.Text());
    context_.found.values.push_back(
        {component_.name, component_.model, definition_, keyword, text, lines_.Where()});
    if (text.empty() && HasValue(*type_)) {
        context_.Tell(d::emptyValue, Concat(Who(), keyword, " is empty"), {});
    } else if (type_->code == EnumType && component_.superBlock.empty()) {
        Choice(text);
    }
}

void ParameterInspector::Choice(const std::string& text) {
    const std::vector<std::string_view> words = ChoiceWords(*definition_);
    if (std::ranges::find(words, text) != words.end()) return;
    std::string all;
    for (const std::string_view word : words) all += Concat(all.empty() ? "" : ", ", word);
    context_.Tell(d::unknownChoice, Concat(Who(), "'", text, "' is none of ", all), text,
                  "none of them counts", NearestOf(text, words, Self));
}

void ParameterInspector::Distribution(const std::string& keyword) {
    const std::string word(lines_.Word());
    if (word.empty() || CodeOf(distributionWords, word)) return;
    context_.Tell(d::unknownWord, Concat(Who(), keyword, " '", word, "' is no distribution"), word,
                  "NoProbDist counts",
                  NearestOf(word, distributionWords, [](const FileWord& row) { return row.word; }));
}

void ParameterInspector::Unit() {
    if (!definition_) return;
    const std::string typed(lines_.Text());
    const std::string_view own = TextOf(definition_->UNITS);
    if (!AreOtherUnits(typed, own)) return;
    context_.Tell(d::otherUnit, Concat(Who(), "UNITS '", typed, "' is not the model's '", own, "'"),
                  typed, Concat("the value counts in ", own));
}

/// The elements up to ENDPARAM, which stays unread.
void ParameterInspector::Data() {
    std::int64_t count = 0;
    while (context_.Advance()) {
        const std::string word(lines_.Word());
        lines_.Rewind();
        if (word == "ENDPARAM" || word == "PARAM" || StartsTopologyBlock(word) ||
            lines_.Line().find("ENDCOMPONENT") != std::string_view::npos) {
            context_.lineIsUnread = true;
            break;
        }
        Elements(count);
    }
    CheckCount(count);
}

void ParameterInspector::Elements(std::int64_t& count) {
    const bool isPair = type_->form == ValueForm::Pair;
    const bool isWhole = type_->form == ValueForm::Int32 || type_->form == ValueForm::Int16;
    for (std::string_view word = lines_.Word(); !word.empty(); word = lines_.Word()) {
        std::size_t used = 0, more = 0;
        const double number = ReadDouble(word, &used);
        if (isPair && used > 0 && used < word.size()) {
            ReadDouble(word.substr(used), &more);
            count += more > 0;
        }
        ++count;
        const bool fits =
            used > 0 && used + more == word.size() && (!isWhole || number == std::floor(number));
        if (fits) continue;
        context_.Tell(
            d::noNumber,
            Concat(Who(), "element '", word, "' is no ", isWhole ? "whole " : "", "number"), word,
            Concat(isWhole ? std::trunc(number) : number, " counts"));
    }
}

void ParameterInspector::CheckCount(std::int64_t count) {
    if (!definition_ || !IsArrayType(definition_->type) || !definition_->valactual) return;
    const auto& own = *static_cast<const ArrayRecord*>(definition_->valactual);
    const std::int64_t rows = shape_.contains("ROWS") ? shape_["ROWS"] : own.rows;
    const std::int64_t cols = shape_.contains("COLS") ? shape_["COLS"] : own.cols;
    const std::int64_t wanted = rows * cols * (type_->form == ValueForm::Pair ? 2 : 1);
    if (count == wanted) return;
    context_.Tell(d::arrayShape,
                  Concat(Who(), count, " numbers for ", rows, " rows and ", cols,
                         " columns, which take ", wanted),
                  Concat(count));
}

}  // namespace

void InspectParameters(InspectionContext& context, const TypedComponent& component) {
    ParameterInspector(context, component).Run();
}

void InspectParamText(std::string_view text, const std::string& fileName,
                      const std::string& component, const Catalogue& catalogue,
                      Inspection& inspection) {
    const auto block = std::ranges::find(inspection.components, component, &TypedComponent::name);
    if (block == inspection.components.end()) return;
    const TypedComponent target = *block;
    Inspection own;
    LineReader lines(text, fileName);
    InspectionContext context{lines, catalogue, own};
    while (context.Advance()) {
        if (lines.Word() != "COMPONENT") continue;
        lines.Word();  // a name that need not be the block's
        if (!target.model || lines.Word() != target.model->type) return;  // the load tells
        const LineReader atHead = lines;
        if (!lines.Next() || lines.Word() != "NOTE") lines = atHead;
        InspectParameters(context, target);
    }
    std::set<std::pair<const Parameter*, std::string>> given;
    for (const TypedValue& value : own.values) given.emplace(value.definition, value.keyword);
    std::erase_if(inspection.values, [&](const TypedValue& value) {
        return value.component == component && given.contains({value.definition, value.keyword});
    });
    inspection.values.insert(inspection.values.end(), own.values.begin(), own.values.end());
    inspection.findings.insert(inspection.findings.end(), own.findings.begin(), own.findings.end());
}

}  // namespace photrak
