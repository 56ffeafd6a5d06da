// The inside of the inspection of values: which symbols there are, which of them are read, what
// each value gives. Used by value_inspection.cpp and symbol_inspection.cpp alone.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "files/number_fault.h"
#include "files/value_inspection.h"

namespace photrak {

using NameSet = std::set<std::string, std::less<>>;

/// The words of an expression that could be names.
std::vector<std::string> NamesIn(std::string_view text);
/// Types whose text is an expression.
constexpr bool IsEvaluated(std::int32_t type) {
    return type == DoubleType || type == IntType;
}

class ValueInspector {
  public:
    ValueInspector(Inspection& inspection, const GivenSymbols& given, Thoroughness thoroughness)
        : found_(inspection), given_(given), isThorough_(thoroughness == Thoroughness::ForCheck) {}

    void Run();

  private:
    void Tell(const std::string& place, const char* code, std::string text, std::string_view typed,
              std::string counts = {}, std::string nearest = {}, bool changesNumber = true) {
        if (IsFull()) return;
        found_.findings.push_back({code, place, std::move(text), std::string(typed),
                                   std::move(counts), std::move(nearest), changesNumber});
    }
    bool IsFull() const { return found_.findings.size() >= mostLoadFindings; }
    void GatherReadNames();
    void Declare(const std::string& name, const std::string& text);
    void Variables();
    void Variable(const TypedVariable& variable);
    void FaultyVariables();
    void GivenValues();
    void SweepLimits();
    void UnreadSymbols();
    bool IsMissedElsewhere(std::string_view name) const;
    void Value(const TypedValue& value);
    void Number(const TypedValue& value);
    void Pair(const TypedValue& value);
    void Character(const TypedValue& value);
    void File(const TypedValue& value);
    void Unreadable(const TypedValue& value, const NumberFault& fault);
    void NoVariable(const TypedValue& value, std::string_view name);
    bool DependsOnFault(std::string_view text) const;
    static bool IsHandedDown(const TypedValue& value);
    std::string NearestSymbol(std::string_view name) const;
    static std::string Who(const TypedValue& value) {
        return Concat("component '", value.component, "', parameter '", value.definition->name,
                      "': ");
    }

    Inspection& found_;
    const GivenSymbols& given_;
    const bool isThorough_;
    SymbolTable table_;
    std::map<std::string, std::string, std::less<>> texts_;  // of all symbols, as they count
    NameSet read_;                                           // by parameters, also by way of others
    NameSet builtInsRead_;                                   // values that hide variables
    NameSet faulty_;                                         // variables that do not evaluate
};

}  // namespace photrak
