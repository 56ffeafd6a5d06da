// Values are evaluated as a run will: over the variables of the file, the symbols of the command
// line before them, and the first points of the sweeps.
#include "files/value_inspection.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>

#include "base/nearest.h"
#include "base/text.h"
#include "files/diagnostics.h"
#include "files/number_fault.h"
#include "kernel/expression.h"
#include "kernel/expression_functions.h"
#include "kernel/expression_tokens.h"
#include "kernel/order.h"
#include "kernel/parameter_types.h"
#include "kernel/sweep_settings.h"
#include "kernel/symbols.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

namespace d = diagnostic;

using NameSet = std::set<std::string, std::less<>>;

std::string_view TextOf(const char* text) {
    return text ? text : std::string_view();
}

/// The words of an expression that could be names.
std::vector<std::string> NamesIn(std::string_view text) {
    std::vector<std::string> names;
    TokenReader reader(StripNumberText(text));
    for (Token token = reader.Next(); token.kind != Token::Kind::End; token = reader.Next()) {
        const std::string_view word = StripNumberText(token.word);
        if (token.kind == Token::Kind::Word && !IsNumber(word)) names.emplace_back(word);
    }
    return names;
}

bool IsEvaluated(std::int32_t type) {
    return type == DoubleType || type == IntType;
}

/// How a limit of a parameter would move `value`; nothing if it stays.
struct Limited {
    double value;
    std::string_view side;  // "minimum", "maximum"
};
std::optional<Limited> BeyondLimit(const Parameter& parameter, double value) {
    const auto limit = [&](const void* place) {
        return parameter.type == IntType
                   ? static_cast<double>(*static_cast<const std::int32_t*>(place))
                   : *static_cast<const double*>(place);
    };
    if (!IsEvaluated(parameter.type)) return std::nullopt;
    if (parameter.min && !(value >= limit(parameter.min))) {
        return Limited{limit(parameter.min), "minimum"};
    }
    if (parameter.max && value > limit(parameter.max)) {
        return Limited{limit(parameter.max), "maximum"};
    }
    return std::nullopt;
}

class ValueInspector {
  public:
    ValueInspector(Inspection& inspection, const GivenSymbols& given, Thoroughness thoroughness)
        : found_(inspection), given_(given), isThorough_(thoroughness == Thoroughness::ForCheck) {}

    void Run();

  private:
    void Tell(const std::string& place, const char* code, std::string text, std::string_view typed,
              std::string counts = {}, std::string nearest = {}, bool changesNumber = true) {
        if (IsFull()) return;
        found_.findings.push_back({code, place, std::move(text), std::string(typed),
                                   std::move(counts), std::move(nearest), changesNumber});
    }
    bool IsFull() const { return found_.findings.size() >= mostLoadFindings; }
    void GatherReadNames();
    void Declare(const std::string& name, const std::string& text);
    void Variables();
    void Variable(const TypedVariable& variable);
    void FaultyVariables();
    void GivenValues();
    void SweepLimits();
    void UnreadSymbols();
    bool IsMissedElsewhere(std::string_view name) const;
    void Value(const TypedValue& value);
    void Number(const TypedValue& value);
    void Pair(const TypedValue& value);
    void Character(const TypedValue& value);
    void File(const TypedValue& value);
    void Unreadable(const TypedValue& value, const NumberFault& fault);
    void NoVariable(const TypedValue& value, std::string_view name);
    bool DependsOnFault(std::string_view text) const;
    static bool IsHandedDown(const TypedValue& value);
    std::string NearestSymbol(std::string_view name) const;
    static std::string Who(const TypedValue& value) {
        return Concat("component '", value.component, "', parameter '",
                      TextOf(value.definition->name), "': ");
    }

    Inspection& found_;
    const GivenSymbols& given_;
    const bool isThorough_;
    SymbolTable table_;
    std::map<std::string, std::string, std::less<>> texts_;  // of all symbols, as they count
    NameSet read_;                                           // by parameters, also by way of others
    NameSet builtInsRead_;                                   // values that hide variables
    NameSet faulty_;                                         // variables that do not evaluate
};

