// Names stand in byte order in one array of fixed size; every search is by halves.
#include "kernel/symbols.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "base/escape.h"
#include "base/text.h"

namespace photrak {

namespace {

/// Behind the last entry; null for a table without entries.
Symbol* End(const SymbolTable& table) {
    return table.entries ? table.entries.get() + table.count : nullptr;
}

/// Where the name stands or would stand. string_view compares bytes as unsigned.
Symbol* LowerBound(const SymbolTable& table, std::string_view name) {
    return std::lower_bound(
        table.entries.get(), End(table), name,
        [](const Symbol& entry, std::string_view key) { return entry.name < key; });
}

/// A zero byte would end the stored copy early and break the order of the table.
bool Fits(std::string_view text, std::size_t capacity) {
    return text.size() < capacity && text.find('\0') == std::string_view::npos;
}

void Store(char* place, std::size_t capacity, std::string_view text) {
    std::memset(place, 0, capacity);
    text.copy(place, capacity - 1);
}

}  // namespace

std::string_view StripNumberText(std::string_view text) {
    const std::size_t last = text.find_last_not_of(" ,;");
    return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

bool IsNumber(std::string_view text, double* value) {
    text = StripNumberText(text);
    const std::size_t first = text.find_first_not_of(' ');
    // Most texts that come here are names: turn them away before the conversion.
    if (first == std::string_view::npos ||
        std::string_view("0123456789.+-").find(text[first]) == std::string_view::npos) {
        return false;
    }
    text.remove_prefix(first);
    std::size_t used = 0;
    const double number = ReadDouble(text, &used);
    if (used != text.size()) return false;
    if (value) *value = number;
    return true;
}

const Symbol* FindSymbol(const SymbolTable& table, std::string_view name) {
    const Symbol* place = LowerBound(table, name);
    return place != End(table) && place->name == name ? place : nullptr;
}

bool SymbolLookup(const SymbolTable& table, std::string_view name, Symbol* out) {
    const Symbol* entry = FindSymbol(table, name);
    if (out) *out = entry ? *entry : Symbol{};
    return entry != nullptr;
}

bool AllocateSymbols(SymbolTable& table, std::int32_t capacity) {
    table.count = 0;
    table.stepsLeft = symbolTableSteps;
    table.entries.reset(new (std::nothrow) Symbol[static_cast<std::size_t>(capacity)]);
    return table.entries != nullptr;
}

bool SymbolInsert(SymbolTable& table, std::string_view name, double value, std::string_view text) {
    if (!table.entries || !Fits(name, symbolNameCapacity) || !Fits(text, symbolTextCapacity)) {
        return false;
    }
    Symbol* place = LowerBound(table, name);
    Symbol* end = End(table);
    if (place == end || place->name != name) {
        if (table.count >= symbolTableCapacity) {
            FatalError(FillIn("Symbol table full, cannot insert %s", {name}));
            return false;
        }
        std::copy_backward(place, end, end + 1);
        ++table.count;
        Store(place->name, symbolNameCapacity, name);
    }
    place->value = value;
    Store(place->text, symbolTextCapacity, text);
    return true;
}

bool SymbolSetValue(SymbolTable& table, std::string_view name, double value) {
    return SymbolInsert(table, name, value, {});
}

void SymbolGetValue(const SymbolTable& table, std::string_view name, double& value) {
    if (const Symbol* entry = FindSymbol(table, name)) value = entry->value;
}

Status BuildSymbolTable(Workspace& workspace, std::string& errorText) {
    SymbolTable& table = workspace.symbols;
    table.count = 0;
    if (!table.entries && !AllocateSymbols(table, symbolTableCapacity)) {
        errorText += "ERROR: insufficient memory for symbol table\n";
        return Status::Error;
    }
    Status status = Status::Success;
    for (const Variable& variable : workspace.variables) {
        // As in FindVariable the first of a name counts: what a nested run is given stands in front
        // of what its own file declares.
        if (FindSymbol(table, variable.name)) continue;
        double value = 0.0;
        const bool isNumber = variable.exact || IsNumber(variable.value, &value);
        if (variable.exact) value = *variable.exact;
        const std::string_view text =
            isNumber ? std::string_view() : StripNumberText(variable.value);
        if (SymbolInsert(table, variable.name, value, text)) continue;
        if (table.count >= symbolTableCapacity) return Status::Error;  // no level took the escape
        errorText += Concat("WARNING: variable '", variable.name,
                            "' is left out: a name may have 31 characters, its value 79\n");
        MergeStatus(status, Status::Warning);
    }
    return status;
}

void FreeSymbolTable(Workspace& workspace) {
    workspace.symbols.entries.reset();
    workspace.symbols.count = 0;
}

}  // namespace photrak
