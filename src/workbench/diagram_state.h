// A diagram as it stood at one moment: immutable records that later states share where nothing
// changed, so that a long history costs little. A diagram brought to a state saves byte for byte as
// the one that it was taken from; results of runs are not part of it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// A port's place in a state. Files may number their nodes below 0.
struct PortState {
    std::optional<std::int32_t> node;
    std::int32_t sigType = UnknownSigType;
    friend bool operator==(const PortState&, const PortState&) = default;
};
using PortStates = std::vector<PortState>;  // of the inputs, then of the outputs

struct BlockState {
    std::uint64_t id = 0;  // of the block, the same in all states of a history
    std::int32_t x = 0, y = 0;
    std::shared_ptr<const Component> settings;  // on no nodes
    std::shared_ptr<const PortStates> ports;
};

struct NodeState {
    std::int32_t number = 0, type = UnknownSigType, saveMode = 0;
    std::uint16_t flags = 0;
    std::vector<NodeLine> lines;
    std::vector<std::uint64_t> readers, drivers;  // ids in the order of the node's lists
};

/// Everything that belongs to neither blocks nor nodes.
struct HeaderState {
    std::string NOTE;
    std::int16_t LOCKED = 0, dirty = 0;
    std::vector<std::int32_t> begin, end;  // node numbers
    std::vector<Variable> variables;
    RunSettings options;
};

struct DiagramState {
    std::shared_ptr<const HeaderState> header;
    std::vector<std::shared_ptr<const BlockState>> blocks;  // in list order
    std::vector<std::shared_ptr<const NodeState>> nodes;    // ascending

    /// All records are shared: nothing changed between the two.
    friend bool operator==(const DiagramState&, const DiagramState&) = default;
};

/// Whether both save as the same text, records compared one by one.
bool SavesAlike(const DiagramState& a, const DiagramState& b);

/// The state with symbols and options of the workspace, those too that no save writes: the prefix
/// of results, the number of runs so far.
DiagramState WithHeaderOf(DiagramState state, const Workspace& workspace);
/// The state with the options of the workspace that no save writes; they are no step of a history.
DiagramState KeepingUnsaved(DiagramState state, const Workspace& workspace);

/// The identities of a diagram's blocks from one state to the next.
struct BlockIds {
    std::unordered_map<const Component*, std::uint64_t> of;
    std::uint64_t next = 1;
};

/// What a gesture may have changed, so that nothing else need be looked at.
class Touched {
  public:
    /// Settings and place of the block, and the nodes of its ports.
    void Add(const Component& component);
    /// The same, and all blocks that share a node with it other than the ground.
    void AddAround(const Component& component);
    /// Its place alone.
    void AddMoved(const Component& component) { moved_.insert(&component); }
    /// Options and symbols are not looked at: a run on its thread may be at them.
    void KeepHeader() { keepsHeader_ = true; }

    const std::unordered_set<const Component*>& Blocks() const { return blocks_; }
    const std::unordered_set<const Component*>& Moved() const { return moved_; }
    const std::set<std::int32_t>& Nodes() const { return nodes_; }
    bool KeepsHeader() const { return keepsHeader_; }

  private:
    std::unordered_set<const Component*> blocks_, moved_;
    std::set<std::int32_t> nodes_;
    bool keepsHeader_ = false;
};

/// The state of a workspace. What equals `former` is shared with it; with `touched` only that is
/// compared. `ids` then holds the components of the workspace. Error with a text when memory is
/// exhausted.
Status TakeState(const Workspace& workspace, const DiagramState* former, const Touched* touched,
                 BlockIds& ids, DiagramState& state, std::string& errorText);

/// Brings a workspace that stands at `present` to `state`: blocks that both have stay the same
/// objects. Results of runs are dropped. On an error the workspace stays as it was.
Status RestoreState(const DiagramState& state, const DiagramState& present, Workspace& workspace,
                    BlockIds& ids, std::string& errorText);

}  // namespace photrak
