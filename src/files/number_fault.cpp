// Looks for what people type out of habit: a unit, an SI suffix, a decimal comma, a capital
// exponent, a mistyped name.
#include "files/number_fault.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "base/nearest.h"
#include "base/text.h"
#include "files/diagnostics.h"
#include "kernel/expression.h"
#include "kernel/expression_functions.h"
#include "kernel/expression_tokens.h"

namespace photrak {
namespace {

constexpr struct {
    std::string_view sign;
    double factor;
} prefixes[] = {
    {"a", 1e-18}, {"f", 1e-15},       {"p", 1e-12},       {"n", 1e-9}, {"u", 1e-6},
    {"m", 1e-3},  {"\xc2\xb5", 1e-6}, {"\xce\xbc", 1e-6}, {"c", 1e-2}, {"k", 1e3},
    {"M", 1e6},   {"G", 1e9},         {"g", 1e9},         {"T", 1e12}, {"meg", 1e6},
};

/// Units by what they stand for: those of one group are the same.
constexpr struct {
    std::string_view word, base;
} units[] = {
    {"s", "s"},
    {"sec", "s"},
    {"Hz", "Hz"},
    {"m", "m"},
    {"W", "W"},
    {"V", "V"},
    {"A", "A"},
    {"F", "F"},
    {"H", "H"},
    {"K", "K"},
    {"ohm", "ohm"},
    {"Ohm", "ohm"},
    {"b/s", "bit/s"},
    {"bit/s", "bit/s"},
    {"bps", "bit/s"},
    {"Bd", "bit/s"},
    {"dB", "dB"},
    {"dBm", "dBm"},
    {"deg", "degrees"},
    {"degrees", "degrees"},
    {"degree", "degrees"},
    {"rad", "rad"},
    {"%", "%"},
    {"dB/km", "dB/km"},
    {"ps/nm", "ps/nm"},
    {"ps/nm/km", "ps/nm/km"},
    {"ps/km/nm", "ps/nm/km"},
    {"m^2", "m^2"},
    {"s^2/m", "s^2/m"},
    {"bits", "bits"},
    {"samples", "samples"},
};

struct Unit {
    double factor = 1.0;
    std::string_view base;  // empty: a suffix alone
};

std::optional<Unit> PlainUnit(std::string_view word) {
    for (const auto& row : units) {
        if (row.word == word) return Unit{1.0, row.base};
    }
    return std::nullopt;
}

/// A unit with or without a suffix before it, or a suffix alone.
std::optional<Unit> ReadUnit(std::string_view word) {
    if (const auto plain = PlainUnit(word)) return plain;
    for (const auto& prefix : prefixes) {
        if (!word.starts_with(prefix.sign)) continue;
        const std::string_view rest = word.substr(prefix.sign.size());
        if (rest.empty()) return Unit{prefix.factor, {}};
        if (const auto plain = PlainUnit(rest)) return Unit{prefix.factor, plain->base};
    }
    return std::nullopt;
}

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string Right(double number, std::string_view unit) {
    constexpr int digits = 10;
    const std::string in = unit.empty() ? std::string() : Concat(" (in ", unit, ")");
    return Concat("write ", FormatSignificant(number, digits), in);
}

/// The number in the parameter's unit, where the two have to do with each other.
std::string RightForm(double number, const Unit& typed, std::string_view own) {
    if (typed.base == "dBm" && own == "W") {
        return Right(1e-3 * std::pow(10.0, number / 10.0), own);
    }
    if (typed.base == "%") return Right(number / 100.0, own);
    const auto unit = ReadUnit(own);
    if (unit && (typed.base.empty() || typed.base == unit->base)) {
        // A quotient of two powers of ten comes out whole only by way of a division.
        const double ratio = typed.factor / unit->factor;
        return Right(ratio < 1.0 ? number / (unit->factor / typed.factor) : number * ratio, own);
    }
    return Right(typed.factor < 1.0 ? number / (1.0 / typed.factor) : number * typed.factor,
                 typed.base);
}

/// "7 ps", "10G", "3dBm".
std::optional<NumberFault> UnitFault(std::string_view text, std::string_view own) {
    std::size_t used = 0;
    const double number = ReadDouble(text, &used);
    const std::string_view word = Trimmed(text.substr(used));
    if (used == 0 || word.empty()) return std::nullopt;
    const auto typed = ReadUnit(word);
    if (!typed) return std::nullopt;
    const char* what = typed->base.empty() ? "' is an SI suffix" : "' is a unit";
    return NumberFault{
        diagnostic::unitTyped,
        Concat("'", word, what, " and numbers take none: ", RightForm(number, *typed, own)),
        {}};
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// "1,5" and "1.5E-3*2", which have a meaning elsewhere.
std::optional<NumberFault> FormFault(std::string_view text) {
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        if (text[i] == 'E' && IsDigit(text[i - 1]) && (text[i + 1] == '-' || text[i + 1] == '+')) {
            return NumberFault{
                diagnostic::noValue,
                "the exponent of a number in an expression has a small e, as in 1e-3",
                {}};
        }
        const bool comma = text[i] == ',' && IsDigit(text[i - 1]) && IsDigit(text[i + 1]);
        if (comma && text.find('(') == std::string_view::npos) {
            std::string right(text);
            right[i] = '.';
            return NumberFault{
                diagnostic::noValue, Concat("the decimal sign is a point: write ", right), {}};
        }
        if (text[i] == '*' && text[i - 1] == '*') {
            return NumberFault{diagnostic::noValue, "a power is written with ^, as in 2^3", {}};
        }
    }
    return std::nullopt;
}

void OfferAll(NearestName& nearest, const SymbolTable& table) {
    for (std::int32_t i = 0; table.entries && i < table.count; ++i) {
        nearest.Offer(table.entries[static_cast<std::size_t>(i)].name);
    }
}

std::optional<NumberFault> NameFault(std::string_view text, const SymbolTable& table) {
    TokenReader reader(text);
    for (Token token = reader.Next(); token.kind != Token::Kind::End; token = reader.Next()) {
        const std::string_view word = StripNumberText(token.word);
        if (token.kind != Token::Kind::Word || IsNumber(word)) continue;
        if (FindSymbol(PredefinedSymbols(), word) || FindSymbol(table, word) ||
            FindSymbol(FunctionSymbols(), word)) {
            continue;
        }
        std::size_t used = 0;
        ReadDouble(word, &used);
        if (used > 0) {
            return NumberFault{
                diagnostic::noValue,
                Concat("'", word, "' is no number: a product is written with *, as in ",
                       word.substr(0, used), "*", word.substr(used)),
                {}};
        }
        NearestName nearest(word);
        OfferAll(nearest, table);
        OfferAll(nearest, PredefinedSymbols());
        OfferAll(nearest, FunctionSymbols());
        return NumberFault{diagnostic::unknownName,
                           Concat("'", word, "' is no variable, built-in value or function"),
                           nearest.Found()};
    }
    return std::nullopt;
}

constexpr struct {
    ExprError error;
    std::string_view why;
} errorTexts[] = {
    {ExprError::Syntax, "it is no expression"},
    {ExprError::Parenthesis, "a parenthesis or an argument is missing"},
    {ExprError::DivisionByZero, "it divides by zero"},
    {ExprError::TooDeep, "it refers to itself, or is too long"},
};

}  // namespace

NumberFault ExplainNumber(std::string_view text, std::string_view unit, const SymbolTable& table) {
    text = Trimmed(text);
    if (const auto fault = UnitFault(text, unit)) return *fault;
    if (const auto fault = FormFault(text)) return *fault;
    if (const auto fault = NameFault(text, table)) return *fault;
    ExprError error = ExprError::None;
    EvalNumberText(table, text, error);
    std::string_view why = errorTexts[0].why;
    for (const auto& row : errorTexts) {
        if (row.error == error) why = row.why;
    }
    return {diagnostic::noValue, std::string(why), {}};
}

bool AreOtherUnits(std::string_view typed, std::string_view own) {
    if (typed == own) return false;
    const auto a = ReadUnit(typed), b = ReadUnit(own);
    return a && b && !a->base.empty() && !b->base.empty() &&
           (a->base != b->base || a->factor != b->factor);
}

}  // namespace photrak
