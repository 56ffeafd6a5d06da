// Symbols under inspection: what is declared, given and swept, what reads it, and what does not
// evaluate.
#include <algorithm>
#include <cmath>

#include "base/nearest.h"
#include "base/text.h"
#include "files/diagnostics.h"
#include "files/value_inspector.h"
#include "kernel/expression.h"
#include "kernel/expression_functions.h"
#include "kernel/expression_tokens.h"
#include "kernel/sweep_settings.h"
#include "kernel/symbols.h"

namespace photrak {

namespace {
namespace d = diagnostic;
}  // namespace

std::vector<std::string> NamesIn(std::string_view text) {
    std::vector<std::string> names;
    TokenReader reader(StripNumberText(text));
    for (Token token = reader.Next(); token.kind != Token::Kind::End; token = reader.Next()) {
        const std::string_view word = StripNumberText(token.word);
        if (token.kind == Token::Kind::Word && !IsNumber(word)) names.emplace_back(word);
    }
    return names;
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
