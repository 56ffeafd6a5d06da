// Values are evaluated as a run will: over the variables of the file, the symbols of the command
// line before them, and the first points of the sweeps.
#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "files/diagnostics.h"
#include "files/value_inspector.h"
#include "kernel/expression.h"
#include "kernel/order.h"
#include "kernel/parameter_types.h"
#include "kernel/symbols.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

namespace d = diagnostic;

std::string_view TextOf(const char* text) {
    return text ? text : std::string_view();
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

}  // namespace

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

void InspectValues(Inspection& inspection, const GivenSymbols& given, Thoroughness thoroughness) {
    ValueInspector(inspection, given, thoroughness).Run();
}

}  // namespace photrak