void ValueInspector::Run() {
    if (!AllocateSymbols(table_, symbolTableCapacity)) return;
    // A symbol of the command line takes the place of the variable; of equal names in the file the
    // latest stands first, and the first counts.
    for (const auto& [name, text] : given_.symbols) texts_.insert_or_assign(name, text);
    for (auto one = found_.variables.rbegin(); one != found_.variables.rend(); ++one) {
        if (one->name.size() < symbolNameCapacity &&
            StripNumberText(one->text).size() < symbolTextCapacity) {
            texts_.emplace(one->name, one->text);
        }
    }
    for (const auto& [name, text] : texts_) Declare(name, text);
    GatherReadNames();
    SweepLimits();  // they know no swept symbol that is not declared
    for (const TypedSweep& sweep : given_.sweeps) {
        const auto [place, isNew] = texts_.emplace(sweep.name, sweep.start);
        if (isNew) Declare(place->first, place->second);
    }
    Variables();
    GivenValues();
    for (const TypedValue& value : found_.values) {
        if (!IsFull()) Value(value);
    }
    UnreadSymbols();
}

void ValueInspector::Declare(const std::string& name, const std::string& text) {
    if (table_.count >= symbolTableCapacity) return;  // the load tells of that
    double number = 0.0;
    const bool isNumber = IsNumber(text, &number);
    SymbolInsert(table_, name, number, isNumber ? std::string_view() : StripNumberText(text));
}

void ValueInspector::GatherReadNames() {
    std::vector<std::string> open;
    for (const TypedValue& value : found_.values) {
        const std::int32_t type = value.definition->type;
        if (type == ComplexType || type == CharType) open.push_back(value.text);
        if (!IsEvaluated(type)) continue;
        for (std::string& name : NamesIn(value.text)) open.push_back(std::move(name));
    }
    for (const TypedSweep& sweep : given_.sweeps) {
        for (const std::string& text : {sweep.start, sweep.stop, sweep.step}) {
            for (std::string& name : NamesIn(text)) open.push_back(std::move(name));
        }
    }
    while (!open.empty()) {
        const std::string name = std::move(open.back());
        open.pop_back();
        if (FindSymbol(PredefinedSymbols(), name)) builtInsRead_.insert(name);
        if (builtInsRead_.contains(name) || !read_.insert(name).second) continue;
        const auto text = texts_.find(name);
        if (text == texts_.end()) continue;
        open.push_back(text->second);  // a variable of a word names another one
        for (std::string& next : NamesIn(text->second)) open.push_back(std::move(next));
    }
}

std::string ValueInspector::NearestSymbol(std::string_view name) const {
    NearestName nearest(name);
    const auto offer = [&](const std::string& other) {
        if (other != name && !FindSymbol(FunctionSymbols(), other)) nearest.Offer(other);
    };
    for (const TypedVariable& variable : found_.variables) offer(variable.name);
    for (const std::string& read : read_) offer(read);
    return nearest.Found();
}

void ValueInspector::Variables() {
    NameSet seen;
    for (const TypedVariable& variable : found_.variables) {
        if (seen.insert(variable.name).second) continue;
        Tell(variable.place, d::doubleVariable,
             Concat("variable '", variable.name, "' is declared twice"), variable.name,
             Concat("'", texts_[variable.name], "' counts"));
    }
    for (const TypedVariable& variable : found_.variables) Variable(variable);
    FaultyVariables();
}

void ValueInspector::Variable(const TypedVariable& variable) {
    const bool isRead = read_.contains(variable.name);
    if (variable.name.size() >= symbolNameCapacity ||
        StripNumberText(variable.text).size() >= symbolTextCapacity) {
        Tell(variable.place, d::variableTooLong,
             Concat("variable '", variable.name,
                    "' is too long: a name has 31 characters, its "
                    "value 79"),
             variable.name, "the variable is left out", {}, isRead);
        faulty_.insert(variable.name);
    } else if (const Symbol* built = FindSymbol(PredefinedSymbols(), variable.name)) {
        Tell(variable.place, d::hiddenVariable,
             Concat("variable '", variable.name, "' has the name of a built-in value"),
             variable.name, Concat("the built-in ", built->value, " counts"), {},
             builtInsRead_.contains(variable.name));
    }
}

