// The symbol table: numbers and expressions by name, searched by bisection.
#pragma once

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// True if all of `text` (trailing blanks, commas and semicolons cut off first, leading blanks
/// allowed) is one decimal floating-point number; `value`, if given, receives it.
bool IsNumber(std::string_view text, double* value = nullptr);
/// `text` without its trailing blanks, commas and semicolons: what stands for a number or a name.
std::string_view StripNumberText(std::string_view text);

/// The entry of that name, or null. Borrowed until the next insertion.
const Symbol* FindSymbol(const SymbolTable& table, std::string_view name);
/// Copies the entry to `out`, or zeroes it when there is none.
bool SymbolLookup(const SymbolTable& table, std::string_view name, Symbol* out);
/// Makes room for `capacity` entries and empties the table, its steps whole; false when memory is
/// exhausted.
bool AllocateSymbols(SymbolTable& table, std::int32_t capacity);
/// Inserts in order or replaces; the table needs its entries. False (error word 1) for a name over
/// 31 or a text over 79 characters, or either with a zero byte. A full table goes to FatalError
/// with "Symbol table full, cannot insert %s".
bool SymbolInsert(SymbolTable& table, std::string_view name, double value, std::string_view text);
bool SymbolSetValue(SymbolTable& table, std::string_view name, double value);
/// Sets `value` if the symbol exists.
void SymbolGetValue(const SymbolTable& table, std::string_view name, double& value);
/// Empties the table and inserts every variable, of equal names the first. A refused variable is
/// named in `errorText` (a warning); more variables than the table holds take the escape.
Status BuildSymbolTable(Workspace& workspace, std::string& errorText);
void FreeSymbolTable(Workspace& workspace);

}  // namespace photrak
