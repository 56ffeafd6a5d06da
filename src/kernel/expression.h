// The expression evaluator: text in, number and error word out.
//
//   expression  term, then any number of + term or - term
//   term        power, then any number of * power or / power
//   power       atom, then any number of ^ atom, from the left
//   atom        number, ( expression ), - term, or a function call
//
// A name stands for a predefined value, else for an entry of the symbol table (whose text is
// evaluated in its turn), else for a function. Angles are in degrees.
#pragma once

#include "kernel/symbols.h"

namespace photrak {

enum class ExprError { None = 0, Syntax = 1, Parenthesis = 2, DivisionByZero = 3, TooDeep = 4 };

/// The value, 0.0 after a failure. Total work is bounded: 10^6 steps, then TooDeep. What goes
/// beyond a thousand steps is taken from the table's stepsLeft, and may not be more.
double ExprEval(const SymbolTable& table, std::string_view text, ExprError& error);

/// What a numeric field means: a plain number, or else an expression. Trailing blanks, commas and
/// semicolons do not count.
double EvalNumberText(const SymbolTable& table, std::string_view text, ExprError& error);

/// True if an expression that holds nothing but `name` looks it up in its symbol table: it is one
/// word, no number, and not predefined.
bool CanNameASymbol(std::string_view name);

}  // namespace photrak