/// Those that a parameter reads and that do not evaluate; one that names another faulty one is no
/// cause of its own, unless all do, in a circle.
void ValueInspector::FaultyVariables() {
    std::vector<const TypedVariable*> causes;
    const NameSet left = faulty_;
    for (const TypedVariable& variable : found_.variables) {
        if (!IsEvaluated(variable.type) || !read_.contains(variable.name) ||
            left.contains(variable.name) || texts_[variable.name] != variable.text) {
            continue;
        }
        ExprError error = ExprError::None;
        EvalNumberText(table_, variable.text, error);
        if (error == ExprError::None || !faulty_.insert(variable.name).second) continue;
        causes.push_back(&variable);
    }
    const auto follows = [&](const TypedVariable* variable) {
        const auto names = NamesIn(variable->text);
        return std::ranges::any_of(names, [&](const std::string& name) {
            return name != variable->name && faulty_.contains(name);
        });
    };
    if (!std::ranges::all_of(causes, follows)) std::erase_if(causes, follows);
    for (const TypedVariable* variable : causes) {
        const NumberFault fault = ExplainNumber(variable->text, {}, table_);
        Tell(variable->place, fault.code,
             Concat("variable '", variable->name, "': '", variable->text, "': ", fault.why),
             variable->text, "0 counts", fault.nearest);
    }
}

void ValueInspector::GivenValues() {
    for (const auto& [name, text] : given_.symbols) {
        const auto declared = std::ranges::find(found_.variables, name, &TypedVariable::name);
        const std::int32_t type =
            declared == found_.variables.end() ? std::int32_t{DoubleType} : declared->type;
        ExprError error = ExprError::None;
        EvalNumberText(table_, text, error);
        if (!read_.contains(name) || !IsEvaluated(type) || error == ExprError::None) continue;
        faulty_.insert(name);
        const NumberFault fault = ExplainNumber(text, {}, table_);
        Tell("--set", fault.code, Concat("'", name, "': '", text, "': ", fault.why), text,
             "0 counts", fault.nearest);
    }
}

void ValueInspector::SweepLimits() {
    for (const TypedSweep& sweep : given_.sweeps) {
        const struct {
            const std::string &text, &place;
        } limits[] = {{sweep.start, sweep.startPlace},
                      {sweep.stop, sweep.stopPlace},
                      {sweep.step, sweep.stepPlace}};
        double numbers[3] = {};
        bool isRead = true;
        for (std::size_t i = 0; i < 3; ++i) {
            const auto& [text, place] = limits[i];
            ExprError error = ExprError::None;
            numbers[i] = EvalNumberText(table_, text, error);
            if (error == ExprError::None) continue;
            isRead = false;
            const NumberFault fault = ExplainNumber(text, {}, table_);
            Tell(place.empty() ? sweep.place : place, fault.code,
                 Concat("sweep of '", sweep.name, "': '", text, "': ", fault.why), text, {},
                 fault.nearest);
        }
        const double points = std::ceil((numbers[1] - numbers[0]) / numbers[2]) + 1.0;
        if (isRead && !(numbers[2] != 0.0 && points >= 1.0 && points <= maxSweepPoints)) {
            Tell(sweep.stepPlace.empty() ? sweep.place : sweep.stepPlace, d::noSweep,
                 Concat("sweep of '", sweep.name, "': a step of ", sweep.step,
                        " does not lead from ", sweep.start, " to ", sweep.stop),
                 sweep.step);
        }
    }
}

/// True for a symbol that a finding has named already: what should read it is mistyped.
bool ValueInspector::IsMissedElsewhere(std::string_view name) const {
    return std::ranges::any_of(found_.findings, [&](const LoadFinding& finding) {
        return finding.nearest == name && std::string_view(finding.code) == d::unknownName;
    });
}

