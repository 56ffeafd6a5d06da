// The symbol table: numbers and expressions by name, searched by bisection.
#pragma once

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// True if all of `text` (trailing blanks, commas and semicolons cut off first, leading blanks
/// allowed) is one decimal floating-point number; `value`, if given, receives it.
bool IsNumber(std::string_view text, double* value = nullptr);

bool SymbolLookup(const SymbolTable& table, std::string_view name, Symbol* out);
/// Inserts in order or replaces. False (error word 1) for a name over 31 or a text over 79
/// characters. A full table goes to FatalError with "Symbol table full, cannot insert %s".
bool SymbolInsert(SymbolTable& table, std::string_view name, double value, std::string_view text);
bool SymbolSetValue(SymbolTable& table, std::string_view name, double value);
/// Sets `value` if the symbol exists.
void SymbolGetValue(const SymbolTable& table, std::string_view name, double& value);
/// Empties the table and inserts every variable. A refused variable is named in `errorText` (a
/// warning).
Status BuildSymbolTable(Workspace& workspace, std::string& errorText);
void FreeSymbolTable(Workspace& workspace);

}  // namespace photrak
