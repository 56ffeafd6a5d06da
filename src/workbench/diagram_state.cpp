// Taking a state: each record is compared with the former one and shared when equal.
#include "workbench/diagram_state.h"

#include <algorithm>
#include <new>

#include "files/topology_words.h"
#include "kernel/graph.h"
#include "workbench/block_copy.h"

namespace photrak {
namespace {

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

/// Copies what a save writes of the settings.
void CopySaved(const RunSettings& source, SimOptions& options) {
    SimOptions from;
    static_cast<RunSettings&>(from) = source;
    options.mode = static_cast<std::int16_t>((options.mode & ~simMode::savedStatistical) |
                                             (from.mode & simMode::savedStatistical));
    options.NUMRUNSTODO = from.NUMRUNSTODO;
    options.SAVEPARAMS = from.SAVEPARAMS;
    options.SIGSAVEMODE = from.SIGSAVEMODE;
    options.PLOTTING = from.PLOTTING;
    for (const TextOption& option : textOptions) {
        if (option.saved == TextOption::WithValue) options.*option.field = from.*option.field;
    }
}

RunSettings Saved(const RunSettings& options) {
    SimOptions saved;
    CopySaved(options, saved);
    return saved;
}

bool SameHeader(const HeaderState& a, const HeaderState& b) {
    return a.NOTE == b.NOTE && a.LOCKED == b.LOCKED && a.begin == b.begin && a.end == b.end &&
           SameVariables(a.variables, b.variables) && Saved(a.options) == Saved(b.options);
}

std::vector<std::int32_t> Numbers(const std::vector<Node*>& nodes) {
    std::vector<std::int32_t> numbers;
    for (const Node* node : nodes) numbers.push_back(node->number);
    return numbers;
}

std::shared_ptr<const HeaderState> TakeHeader(const Workspace& workspace,
                                              const DiagramState* former) {
    HeaderState header{workspace.NOTE,
                       workspace.LOCKED,
                       workspace.dirty,
                       Numbers(workspace.BEGINNODES),
                       Numbers(workspace.ENDNODES),
                       workspace.variables,
                       *workspace.options};
    // A variable's borrowed place belongs to the run that set it.
    for (Variable& variable : header.variables) variable.actual = nullptr;
    if (former && SameHeader(*former->header, header)) return former->header;
    return std::make_shared<const HeaderState>(std::move(header));
}

PortState StateOf(const Port& port) {
    return {port.node ? std::optional(port.node->number) : std::nullopt, port.sigType};
}

bool SamePorts(const PortStates& states, const Component& component) {
    if (states.size() != component.inputs.size() + component.outputs.size()) return false;
    auto state = states.begin();
    const auto isSame = [&](const Port& port) { return *state++ == StateOf(port); };
    return std::ranges::all_of(component.inputs, isSame) &&
           std::ranges::all_of(component.outputs, isSame);
}

std::shared_ptr<const PortStates> TakePorts(const Component& component) {
    PortStates states;
    states.reserve(component.inputs.size() + component.outputs.size());
    for (const Port& port : component.inputs) states.push_back(StateOf(port));
    for (const Port& port : component.outputs) states.push_back(StateOf(port));
    return std::make_shared<const PortStates>(std::move(states));
}

/// Memory that runs out throws here.
std::shared_ptr<const BlockState> TakeBlock(const Component& component, std::uint64_t id,
                                            const std::shared_ptr<const BlockState>* former,
                                            bool movedOnly) {
    const BlockState* old = former ? former->get() : nullptr;
    const bool sameSettings = old && (movedOnly || SameSettings(*old->settings, component));
    const bool samePorts = old && (movedOnly || SamePorts(*old->ports, component));
    if (sameSettings && samePorts && old->x == component.x && old->y == component.y) {
        return *former;
    }
    auto block = std::make_shared<BlockState>();
    block->id = id;
    block->x = component.x;
    block->y = component.y;
    block->ports = samePorts ? old->ports : TakePorts(component);
    if (sameSettings) {
        block->settings = old->settings;
        return block;
    }
    std::unique_ptr<Component> copy;
    std::string text;
    if (CopyComponent(&component, copy, text) == Status::Error) throw std::bad_alloc();
    block->settings = std::move(copy);
    return block;
}

/// Finds a block in the former state; most stand where the one before them leads to.
class FormerBlocks {
  public:
    explicit FormerBlocks(const DiagramState* former) : former_(former) {}