void ValueInspector::UnreadSymbols() {
    const auto isUnread = [&](const std::string& name) {
        return !read_.contains(name) && !IsMissedElsewhere(name);
    };
    for (const auto& [name, text] : given_.symbols) {
        if (!isUnread(name)) continue;
        const bool isBuiltIn = FindSymbol(PredefinedSymbols(), name) != nullptr;
        Tell(
            "--set", d::unreadSymbol,
            Concat("'", name, "': ",
                   isBuiltIn ? "a built-in value cannot be set" : "no parameter reads this symbol"),
            name, {}, isBuiltIn ? std::string() : NearestSymbol(name));
    }
    for (const TypedSweep& sweep : given_.sweeps) {
        if (!isUnread(sweep.name)) continue;
        Tell(sweep.place, d::unreadSweep,
             Concat("sweep of '", sweep.name, "': no parameter reads this symbol"), sweep.name, {},
             NearestSymbol(sweep.name));
    }
    for (const TypedVariable& variable : found_.variables) {
        const auto isSwept = [&](const TypedSweep& sweep) { return sweep.name == variable.name; };
        if (!isThorough_ || IsFull() || variable.type < 0 || !isUnread(variable.name) ||
            FindSymbol(PredefinedSymbols(), variable.name) ||
            std::ranges::any_of(given_.sweeps, isSwept)) {
            continue;
        }
        Tell(variable.place, d::unreadVariable,
             Concat("variable '", variable.name, "': no parameter reads it"), variable.name, {},
             NearestSymbol(variable.name), /*changesNumber=*/false);
    }
}

bool ValueInspector::DependsOnFault(std::string_view text) const {
    const auto names = NamesIn(text);
    NameSet seen(names.begin(), names.end());
    std::vector<std::string> open(names.begin(), names.end());
    while (!open.empty()) {
        const std::string name = std::move(open.back());
        open.pop_back();
        if (faulty_.contains(name)) return true;
        const auto next = texts_.find(name);
        if (next == texts_.end()) continue;
        for (std::string& inner : NamesIn(next->second)) {
            if (seen.insert(inner).second) open.push_back(std::move(inner));
        }
    }
    return false;
}

/// True for a text that a SuperBlock's definition has too: it is evaluated inside.
bool ValueInspector::IsHandedDown(const TypedValue& value) {
    return value.model->type == superBlockType && value.text == TextOf(value.definition->value);
}

void ValueInspector::Value(const TypedValue& value) {
    if (value.text.empty()) return;
    switch (TypeOf(value.definition->type).form) {
        case ValueForm::Double:
        case ValueForm::Int32:
            if (!IsArrayType(value.definition->type)) Number(value);
            break;
        case ValueForm::Pair:
            if (value.keyword == "VALUE" && !IsArrayType(value.definition->type)) Pair(value);
            break;
        case ValueForm::Char:
            Character(value);
            break;
        case ValueForm::None:
            if (isThorough_) File(value);
            break;
        case ValueForm::Int16:
            break;
    }
}

void ValueInspector::Unreadable(const TypedValue& value, const NumberFault& fault) {
    const auto limited =
        value.keyword == "VALUE" ? BeyondLimit(*value.definition, 0.0) : std::optional<Limited>();
    Tell(value.place, fault.code,
         Concat(Who(value), value.keyword == "VALUE" ? "" : Concat(value.keyword, " "), "'",
                value.text, "': ", fault.why),
         value.text, Concat(limited ? limited->value : 0.0, " counts"), fault.nearest);
}

void ValueInspector::Number(const TypedValue& value) {
    ExprError error = ExprError::None;
    constexpr std::size_t mostEvaluated = 1024;
    const std::string_view text = std::string_view(value.text).substr(0, mostEvaluated);
    const double number = EvalNumberText(table_, text, error);
    const std::string_view unit = TextOf(value.definition->UNITS);
    if (error != ExprError::None) {
        if (!DependsOnFault(text) && !IsHandedDown(value))
            Unreadable(value, ExplainNumber(text, unit, table_));
        return;
    }
    if (value.keyword != "VALUE") return;
    if (value.definition->type == IntType && IsNumber(text) && number != std::floor(number)) {
        Tell(value.place, d::notWhole, Concat(Who(value), "'", value.text, "' is no whole number"),
             value.text, Concat(std::trunc(number), " counts"));
    }
    const auto limited = BeyondLimit(*value.definition, number);
    if (!limited || !isThorough_) return;
    const std::string in = unit.empty() || unit == "none" ? std::string() : Concat(" ", unit);
    Tell(value.place, d::beyondLimit,
         Concat(Who(value), number, in, " is beyond the ", limited->side, " of ", limited->value,
                in),
         value.text, Concat(limited->value, " counts"), {}, /*changesNumber=*/false);
}

