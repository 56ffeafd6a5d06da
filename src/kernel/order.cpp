// The run order by a post-order walk against the wires, with a stack of its own: a diagram may be a
// chain of any length.
#include "kernel/order.h"

#include <unordered_set>

#include "base/text.h"

namespace photrak {
namespace {

Status CheckNodes(const std::string& path, const std::vector<Port>& ports, const char* kind,
                  std::string& errorText) {
    for (std::size_t i = 0; i < ports.size(); ++i) {
        if (ports[i].node) continue;
        AppendPiece(errorText, Concat("ERROR: ", kind, " ", i + 1, " of component '", path,
                                      "' stands on no node\n"));
        return Status::Error;
    }
    return Status::Success;
}

class OrderWalk {
  public:
    OrderWalk(Workspace& workspace, RunOrder& order, NodeSet& nodes, std::string& errorText)
        : workspace_(workspace), order_(order), nodes_(nodes), errorText_(errorText) {}

    Status From(Node& start, std::int32_t depth) {
        Enter(start, depth);
        while (!open_.empty()) {
            Visit& visit = open_.back();
            if (visit.nextInput < visit.inputs.size()) {
                Enter(*visit.inputs[visit.nextInput++], 0);
                continue;
            }
            if (visit.present) Close(visit);
            Status status = Status::Success;
            if (visit.nextDriver < visit.drivers.size()) {
                status = Open(visit, *visit.drivers[visit.nextDriver++]);
            } else {
                status = Leave(visit);
            }
            if (status == Status::Error) return status;
        }
        return Status::Success;
    }

  private:
    struct Visit {
        Node* node = nullptr;
        std::int32_t depth = 0;
        std::size_t orderedBefore = 0;
        std::vector<Component*> drivers;
        std::size_t nextDriver = 0;
        std::int32_t adjust = 0;
        Component* present = nullptr;  // the driver whose inputs are being walked
        std::vector<Node*> inputs;
        std::size_t nextInput = 0;
    };

    /// A node walked to its end has only ordered drivers; walking it again would find nothing.
    void Enter(Node& node, std::int32_t depth) {
        if ((node.flags & nodeFlag::begin) && !(node.flags & nodeFlag::end)) return;
        if (finished_.count(&node)) return;
        Visit visit;
        visit.node = &node;
        visit.depth = depth;
        visit.orderedBefore = order_.size();
        visit.drivers = DriversByLevel(node);
        open_.push_back(std::move(visit));
    }

    Status Open(Visit& visit, Component& driver) {
        if (driver.runFlags & (runFlag::ordered | runFlag::independent)) return Status::Success;
        if (driver.runFlags & runFlag::open) {
            AppendPiece(errorText_, Concat("ERROR: component '", workspace_.name, driver.name,
                                           "' is wired in a cycle; a signal goes round only "
                                           "between a LoopBeginBlock and a LoopEndBlock\n"));
            return Status::Error;
        }
        if (CheckPortNodes(workspace_, driver, errorText_) == Status::Error) return Status::Error;
        // By design: an ordinary driver goes on with the adjustment of the loop block that
        // was queued before it on this node.
        if (const std::int32_t step = LoopStep(driver); step != 0) visit.adjust = -step;
        driver.runFlags |= runFlag::open;
        visit.present = &driver;
        visit.nextInput = 0;
        visit.inputs = visit.depth + visit.adjust < 1 ? InputsInOrder(driver)
                                                      : SortLoopInputs(driver, workspace_);
        return Status::Success;
    }

    static std::vector<Node*> InputsInOrder(const Component& component) {
        std::vector<Node*> inputs;
        for (const Port& port : component.inputs) {
            if (port.node->number != 0) inputs.push_back(port.node);
        }
        return inputs;
    }

    void Close(Visit& visit) {
        Component& component = *visit.present;
        visit.present = nullptr;
        component.runFlags &= static_cast<std::uint16_t>(~runFlag::open);
        if (!(component.runFlags & (runFlag::ordered | runFlag::independent))) Append(component);
    }

    void Append(Component& component) {
        component.runFlags |= runFlag::ordered;
        order_.push_back(&component);
    }

    Status Leave(const Visit& visit) {
        Node& node = *visit.node;
        finished_.insert(&node);
        const bool grew = order_.size() > visit.orderedBefore;
        open_.pop_back();
        if (!grew || node.number == 0) return Status::Success;
        nodes_.emplace(node.number, &node);
        for (Component* reader : node.readers) {
            const bool isPlot =
                !(reader->runFlags & runFlag::ordered) && !reader->outputs.empty() &&
                reader->outputs.front().sigType == NoSigType && reader->NUMINPUTS == 1;
            if (!isPlot) continue;
            if (CheckPortNodes(workspace_, *reader, errorText_) == Status::Error)
                return Status::Error;
            Append(*reader);
        }
        return Status::Success;
    }

    Workspace& workspace_;
    RunOrder& order_;
    NodeSet& nodes_;
    std::string& errorText_;
    std::vector<Visit> open_;
    std::unordered_set<const Node*> finished_;
};

}  // namespace

Status CheckPortNodes(const Workspace& workspace, const Component& component,
                      std::string& errorText) {
    const std::string path = workspace.name + component.name;
    const Status inputs = CheckNodes(path, component.inputs, "input", errorText);
    if (inputs != Status::Success) return inputs;
    return CheckNodes(path, component.outputs, "output", errorText);
}

Status OrderFromNode(Node& node, std::int32_t depth, Workspace& workspace, RunOrder& order,
                     NodeSet& nodes, std::string& errorText) {
    return OrderWalk(workspace, order, nodes, errorText).From(node, depth);
}

Status OrderWorkspace(Workspace& workspace, RunOrder& order, NodeSet& nodes,
                      std::string& errorText) {
    for (const auto& component : workspace.components) component->runFlags = 0;
    for (const auto& component : workspace.components) {
        if (CheckPortNodes(workspace, *component, errorText) == Status::Error) return Status::Error;
    }
    if (AssignLevels(workspace, errorText) == Status::Error) return Status::Error;
    for (Node* node : workspace.ENDNODES) {
        if (OrderFromNode(*node, 0, workspace, order, nodes, errorText) == Status::Error) {
            return Status::Error;
        }
    }
    return Status::Success;
}

}  // namespace photrak
