// Where things of a diagram are on the canvas: icons, ports, wires, and what a point hits. Nothing
// is stored; all follows from the positions of the components and the nodes that their ports share.
#pragma once

#include <span>
#include <vector>

#include "kernel/workspace.h"
#include "workbench/scale.h"

namespace photrak {

enum class Side { Input, Output };

/// What a point hits. Without a component nothing is hit; port 0 is the body.
struct Hit {
    Component* component = nullptr;
    Side side = Side::Input;
    std::int32_t port = 0;  // from 1
    CanvasPoint wireEnd;    // of the port, pixels

    bool OnBody() const { return component && port == 0; }
    bool OnPort(Side wanted) const { return component && port > 0 && side == wanted; }
};

inline std::vector<Port>& PortsOf(Component& component, Side side) {
    return side == Side::Input ? component.inputs : component.outputs;
}
inline const std::vector<Port>& PortsOf(const Component& component, Side side) {
    return side == Side::Input ? component.inputs : component.outputs;
}
/// Ports on screen: 0 for a side whose first port is by its model without a signal.
std::int32_t ShownPorts(const Component& component, Side side);

/// Left top of the icon in model units, within the canvas, and in pixels.
CanvasPoint DrawnAt(const Component& component);
CanvasPoint IconAt(const Component& component, const Scale& scale);
/// Left top of the square of a port (from 1), and the point where its wire ends.
CanvasPoint TickAt(const Component& component, Side side, std::int32_t port, const Scale& scale);
CanvasPoint WireEndAt(const Component& component, Side side, std::int32_t port, const Scale& scale);

inline constexpr std::int32_t portZone = 3;       // around an icon's border and a port, pixels
inline constexpr std::int32_t portZoneUnits = 3;  // around an icon, model units

/// How far the rectangle of a block reaches beyond its icon: less where neighbors would meet.
std::int32_t OuterMargin(const Scale& scale);
/// Whether the rectangle of a block with its icon there (pixels) holds the point.
bool IsOnBlock(CanvasPoint icon, CanvasPoint point, const Scale& scale);
/// Body or port of a block whose rectangle holds the point.
Hit HitOnComponent(Component& component, CanvasPoint point, const Scale& scale);
/// The port of the side nearest in height, if its grown square holds the point.
Hit HitOnTick(Component& component, Side side, CanvasPoint point, const Scale& scale);

/// One wire, from the first driver of its node to one input port.
struct Wire {
    const Node* node = nullptr;
    const Component *from = nullptr, *to = nullptr;
    std::int32_t output = 0, input = 0;  // ports, from 1
    CanvasPoint points[4] = {};
    std::int32_t count = 2;  // points used: a straight wire has 2, a detour 4
};
/// All wires: by node, then reader in list order, then port.
std::vector<Wire> Wires(const Workspace& workspace, const Scale& scale);

/// A component drawn there holds a cell whose corner lies within its icon and 3 units around;
/// model units.
bool HoldsCell(CanvasPoint drawnAt, CanvasPoint corner);

/// Width and height of the diagram. By design model units are mixed with pixels: exact at zoom 1
/// only, and View Full and printing rest on it.
CanvasPoint Extent(const Workspace& workspace, const Scale& scale);

}  // namespace photrak
