// Taking a state compares each record with the former one and shares it when equal; restoring makes
// new components and nodes and puts every port and reader back in its place.
#include "workbench/diagram_state.h"

#include <algorithm>
#include <new>

#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "workbench/block_copy.h"

namespace photrak {
namespace {

constexpr const char* noMemoryText = "Out of memory keeping the diagram\n";

bool SameVariables(const std::vector<Variable>& a, const std::vector<Variable>& b) {
    return std::ranges::equal(a, b, [](const Variable& x, const Variable& y) {
        return x.name == y.name && x.value == y.value && x.type == y.type;
    });
}

bool SameLines(const std::vector<NodeLine>& a, const std::vector<NodeLine>& b) {
    return std::ranges::equal(a, b, [](const NodeLine& x, const NodeLine& y) {
        return std::ranges::equal(x.numbers, y.numbers) && x.text == y.text;
    });
}

std::vector<std::int32_t> Numbers(const std::vector<Node*>& nodes) {
    std::vector<std::int32_t> numbers;
    for (const Node* node : nodes) numbers.push_back(node->number);
    return numbers;
}

/// A variable's borrowed place belongs to the run that set it.
std::vector<Variable> Unbound(std::vector<Variable> variables) {
    for (Variable& variable : variables) variable.actual = nullptr;
    return variables;
}

std::shared_ptr<const HeaderState> TakeHeader(const Workspace& workspace,
                                              const DiagramState* former) {
    HeaderState header{workspace.NOTE,
                       workspace.LOCKED,
                       workspace.dirty,
                       Numbers(workspace.BEGINNODES),
                       Numbers(workspace.ENDNODES),
                       Unbound(workspace.variables),
                       *workspace.options};
    if (former) {
        const HeaderState& old = *former->header;
        if (old.NOTE == header.NOTE && old.LOCKED == header.LOCKED && old.begin == header.begin &&
            old.end == header.end && old.options == header.options &&
            SameVariables(old.variables, header.variables)) {
            return former->header;
        }
    }
    return std::make_shared<const HeaderState>(std::move(header));
}

std::vector<PortState> TakePorts(const std::vector<Port>& ports) {
    std::vector<PortState> states;
    states.reserve(ports.size());
    for (const Port& port : ports) {
        states.push_back({port.node ? port.node->number : -1, port.sigType});
    }
    return states;
}

bool SamePorts(const std::vector<PortState>& states, const std::vector<Port>& ports) {
    return std::ranges::equal(states, ports, [](const PortState& state, const Port& port) {
        return state.node == (port.node ? port.node->number : -1) && state.sigType == port.sigType;
    });
}

/// Null when memory is exhausted.
std::shared_ptr<const BlockState> TakeBlock(const Component& component, std::uint64_t id,
                                            const std::shared_ptr<const BlockState>* former,
                                            std::string& errorText) {
    if (former && SameSettings(*(*former)->settings, component) &&
        SamePorts((*former)->inputs, component.inputs) &&
        SamePorts((*former)->outputs, component.outputs)) {
        return *former;
    }
    std::unique_ptr<Component> copy;
    if (CopyComponent(&component, copy, errorText) == Status::Error) return nullptr;
    auto block = std::make_shared<BlockState>();
    block->id = id;
    block->settings = std::move(copy);
    block->inputs = TakePorts(component.inputs);
    block->outputs = TakePorts(component.outputs);
    return block;
}

std::vector<std::uint64_t> IdsOf(const std::list<Component*>& components, const BlockIds& ids) {
    std::vector<std::uint64_t> result;
    for (const Component* component : components) result.push_back(ids.at(component));
    return result;
}

std::shared_ptr<const NodeState> TakeNode(const Node& node, const BlockIds& ids,
                                          const std::shared_ptr<const NodeState>* former) {
    NodeState state{node.number,
                    node.type,
                    node.SIGNALSAVEMODE,
                    node.flags,
                    node.lines,
                    IdsOf(node.readers, ids),
                    IdsOf(node.drivers, ids)};
    if (former) {
        const NodeState& old = **former;
        if (old.type == state.type && old.saveMode == state.saveMode && old.flags == state.flags &&
            old.readers == state.readers && old.drivers == state.drivers &&
            SameLines(old.lines, state.lines)) {
            return *former;
        }
    }
    return std::make_shared<const NodeState>(std::move(state));
}

/// Ids for all components, new ones above the greatest so far.
BlockIds NextIds(const Workspace& workspace, const BlockIds& ids) {
    std::uint64_t greatest = 0;
    for (const auto& [component, id] : ids) greatest = std::max(greatest, id);
    BlockIds next;
    next.reserve(workspace.components.size());
    for (const auto& component : workspace.components) {
        const auto known = ids.find(component.get());
        next[component.get()] = known != ids.end() ? known->second : ++greatest;
    }
    return next;
}

Status TakeBlocks(const Workspace& workspace, const DiagramState* former, const BlockIds& ids,
                  DiagramState& state, std::string& errorText) {
    std::unordered_map<std::uint64_t, const std::shared_ptr<const BlockState>*> known;
    if (former) {
        for (const auto& block : former->blocks) known[block->id] = &block;
    }
    for (const auto& component : workspace.components) {
        const std::uint64_t id = ids.at(component.get());
        const auto old = known.find(id);
        auto block =
            TakeBlock(*component, id, old == known.end() ? nullptr : old->second, errorText);
        if (!block) return Status::Error;
        state.blocks.push_back(std::move(block));
    }
    return Status::Success;
}

void TakeNodes(const Workspace& workspace, const DiagramState* former, const BlockIds& ids,
               DiagramState& state) {
    auto old = former ? former->nodes.begin() : state.nodes.end();
    const auto end = former ? former->nodes.end() : state.nodes.end();
    std::vector<std::shared_ptr<const NodeState>> nodes;
    for (const auto& [number, node] : workspace.nodes) {
        while (old != end && (*old)->number < number) ++old;
        const bool same = old != end && (*old)->number == number;
        nodes.push_back(TakeNode(*node, ids, same ? &*old : nullptr));
    }
    state.nodes = std::move(nodes);
}

// --- Restoring ---

using BlocksById = std::unordered_map<std::uint64_t, Component*>;

Status RestoreBlocks(const DiagramState& state, Workspace& made, BlocksById& blocks,
                     std::string& errorText) {
    for (const auto& block : state.blocks) {
        std::unique_ptr<Component> copy;
        if (CopyComponent(block->settings.get(), copy, errorText) == Status::Error) {
            return Status::Error;
        }
        blocks[block->id] = copy.get();
        made.components.push_back(std::move(copy));
    }
    return Status::Success;
}

void RestorePorts(const std::vector<PortState>& states, std::vector<Port>& ports, Workspace& made) {
    for (std::size_t i = 0; i < states.size(); ++i) {
        if (states[i].node >= 0) ports[i].node = FindNode(states[i].node, made);
        ports[i].sigType = states[i].sigType;
    }
}

void RestoreNodes(const DiagramState& state, Workspace& made, const BlocksById& blocks) {
    for (const auto& saved : state.nodes) {
        Node& node = FindOrCreateNode(saved->number, made);
        node.type = saved->type;
        node.SIGNALSAVEMODE = saved->saveMode;
        node.flags = saved->flags;
        node.lines = saved->lines;
        node.settledType = NoSettledType;
        for (const std::uint64_t id : saved->readers) node.readers.push_back(blocks.at(id));
        for (const std::uint64_t id : saved->drivers) node.drivers.push_back(blocks.at(id));
    }
    for (std::size_t i = 0; i < state.blocks.size(); ++i) {
        RestorePorts(state.blocks[i]->inputs, made.components[i]->inputs, made);
        RestorePorts(state.blocks[i]->outputs, made.components[i]->outputs, made);
    }
}

std::vector<Node*> NodesOf(const std::vector<std::int32_t>& numbers, const Workspace& made) {
    std::vector<Node*> nodes;
    for (const std::int32_t number : numbers) nodes.push_back(FindNode(number, made));
    return nodes;
}

void RestoreHeader(const HeaderState& header, Workspace& made) {
    made.NOTE = header.NOTE;
    made.LOCKED = header.LOCKED;
    made.dirty = header.dirty;
    made.variables = header.variables;
    made.BEGINNODES = NodesOf(header.begin, made);
    made.ENDNODES = NodesOf(header.end, made);
    static_cast<RunSettings&>(*made.options) = header.options;
}

/// Everything but the record itself, its number, names and messages.
void MoveContents(Workspace& from, Workspace& to) {
    ForgetParamCursor();
    to.components = std::move(from.components);
    to.nodes = std::move(from.nodes);
    to.BEGINNODES = std::move(from.BEGINNODES);
    to.ENDNODES = std::move(from.ENDNODES);
    to.variables = std::move(from.variables);
    to.NOTE = std::move(from.NOTE);
    to.LOCKED = from.LOCKED;
    to.dirty = from.dirty;
    static_cast<RunSettings&>(*to.options) = *from.options;
}

}  // namespace

Status TakeState(const Workspace& workspace, const DiagramState* former, BlockIds& ids,
                 DiagramState& state, std::string& errorText) {
    try {
        BlockIds next = NextIds(workspace, ids);
        DiagramState taken;
        taken.header = TakeHeader(workspace, former);
        if (TakeBlocks(workspace, former, next, taken, errorText) == Status::Error) {
            return Status::Error;
        }
        TakeNodes(workspace, former, next, taken);
        state = std::move(taken);
        ids = std::move(next);
        return Status::Success;
    } catch (const std::bad_alloc&) {
        errorText += noMemoryText;
        return Status::Error;
    }
}

Status RestoreState(const DiagramState& state, Workspace& workspace, BlockIds& ids,
                    std::string& errorText) {
    try {
        std::unique_ptr<Workspace> made = CreateWorkspace();
        BlocksById blocks;
        if (RestoreBlocks(state, *made, blocks, errorText) == Status::Error) return Status::Error;
        RestoreNodes(state, *made, blocks);
        RestoreHeader(*state.header, *made);
        BlockIds next;
        for (const auto& [id, component] : blocks) next[component] = id;
        MoveContents(*made, workspace);
        ids = std::move(next);
        return Status::Success;
    } catch (const std::bad_alloc&) {
        errorText += noMemoryText;
        return Status::Error;
    }
}

}  // namespace photrak