void ValueInspector::NoVariable(const TypedValue& value, std::string_view name) {
    Tell(value.place, d::unknownName,
         Concat(Who(value), "'", value.text, "': there is no variable '", name, "'"), value.text,
         {}, NearestSymbol(name));
}

/// Two numbers one after the other, or the name of a variable.
void ValueInspector::Pair(const TypedValue& value) {
    if (static_cast<unsigned char>(value.text[0]) >= 'B') {
        if (!texts_.contains(value.text)) NoVariable(value, value.text);
        return;
    }
    std::size_t used = 0, more = 0;
    const double re = ReadDouble(value.text, &used);
    const std::string_view rest = std::string_view(value.text).substr(used);
    const double im = ReadDouble(rest, &more);
    if (used > 0 && rest.substr(more).find_first_not_of(" \t") == std::string_view::npos) return;
    Tell(value.place, d::noValue,
         Concat(Who(value), "'", value.text, "' is no pair of numbers: write RE IM"), value.text,
         Concat(re, " ", im, " counts"));
}

void ValueInspector::Character(const TypedValue& value) {
    if (value.text.size() > 1 && !texts_.contains(value.text)) NoVariable(value, value.text);
}

void ValueInspector::File(const TypedValue& value) {
    constexpr std::string_view readNames[] = {"filename", "FileName", "spectraFilename",
                                              "noiseFilename"};
    const std::string_view name = TextOf(value.definition->name);
    const bool isRead = std::ranges::find(readNames, name) != std::end(readNames);
    if (!isRead || value.text == "none" || value.model->type == "SaveSigBlock" ||
        FileExists(value.text))
        return;
    Tell(value.place, d::missingFile, Concat(Who(value), "there is no file '", value.text, "'"),
         value.text, {}, {}, /*changesNumber=*/false);
}

}  // namespace

void InspectValues(Inspection& inspection, const GivenSymbols& given, Thoroughness thoroughness) {
    ValueInspector(inspection, given, thoroughness).Run();
}

std::vector<TypedSweep> SweepsOfFile(Inspection& inspection) {
    constexpr struct {
        TypedSweep::Loop loop;
        std::string_view sweep, older;
    } kinds[] = {{TypedSweep::Loop::Inner, "INNERSWEEP", "SWEEP"},
                 {TypedSweep::Loop::Outer, "OUTERSWEEP", "OUTERSWEEP"}};
    std::vector<TypedSweep> sweeps;
    for (const auto& kind : kinds) {
        TypedSweep sweep;
        sweep.loop = kind.loop;
        const struct {
            std::string_view word;
            std::string TypedSweep::*text, TypedSweep::*place;
        } fields[] = {{"VARIABLE", &TypedSweep::name, &TypedSweep::place},
                      {"STARTVAL", &TypedSweep::start, &TypedSweep::startPlace},
                      {"STOPVAL", &TypedSweep::stop, &TypedSweep::stopPlace},
                      {"STEPVAL", &TypedSweep::step, &TypedSweep::stepPlace}};
        std::string missing;
        for (const auto& [word, field, place] : fields) {
            for (const TypedOption& option : inspection.options) {
                if (option.text.empty() || (option.keyword != Concat(kind.sweep, word) &&
                                            option.keyword != Concat(kind.older, word))) {
                    continue;
                }
                sweep.*field = option.text;
                sweep.*place = option.place;
            }
            if ((sweep.*field).empty()) missing += Concat(missing.empty() ? "" : ", ", word);
        }
        const bool asksForPoints =
            !sweep.start.empty() || !sweep.stop.empty() || !sweep.step.empty();
        if (missing.empty()) {
            sweeps.push_back(std::move(sweep));
        } else if (!sweep.name.empty() && asksForPoints) {
            inspection.findings.push_back(
                {d::noSweep,
                 sweep.place,
                 Concat("sweep of '", sweep.name, "': ", kind.sweep, " ", missing, " is missing"),
                 sweep.name,
                 "there is no such sweep",
                 {},
                 true});
        }
    }
    return sweeps;
}

}  // namespace photrak
