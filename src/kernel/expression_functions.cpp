// Bodies of the functions, the two tables of names, and the symbol tables made from them once.
#include "kernel/expression_functions.h"

#include <algorithm>
#include <cmath>

#include "base/escape.h"
#include "base/text.h"
#include "base/units.h"

namespace photrak {

namespace {

constexpr double smallest = 1e-300;    // keeps logarithm and tangent finite
constexpr double extremeStart = 1e30;  // min starts from it, max from its negative

/// Chebyshev fit with a fractional error below 1.2e-7 everywhere. Expressions keep this one, so
/// that their values do not move with the precision of the numeric library.
double ComplementaryError(double d) {
    const double z = std::fabs(d);
    const double t = 1.0 / (1.0 + 0.5 * z);
    constexpr double coefficients[] = {0.17087277,  -0.82215223, 1.48851587,
                                       -1.13520398, 0.27886807,  -0.18628806,
                                       0.09678418,  0.37409196,  1.00002368};
    double sum = 0.0;
    for (const double coefficient : coefficients) sum = coefficient + t * sum;
    const double result = t * std::exp(-z * z - 1.26551223 + t * sum);
    return d >= 0.0 ? result : 2.0 - result;
}

double Tangent(double degrees) {
    const double angle = degrees * radiansPerDegree;
    const double sine = std::sin(angle), cosine = std::cos(angle);
    if (std::fabs(cosine) < smallest) return sine * std::copysign(1.0 / smallest, cosine);
    return sine / cosine;
}

double UnitStep(double d) {
    if (d < 0.0) return 0.0;
    return d > 0.0 ? 1.0 : 0.5;
}

double RoundHalfAway(double d) {
    return std::copysign(static_cast<double>(SaturateToInt(std::fabs(d) + 0.5)), d);
}

/// Square wave of period 1: 1 for the part `duty` of each period. Beyond 32 bits the whole part
/// saturates and the wave ends.
double SquareWave(double x, double duty) {
    if (x < 0.0) x += 1.0 - static_cast<double>(SaturateToInt(x));
    const double fraction = x - static_cast<double>(SaturateToInt(x));
    return fraction < duty ? 1.0 : 0.0;
}

/// Element (int)(k + 0.5) of the list [count, k, a, b, ...] where k is the first argument.
bool PickArgument(ExprArguments arguments, double& result) {
    if (arguments.empty()) return false;
    const std::int32_t element = SaturateToInt(arguments[0] + 0.5);
    const auto count = static_cast<std::int32_t>(arguments.size());
    if (element < 0 || element > count) return false;
    // By design: the numbering counts the selector itself, so that 2 picks the argument
    // after it, 1 gives the selector and 0 the number of arguments.
    result = element == 0 ? count : arguments[static_cast<std::size_t>(element) - 1];
    return true;
}

/// By design: the name stays reserved and empty, its value is 0 whatever it is given.
bool SlabIndex(ExprArguments, double& result) {
    result = 0.0;
    return true;
}

bool Smallest(ExprArguments arguments, double& result) {
    result = extremeStart;
    for (const double argument : arguments) result = std::min(result, argument);
    return true;
}

bool Largest(ExprArguments arguments, double& result) {
    result = -extremeStart;
    for (const double argument : arguments) result = std::max(result, argument);
    return true;
}

// The order gives the function numbers.
// clang-format off
constexpr ExprFunction functionTable[] = {
    {"sqrt",  [](double d) { return std::sqrt(d < 0.0 ? 0.0 : d); }},
    {"abs",   [](double d) { return std::fabs(d); }},
    {"log",   [](double d) { return std::log(d < smallest ? smallest : d); }},
    {"exp",   [](double d) { return std::exp(d); }},
    {"erf",   [](double d) { return 1.0 - ComplementaryError(d); }},
    {"erfc",  ComplementaryError},
    {"cos",   [](double d) { return std::cos(d * radiansPerDegree); }},
    {"sin",   [](double d) { return std::sin(d * radiansPerDegree); }},
    {"tan",   Tangent},
    {"acos",  [](double d) { return std::acos(d) / radiansPerDegree; }},
    {"asin",  [](double d) { return std::asin(d) / radiansPerDegree; }},
    {"atan",  [](double d) { return std::atan(d) / radiansPerDegree; }},
    {"u",     UnitStep},
    {"um",    [](double d) { return d > 0.0 ? 1.0 : 0.0; }},
    {"up",    [](double d) { return d >= 0.0 ? 1.0 : 0.0; }},
    {"clip",  [](double d) { return std::clamp(d, 0.0, 1.0); }},
    {"ceil",  [](double d) { return std::ceil(d); }},
    {"floor", [](double d) { return std::floor(d); }},
    {"round", RoundHalfAway},
    {"step",  [](double d) { return SquareWave(d, 0.5); }},
    {"step2", nullptr, SquareWave},
    {"multiarg", nullptr, nullptr, PickArgument},
    {"slabneff", nullptr, nullptr, SlabIndex},
    {"min",      nullptr, nullptr, Smallest},
    {"max",      nullptr, nullptr, Largest},
};

constexpr struct { const char* name; double value; } predefinedTable[] = {
    {"default", -1e30},
    {"inf", 1e30},
    {"c", 299792458.0},          // speed of light, m/s
    {"e", 2.718281828459045},
    {"pi", 3.141592653589793},
    {"true", 1.0}, {"yes", 1.0},
    {"false", 0.0}, {"no", 0.0},
};
// clang-format on

constexpr std::int32_t functionCapacity = 27;
static_assert(std::size(functionTable) <= functionCapacity);
static_assert(std::size(predefinedTable) <= symbolTableCapacity);

}  // namespace

std::span<const ExprFunction> ExprFunctions() {
    return functionTable;
}

const SymbolTable& FunctionSymbols() {
    static SymbolTable table;
    if (table.entries) return table;
    if (!AllocateSymbols(table, functionCapacity)) {
        FatalError("insufficient memory for function table");
        return table;
    }
    double number = 0.0;
    for (const ExprFunction& function : functionTable) {
        SymbolInsert(table, function.name, ++number, {});
    }
    return table;
}

const SymbolTable& PredefinedSymbols() {
    static SymbolTable table;
    if (table.entries) return table;
    if (!AllocateSymbols(table, symbolTableCapacity)) {
        FatalError("insufficient memory for predefined symbol table");
        return table;
    }
    for (const auto& [name, value] : predefinedTable) SymbolInsert(table, name, value, {});
    return table;
}

}  // namespace photrak
