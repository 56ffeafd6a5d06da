// What must run again when something changes between passes: a sweep's symbol, or the draws of a
// statistical run. All other components keep their results on the nodes.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "kernel/order.h"

namespace photrak {

/// The texts that depend on a symbol.
class SymbolUse {
  public:
    /// `name` and all symbols whose texts lead to it.
    SymbolUse(std::string_view name, const SymbolTable& symbols);
    bool InText(std::string_view text) const;
    /// True if a value or a deviation of one of its parameters does.
    bool InParameters(const Component& component) const;

  private:
    std::string name_;
    std::set<std::string, std::less<>> through_;
};

/// A kind of change, by what depends on it at first hand.
struct PassChange {
    std::uint16_t flag = 0;  // runFlag outer, inner or draws, for the components that depend on it
    std::vector<SymbolUse> symbols;
    bool draws = false;  // whether parameters with draws change
};

/// The part of the run order that depends on the change, in the same sequence; its components get
/// the flag. What is fed by a dependent component depends too. A repetition loop runs as a whole:
/// what stands between its blocks runs again with any part of it, and so does what feeds its end,
/// which takes the signals away from there. Takes a time that grows with components and wires.
RunOrder CollectPassList(const PassChange& change, const RunOrder& order);

}  // namespace photrak
