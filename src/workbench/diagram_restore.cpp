// Restoring a state: everything that needs memory is made first, then put in place; what both
// states share is left alone.
#include <algorithm>
#include <new>

#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "workbench/block_copy.h"
#include "workbench/diagram_state.h"

namespace photrak {
namespace {

constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

/// A block of the state to come: where it stands now, and its settings if these change.
struct BlockPlan {
    const BlockState* state = nullptr;
    std::size_t place = nowhere;      // in the present list; nowhere: a new one
    std::unique_ptr<Component> copy;  // null: the settings stay
    Component* component = nullptr;   // the one that is kept, or the new one
    bool portsChange = true;
};

/// A node of the state to come that differs from the present one.
struct NodePlan {
    const NodeState* state = nullptr;
    std::vector<NodeLine> lines;
    std::list<Component*> readers, drivers;
};

class Restoration {
  public:
    Restoration(const DiagramState& state, const DiagramState& present, Workspace& workspace,
                BlockIds& ids)
        : state_(state), present_(present), workspace_(workspace), ids_(ids) {}

    /// Memory that runs out throws here, with nothing changed.
    void Prepare() {
        PlanBlocks();
        PlanNodes();
        header_ = *state_.header;
        begin_.reserve(header_.begin.size());
        end_.reserve(header_.end.size());
        components_.reserve(plans_.size());
    }

    void Commit() {
        ForgetParamCursor();
        PlaceBlocks();
        PlaceNodes();
        for (const BlockPlan& plan : plans_) PlacePorts(plan);
        PlaceHeader();
        DropResults();
    }

  private:
    void PlanBlocks() {
        plans_.reserve(state_.blocks.size());
        std::size_t next = 0;  // most blocks stand in the order that they had
        for (const auto& block : state_.blocks) {
            BlockPlan plan;
            plan.state = block.get();
            const auto& present = present_.blocks;
            const bool follows = next < present.size() && present[next]->id == block->id;
            plan.place = follows ? next : PlaceOf(block->id);
            if (plan.place != nowhere) next = plan.place + 1;
            Complete(plan);
            plans_.push_back(std::move(plan));
        }
    }

    std::size_t PlaceOf(std::uint64_t id) {
        if (places_.empty()) {
            std::size_t place = 0;
            for (const auto& block : present_.blocks) places_[block->id] = place++;
        }
        const auto known = places_.find(id);
        return known == places_.end() ? nowhere : known->second;
    }

    void Complete(BlockPlan& plan) {
        const bool isNew = plan.place == nowhere;
        const BlockState* old = isNew ? nullptr : present_.blocks[plan.place].get();
        plan.portsChange = isNew || old->ports != plan.state->ports;
        Component* component = isNew ? nullptr : workspace_.components[plan.place].get();
        if (isNew || old->settings != plan.state->settings) {
            std::string text;
            if (CopyComponent(plan.state->settings.get(), plan.copy, text) == Status::Error) {
                throw std::bad_alloc();
            }
            plan.portsChange = true;
            if (isNew) component = plan.copy.get();
        }
        plan.component = component;
        if (isNew) ids_.of[component] = plan.state->id;
    }

    Component* BlockOf(std::uint64_t id) {
        if (blocks_.empty()) {
            blocks_.reserve(plans_.size());
            for (const BlockPlan& plan : plans_) blocks_[plan.state->id] = plan.component;
        }
        return blocks_.at(id);
    }

    void PlanNodes() {
        auto old = present_.nodes.begin();
        const auto end = present_.nodes.end();
        for (const auto& node : state_.nodes) {
            for (; old != end && (*old)->number < node->number; ++old) {
                gone_.push_back((*old)->number);
            }
            const bool isKept = old != end && (*old)->number == node->number;
            if (isKept && *old == node) {
                ++old;
                continue;
            }
            nodes_.push_back({node.get(), node->lines, {}, {}});
            for (const std::uint64_t id : node->readers) {
                nodes_.back().readers.push_back(BlockOf(id));
            }
            for (const std::uint64_t id : node->drivers) {
                nodes_.back().drivers.push_back(BlockOf(id));
            }
            if (isKept) {
                ++old;
            } else {
                auto made = std::make_unique<Node>();
                made->number = node->number;
                made_.emplace(node->number, std::move(made));
            }
        }
        for (; old != end; ++old) gone_.push_back((*old)->number);
    }