    const std::shared_ptr<const BlockState>* Find(std::uint64_t id) {
        if (!former_) return nullptr;
        const auto& blocks = former_->blocks;
        if (at_ >= blocks.size() || blocks[at_]->id != id) {
            const auto known = Places().find(id);
            if (known == places_.end()) return nullptr;
            at_ = known->second;
        }
        return &blocks[at_++];
    }

  private:
    const std::unordered_map<std::uint64_t, std::size_t>& Places() {
        if (!places_.empty()) return places_;
        std::size_t place = 0;
        for (const auto& block : former_->blocks) places_[block->id] = place++;
        return places_;
    }

    const DiagramState* former_;
    std::size_t at_ = 0;
    std::unordered_map<std::uint64_t, std::size_t> places_;
};

void TakeBlocks(const Workspace& workspace, const DiagramState* former, const Touched* touched,
                BlockIds& ids, DiagramState& state) {
    FormerBlocks formerBlocks(former);
    state.blocks.reserve(workspace.components.size());
    for (const auto& component : workspace.components) {
        const auto [known, isNew] = ids.of.try_emplace(component.get(), ids.next);
        if (isNew) ++ids.next;
        const auto* old = formerBlocks.Find(known->second);
        const bool isTouched = !touched || !old || touched->Blocks().contains(component.get());
        const bool isMoved = touched && touched->Moved().contains(component.get());
        state.blocks.push_back(
            isTouched || isMoved ? TakeBlock(*component, known->second, old, !isTouched) : *old);
    }
    if (ids.of.size() == workspace.components.size()) return;
    std::unordered_set<const Component*> live;
    for (const auto& component : workspace.components) live.insert(component.get());
    std::erase_if(ids.of, [&](const auto& entry) { return !live.contains(entry.first); });
}

/// A run marks nodes as it goes; the marks are not the diagram's.
std::uint16_t LastingFlags(const Node& node) {
    return node.flags & (nodeFlag::begin | nodeFlag::end);
}

bool SameIds(const std::vector<std::uint64_t>& states, const std::list<Component*>& components,
             const BlockIds& ids) {
    return std::ranges::equal(states, components, [&](std::uint64_t id, const Component* c) {
        return id == ids.of.at(c);
    });
}

std::vector<std::uint64_t> IdsOf(const std::list<Component*>& components, const BlockIds& ids) {
    std::vector<std::uint64_t> result;
    for (const Component* component : components) result.push_back(ids.of.at(component));
    return result;
}

std::shared_ptr<const NodeState> TakeNode(const Node& node, const BlockIds& ids,
                                          const std::shared_ptr<const NodeState>* former) {
    if (former) {
        const NodeState& old = **former;
        if (old.type == node.type && old.saveMode == node.SIGNALSAVEMODE &&
            old.flags == LastingFlags(node) && SameIds(old.readers, node.readers, ids) &&
            SameIds(old.drivers, node.drivers, ids) && SameLines(old.lines, node.lines)) {
            return *former;
        }
    }
    return std::make_shared<const NodeState>(
        NodeState{node.number, node.type, node.SIGNALSAVEMODE, LastingFlags(node), node.lines,
                  IdsOf(node.readers, ids), IdsOf(node.drivers, ids)});
}

void TakeAllNodes(const Workspace& workspace, const DiagramState* former, const BlockIds& ids,
                  DiagramState& state) {
    std::vector<std::shared_ptr<const NodeState>> nodes;
    nodes.reserve(workspace.nodes.size());
    std::size_t at = 0;
    for (const auto& [number, node] : workspace.nodes) {
        while (former && at < former->nodes.size() && former->nodes[at]->number < number) ++at;
        const bool same =
            former && at < former->nodes.size() && former->nodes[at]->number == number;
        nodes.push_back(TakeNode(*node, ids, same ? &former->nodes[at] : nullptr));
    }
    state.nodes = std::move(nodes);
}

/// The former nodes, those of the numbers taken anew.
void TakeNodes(const Workspace& workspace, const DiagramState& former,
               const std::set<std::int32_t>& numbers, const BlockIds& ids, DiagramState& state) {
    state.nodes.reserve(former.nodes.size() + numbers.size());
    auto old = former.nodes.begin();
    for (const std::int32_t number : numbers) {
        const auto place = std::lower_bound(
            old, former.nodes.end(), number,
            [](const auto& node, std::int32_t wanted) { return node->number < wanted; });
        state.nodes.insert(state.nodes.end(), old, place);
        old = place;
        const bool wasThere = old != former.nodes.end() && (*old)->number == number;
        if (const Node* node = FindNode(number, workspace)) {
            state.nodes.push_back(TakeNode(*node, ids, wasThere ? &*old : nullptr));
        }
        if (wasThere) ++old;
    }
    state.nodes.insert(state.nodes.end(), old, former.nodes.end());
}

bool SavesAlike(const BlockState& a, const BlockState& b) {
    if (a.x != b.x || a.y != b.y || a.ports->size() != b.ports->size()) return false;
    if (a.settings != b.settings && !SameSettings(*a.settings, *b.settings)) return false;
    return a.ports == b.ports ||
           std::ranges::equal(*a.ports, *b.ports, {}, &PortState::node, &PortState::node);
}

bool SavesAlike(const NodeState& a, const NodeState& b) {
    return a.number == b.number && a.type == b.type && a.saveMode == b.saveMode &&
           SameLines(a.lines, b.lines);
}

template <class Record>
bool SaveAlike(const std::vector<std::shared_ptr<const Record>>& a,
               const std::vector<std::shared_ptr<const Record>>& b) {
    return std::ranges::equal(
        a, b, [](const auto& x, const auto& y) { return x == y || SavesAlike(*x, *y); });
}

}  // namespace

bool SavesAlike(const DiagramState& a, const DiagramState& b) {
    if (!a.header || !b.header) return a.header == b.header;
    return (a.header == b.header || SameHeader(*a.header, *b.header)) &&
           SaveAlike(a.blocks, b.blocks) && SaveAlike(a.nodes, b.nodes);
}

DiagramState WithHeaderOf(DiagramState state, const Workspace& workspace) {
    state.header = TakeHeader(workspace, nullptr);
    return state;
}

DiagramState KeepingUnsaved(DiagramState state, const Workspace& workspace) {
    auto header = std::make_shared<HeaderState>(*state.header);
    SimOptions options;
    static_cast<RunSettings&>(options) = *workspace.options;
    CopySaved(header->options, options);
    header->options = options;
    state.header = std::move(header);
    return state;
}

void Touched::Add(const Component& component) {
    blocks_.insert(&component);
    for (const auto* ports : {&component.inputs, &component.outputs}) {
        for (const Port& port : *ports) {
            if (port.node) nodes_.insert(port.node->number);
        }
    }
}

void Touched::AddAround(const Component& component) {
    Add(component);
    for (const auto* ports : {&component.inputs, &component.outputs}) {
        for (const Port& port : *ports) {
            if (!port.node || port.node->number == 0) continue;
            for (const Component* other : port.node->readers) Add(*other);
            for (const Component* other : port.node->drivers) Add(*other);
        }
    }
}

Status TakeState(const Workspace& workspace, const DiagramState* former, const Touched* touched,
                 BlockIds& ids, DiagramState& state, std::string& errorText) {
    try {
        DiagramState taken;
        const bool keeps = former && touched && touched->KeepsHeader();
        taken.header = keeps ? former->header : TakeHeader(workspace, former);
        TakeBlocks(workspace, former, former ? touched : nullptr, ids, taken);
        if (former && touched) {
            TakeNodes(workspace, *former, touched->Nodes(), ids, taken);
        } else {
            TakeAllNodes(workspace, former, ids, taken);
        }
        state = std::move(taken);
        return Status::Success;
    } catch (const std::bad_alloc&) {
        errorText += "Out of memory keeping the diagram\n";
        return Status::Error;
    }
}

}  // namespace photrak
