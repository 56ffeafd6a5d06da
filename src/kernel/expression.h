// The expression evaluator: text in, number and error word out. One evaluation at a time.
#pragma once

#include "kernel/symbols.h"

namespace photrak {

enum class ExprError { None = 0, Syntax = 1, Parenthesis = 2, DivisionByZero = 3, TooDeep = 4 };

/// The value, 0.0 after a failure. Total work is bounded: 10^6 steps, then TooDeep.
double ExprEval(const SymbolTable& table, std::string_view text, ExprError& error);

}  // namespace photrak
