// Two searches: which symbols a name reaches, and which components feed on one that changes.
#include "kernel/pass_lists.h"

#include <algorithm>
#include <unordered_set>

#include "kernel/expression_tokens.h"
#include "kernel/symbols.h"

namespace photrak {
namespace {

bool HasDraws(const Component& component) {
    for (const Parameter* p = component.parameters; p; p = p->next) {
        if (p->draws) return true;
    }
    return false;
}

bool DependsItself(const Component& component, const PassChange& change) {
    if (change.draws && HasDraws(component)) return true;
    return std::any_of(change.symbols.begin(), change.symbols.end(),
                       [&](const SymbolUse& use) { return use.InParameters(component); });
}

/// Marks what depends on a change, along the wires and, inside repetition loops, against them.
class DependenceSearch {
  public:
    explicit DependenceSearch(std::uint16_t flag) : flag_(flag) {}

    void Mark(Component& component) {
        if (!(component.runFlags & runFlag::ordered) || (component.runFlags & flag_)) return;
        component.runFlags |= flag_;
        open_.push_back(&component);
    }

    void Spread() {
        while (!open_.empty()) {
            const Component& component = *open_.back();
            open_.pop_back();
            MarkFed(component);
            const bool isLoopEnd = LoopStep(component) < 0;
            if (isLoopEnd || component.level > 0) MarkFeeding(component, isLoopEnd);
        }
    }

  private:
    using Nodes = std::unordered_set<const Node*>;

    void MarkFed(const Component& component) {
        for (const Port& port : component.outputs) {
            if (!IsNew(port, fed_)) continue;
            for (Component* reader : port.node->readers) Mark(*reader);
        }
    }

    /// `all`: also what stands outside the loop.
    void MarkFeeding(const Component& component, bool all) {
        for (const Port& port : component.inputs) {
            if (!IsNew(port, all ? feedingEnds_ : feeding_)) continue;
            for (Component* driver : port.node->drivers) {
                const bool leavesInsideALoop = driver->level + LoopStep(*driver) > 0;
                if (all || leavesInsideALoop) Mark(*driver);
            }
        }
    }

    /// Each node is looked at once in each way, however many components share it.
    static bool IsNew(const Port& port, Nodes& seen) {
        return port.node && port.node->number != 0 && seen.insert(port.node).second;
    }

    std::uint16_t flag_;
    std::vector<Component*> open_;
    Nodes fed_, feeding_, feedingEnds_;
};

}  // namespace

SymbolUse::SymbolUse(std::string_view name, const SymbolTable& symbols) : name_(name) {
    for (bool grew = true; grew;) {
        grew = false;
        for (std::int32_t i = 0; i < symbols.count; ++i) {
            const Symbol& symbol = symbols.entries[static_cast<std::size_t>(i)];
            if (InText(symbol.text)) grew |= through_.emplace(symbol.name).second;
        }
    }
}

// By design: the name counts wherever its letters stand, also inside a longer name. A
// component that runs once too often costs time; one that does not run is a wrong result.
bool SymbolUse::InText(std::string_view text) const {
    if (name_.empty()) return false;
    if (text.find(name_) != std::string_view::npos) return true;
    if (through_.empty()) return false;
    TokenReader reader(text);
    for (Token token = reader.Next(); token.kind != Token::Kind::End; token = reader.Next()) {
        if (token.kind != Token::Kind::Word) continue;
        if (through_.find(StripNumberText(token.word)) != through_.end()) return true;
    }
    return false;
}

bool SymbolUse::InParameters(const Component& component) const {
    for (const Parameter* p = component.parameters; p; p = p->next) {
        for (const char* text : {p->value, p->STDDEV, p->ISTDDEV}) {
            if (text && InText(text)) return true;
        }
    }
    return false;
}

RunOrder CollectPassList(const PassChange& change, const RunOrder& order) {
    for (Component* component : order) {
        component->runFlags &= static_cast<std::uint16_t>(~change.flag);
    }
    DependenceSearch search(change.flag);
    for (Component* component : order) {
        if (DependsItself(*component, change)) search.Mark(*component);
    }
    search.Spread();
    RunOrder list;
    std::copy_if(order.begin(), order.end(), std::back_inserter(list),
                 [&](const Component* c) { return (c->runFlags & change.flag) != 0; });
    return list;
}

}  // namespace photrak
