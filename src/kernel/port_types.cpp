// Signal types of ports: the table of what says more than what, ports made after a template, and
// retyping of all ports on a node.
#include "kernel/port_types.h"

#include <algorithm>
#include <array>

#include "kernel/graph.h"

namespace photrak {
namespace {

struct Refinement {
    std::int32_t particular, general;
};
// clang-format off
constexpr Refinement refinements[] = {
    {OpSigType,       OpOrElecSigType}, {OpSigType,   UnknownSigType},
    {ElecSigType,     OpOrElecSigType}, {ElecSigType, UnknownSigType},
    {BinSigType,      UnknownSigType},
    {OpOrElecSigType, UnknownSigType},
    {NoSigType,       UnknownSigType},
};
// clang-format on

constexpr std::size_t longestRepeat = 4;

/// How many of the last types a repeat cell goes through; 0 for a type of its own.
std::size_t RepeatLength(std::int32_t sigType) {
    if (sigType < RepeatTwo || sigType > RepeatFour) return 0;
    return static_cast<std::size_t>(sigType - RepeatTwo) + 2;
}

/// Gives one type after another; a repeat cell is never left again.
class TypeSequence {
  public:
    TypeSequence(const std::vector<Port>& cells, RepeatRule rule) : cells_(cells), rule_(rule) {}

    std::int32_t Next() {
        if (cells_.empty()) return UnknownSigType;
        const std::int32_t type = cells_[std::min(at_, cells_.size() - 1)].sigType;
        if (at_ >= cells_.size()) return type;
        const std::size_t length = rule_ == RepeatRule::Inputs ? RepeatLength(type) : 0;
        if (length > 0) return last_[longestRepeat - length + repeated_++ % length];
        std::rotate(last_.begin(), last_.begin() + 1, last_.end());
        last_.back() = type;
        ++at_;
        return type;
    }

  private:
    const std::vector<Port>& cells_;
    RepeatRule rule_;
    std::size_t at_ = 0, repeated_ = 0;
    std::array<std::int32_t, longestRepeat> last_ = {UnknownSigType, UnknownSigType, UnknownSigType,
                                                     UnknownSigType};
};

/// Retypes the ports on `node` of the first `count` components of one of its lists. A component
/// with many ports here stands in the list as often, one entry after the other.
void RetypePorts(const Node& node, const std::list<Component*>& components, std::size_t count,
                 std::vector<Port> Component::*ports) {
    const Component* former = nullptr;
    for (Component* component : components) {
        if (count-- == 0) return;
        if (component == former) continue;
        former = component;
        for (Port& port : component->*ports) {
            if (port.node == &node) port.sigType = node.type;
        }
    }
}

}  // namespace

bool IsMoreParticular(std::int32_t a, std::int32_t b) {
    return std::any_of(std::begin(refinements), std::end(refinements),
                       [&](const Refinement& r) { return r.particular == a && r.general == b; });
}

std::vector<Port> MakePorts(const std::vector<Port>& portTemplate, std::size_t count,
                            RepeatRule rule) {
    TypeSequence types(portTemplate, rule);
    std::vector<Port> ports(count);
    for (Port& port : ports) port.sigType = port.modelType = types.Next();
    return ports;
}

void SetNodeSigType(Node& node, std::int32_t sigType) {
    node.type = sigType;
    const bool settled = node.settledType == sigType;
    RetypePorts(node, node.readers, settled ? node.freshReaders : node.readers.size(),
                &Component::inputs);
    RetypePorts(node, node.drivers, settled ? node.freshDrivers : node.drivers.size(),
                &Component::outputs);
    node.settledType = sigType;
    node.freshReaders = node.freshDrivers = 0;
}

}  // namespace photrak
