// The order in which the inputs of a component that closes a repetition loop are walked: what comes
// round by a wire first, then what lies outside the loop, then what lies inside.
#include "kernel/loop_inputs.h"

#include <algorithm>

#include "kernel/order.h"

namespace photrak {
namespace {

bool IsGround(const Node& node) {
    return node.number == 0;
}

/// Calls `visit` for each node that feeds a driver of `node`, ground left out.
template <class Visit>
void ForEachSource(const Node& node, Visit visit) {
    for (const Component* driver : node.drivers) {
        for (const Port& port : driver->inputs) {
            if (port.node && !IsGround(*port.node)) visit(*port.node);
        }
    }
}

/// True if the way upstream from `start` comes back to it.
bool IsFeedback(Node& start, Workspace& workspace) {
    for (auto& [number, node] : workspace.nodes) {
        node->flags &= static_cast<std::uint16_t>(~nodeFlag::visited);
    }
    bool found = false;
    std::vector<const Node*> open = {&start};
    while (!open.empty() && !found) {
        const Node& node = *open.back();
        open.pop_back();
        ForEachSource(node, [&](Node& source) {
            if (&source == &start) found = true;
            if (source.flags & nodeFlag::visited) return;
            source.flags |= nodeFlag::visited;
            open.push_back(&source);
        });
    }
    return found;
}

/// Depth-first search upstream with the running sum of open loops; each component counts once, with
/// the sum of the way that reaches it first.
class LevelSearch {
  public:
    explicit LevelSearch(Workspace& workspace) {
        for (const auto& component : workspace.components) {
            component->runFlags &= static_cast<std::uint16_t>(~runFlag::visited);
        }
    }

    std::int32_t Greatest(const Node& start) {
        Enter(start, 0);
        while (!open_.empty()) {
            Visit& visit = open_.back();
            if (visit.nextInput < visit.inputs.size()) {
                const Port& port = visit.inputs[visit.nextInput++];
                if (port.node && !IsGround(*port.node)) Enter(*port.node, visit.sum);
            } else if (visit.nextDriver < visit.drivers->size()) {
                Take(visit, *(*visit.drivers)[visit.nextDriver++]);
            } else {
                open_.pop_back();
            }
        }
        return greatest_;
    }

  private:
    struct Visit {
        const std::vector<Component*>* drivers;
        std::size_t nextDriver;
        std::int32_t before;       // the sum at the node
        std::int32_t sum;          // the same after the present driver
        std::vector<Port> inputs;  // of the present driver
        std::size_t nextInput;
    };

    void Enter(const Node& node, std::int32_t sum) {
        if ((node.flags & nodeFlag::begin) && !(node.flags & nodeFlag::end)) return;
        auto [known, isNew] = drivers_.try_emplace(&node);
        if (isNew) known->second = DriversByLevel(node);
        open_.push_back({&known->second, 0, sum, sum, {}, 0});
    }

    void Take(Visit& visit, Component& driver) {
        if (driver.runFlags & runFlag::visited) return;
        driver.runFlags |= runFlag::visited;
        visit.sum = visit.before + LoopStep(driver);
        greatest_ = std::max(greatest_, visit.sum);
        visit.inputs = driver.inputs;
        visit.nextInput = 0;
    }

    std::map<const Node*, std::vector<Component*>> drivers_;
    std::vector<Visit> open_;
    std::int32_t greatest_ = 0;
};

}  // namespace

std::vector<Node*> SortLoopInputs(Component& component, Workspace& workspace) {
    std::vector<Node*> inputs;
    for (const Port& port : component.inputs) {
        if (port.node && !IsGround(*port.node)) inputs.push_back(port.node);
    }
    if (inputs.size() < 2) return inputs;  // nothing to sort: spares the searches
    std::vector<Node*> feedback, outside, inside;
    for (auto node = inputs.rbegin(); node != inputs.rend(); ++node) {
        if (IsFeedback(**node, workspace)) {
            feedback.push_back(*node);
        } else if (LevelSearch(workspace).Greatest(**node) < 1) {
            outside.push_back(*node);
        } else {
            inside.push_back(*node);
        }
    }
    feedback.insert(feedback.end(), outside.begin(), outside.end());
    feedback.insert(feedback.end(), inside.begin(), inside.end());
    return feedback;
}

}  // namespace photrak