    void PlaceBlocks() {
        for (BlockPlan& plan : plans_) {
            if (plan.place == nowhere) {
                components_.push_back(std::move(plan.copy));
            } else {
                components_.push_back(std::move(workspace_.components[plan.place]));
                if (plan.copy) SwapSettings(*plan.copy, *components_.back());
            }
            components_.back()->x = plan.state->x;
            components_.back()->y = plan.state->y;
        }
        for (const auto& removed : workspace_.components) {
            if (removed) ids_.of.erase(removed.get());
        }
        workspace_.components.swap(components_);
    }

    void PlaceNodes() {
        for (const std::int32_t number : gone_) workspace_.nodes.erase(number);
        workspace_.nodes.merge(made_);
        for (NodePlan& plan : nodes_) {
            Node& node = *FindNode(plan.state->number, workspace_);
            node.type = plan.state->type;
            node.SIGNALSAVEMODE = plan.state->saveMode;
            node.flags = plan.state->flags;
            node.lines.swap(plan.lines);
            node.readers.swap(plan.readers);
            node.drivers.swap(plan.drivers);
            node.settledType = NoSettledType;
        }
    }

    void PlacePorts(const BlockPlan& plan) {
        if (!plan.portsChange) return;
        Component& component = *plan.component;
        auto port = plan.state->ports->begin();
        for (auto* ports : {&component.inputs, &component.outputs}) {
            for (Port& to : *ports) {
                to.node = port->node ? FindNode(*port->node, workspace_) : nullptr;
                to.sigType = port->sigType;
                ++port;
            }
        }
    }

    void PlaceHeader() {
        for (const std::int32_t number : header_.begin) {
            begin_.push_back(FindNode(number, workspace_));
        }
        for (const std::int32_t number : header_.end) end_.push_back(FindNode(number, workspace_));
        workspace_.BEGINNODES.swap(begin_);
        workspace_.ENDNODES.swap(end_);
        workspace_.NOTE.swap(header_.NOTE);
        workspace_.LOCKED = header_.LOCKED;
        workspace_.dirty = header_.dirty;
        workspace_.variables.swap(header_.variables);
        static_cast<RunSettings&>(*workspace_.options) = std::move(header_.options);
    }

    /// They belong to the diagram that was left.
    void DropResults() {
        for (const auto& component : workspace_.components) {
            component->plots.clear();
            component->modelState.reset();
            component->transfer.reset();
        }
        for (const auto& [number, node] : workspace_.nodes) {
            node->FreeSignals();
            node->summaries.clear();
        }
    }

    const DiagramState& state_;
    const DiagramState& present_;
    Workspace& workspace_;
    BlockIds& ids_;
    std::vector<BlockPlan> plans_;
    std::unordered_map<std::uint64_t, std::size_t> places_;  // of the present blocks, once needed
    std::unordered_map<std::uint64_t, Component*> blocks_;
    std::vector<NodePlan> nodes_;
    std::vector<std::int32_t> gone_;
    std::map<std::int32_t, std::unique_ptr<Node>> made_;
    HeaderState header_;
    std::vector<Node*> begin_, end_;
    ComponentList components_;
};

}  // namespace

Status RestoreState(const DiagramState& state, const DiagramState& present, Workspace& workspace,
                    BlockIds& ids, std::string& errorText) {
    try {
        Restoration restoration(state, present, workspace, ids);
        restoration.Prepare();
        restoration.Commit();
        return Status::Success;
    } catch (const std::bad_alloc&) {
        errorText += "Out of memory keeping the diagram\n";
        return Status::Error;
    }
}

}  // namespace photrak
