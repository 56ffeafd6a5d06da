// A diagram as it stood at one moment: immutable records that later states share where nothing
// changed, so that a long history costs little. A diagram made from a state saves byte for byte as
// the one that it was taken from; results of runs are not part of it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// A port's place in a state; node -1 stands for none.
struct PortState {
    std::int32_t node = -1, sigType = UnknownSigType;
    friend bool operator==(const PortState&, const PortState&) = default;
};

struct BlockState {
    std::uint64_t id = 0;                       // of the block, the same in all states of a history
    std::unique_ptr<const Component> settings;  // on no nodes
    std::vector<PortState> inputs, outputs;
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

/// The identities of a diagram's blocks from one state to the next.
using BlockIds = std::unordered_map<const Component*, std::uint64_t>;

/// The state of a workspace. What equals `former` is shared with it. Ids of new blocks are added to
/// `ids`, those of removed ones dropped. Error with a text when memory is exhausted.
Status TakeState(const Workspace& workspace, const DiagramState* former, BlockIds& ids,
                 DiagramState& state, std::string& errorText);
/// Replaces components, nodes, variables and options of the workspace by those of the state; `ids`
/// then holds the new components. On an error the workspace stays as it was.
Status RestoreState(const DiagramState& state, Workspace& workspace, BlockIds& ids,
                    std::string& errorText);
}  // namespace photrak
