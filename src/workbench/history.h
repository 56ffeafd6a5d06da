// The steps of a diagram: every change as a state before and after, with the name of the gesture.
// Bounded in memory; the oldest steps go first.
#pragma once

#include <cstddef>
#include <deque>
#include <string>

#include "workbench/diagram_state.h"

namespace photrak {

class History {
  public:
    /// Forgets all steps; the state is where the diagram stands.
    void Start(DiagramState state);
    /// Adds a step to `state` unless nothing changed; steps ahead are dropped. True if one was
    /// added.
    bool Commit(DiagramState state, std::string_view name);
    /// One step back or forward: the state to go to, or null at the end of the steps.
    const DiagramState* Back();
    const DiagramState* Forward();

    const DiagramState& Present() const { return states_[at_].state; }
    bool Empty() const { return states_.empty(); }
    std::size_t Steps() const { return states_.empty() ? 0 : states_.size() - 1; }
    std::size_t Place() const { return at_; }
    /// The name of the step that led to state i (from 1).
    const std::string& Name(std::size_t i) const { return states_[i].name; }

  private:
    struct Step {
        DiagramState state;
        std::string name;
        std::size_t bytes = 0;  // what the step does not share with the one before
    };
    void Bound();

    std::deque<Step> states_;
    std::size_t at_ = 0, bytes_ = 0;
};

}  // namespace photrak
