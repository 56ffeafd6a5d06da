// What an expression may call and name without declaring it: the function table and the predefined
// symbols.
#pragma once

#include <cstddef>
#include <span>

#include "kernel/symbols.h"

namespace photrak {

using ExprArguments = std::span<const double>;
inline constexpr std::size_t maxExprArguments = 10;

/// Exactly one of the bodies is set; which one tells how the arguments are read.
struct ExprFunction {
    const char* name;
    double (*ofOne)(double);                           // f(d)
    double (*ofTwo)(double, double) = nullptr;         // f(d, w)
    bool (*ofList)(ExprArguments, double&) = nullptr;  // up to ten; false refuses the arguments
};

/// All functions; the number of a function is its place, from 1.
std::span<const ExprFunction> ExprFunctions();

/// Function numbers by name, and predefined values by name. Both are made on first use and stay;
/// without memory they go to FatalError.
const SymbolTable& FunctionSymbols();
const SymbolTable& PredefinedSymbols();

}  // namespace photrak
