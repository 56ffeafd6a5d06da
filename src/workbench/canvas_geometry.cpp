// Ports stand at even distances around the middle of their side; wires run straight to the next
// column, else just above the driver's row or through the gap below it.
#include "workbench/canvas_geometry.h"

#include <algorithm>
#include <cstdlib>

namespace photrak {
namespace {

/// Top of the first port's square.
std::int32_t FirstTop(std::int32_t iconTop, std::int32_t count, const Scale& scale) {
    const std::int32_t pitch = scale.portPitch;
    const std::int32_t offset =
        count % 2 == 0 ? pitch / 2 - count / 2 * pitch : (1 - count) / 2 * pitch;
    return iconTop + scale.iconSize / 2 - scale.portTick / 2 + offset;
}

bool Within(CanvasPoint p, CanvasPoint low, CanvasPoint high) {
    return p.x >= low.x && p.x <= high.x && p.y >= low.y && p.y <= high.y;
}

/// The shown port nearest in height; 0 without any.
std::int32_t NearestPort(const Component& component, Side side, std::int32_t y,
                         const Scale& scale) {
    constexpr std::int32_t startingBest = 10000;
    std::int32_t best = startingBest, nearest = 0;
    const std::int32_t count = ShownPorts(component, side);
    for (std::int32_t port = 1; port <= count; ++port) {
        const std::int32_t distance = std::abs(y - WireEndAt(component, side, port, scale).y);
        if (distance < best) {
            best = distance;
            nearest = port;
        }
    }
    return nearest;
}

/// Left top of a port's square, from the icon's (pixels) and the number of ports on its side.
CanvasPoint TickOf(CanvasPoint icon, Side side, std::size_t count, std::int32_t port,
                   const Scale& scale) {
    return {
        side == Side::Input ? icon.x - scale.portTick : icon.x + scale.iconSize,
        FirstTop(icon.y, static_cast<std::int32_t>(count), scale) + (port - 1) * scale.portPitch};
}

CanvasPoint WireEndOf(CanvasPoint tick, Side side, const Scale& scale) {
    return {side == Side::Output ? tick.x + scale.portTick : tick.x,
            tick.y + (scale.portTick - 1) / 2};
}

/// A port that stands on a node other than the ground, by its component's place in the list.
struct PlacedPort {
    const Node* node = nullptr;
    std::int32_t number = 0;  // of the node
    std::uint32_t place = 0;
    std::int32_t port = 0;
};

std::vector<PlacedPort> PlacedPorts(const Workspace& workspace, Side side) {
    std::vector<PlacedPort> placed;
    placed.reserve(workspace.components.size());
    std::uint32_t place = 0;
    for (const auto& component : workspace.components) {
        std::int32_t number = 0;
        for (const Port& port : PortsOf(*component, side)) {
            ++number;
            if (!port.node || port.node->number == 0) continue;
            placed.push_back({port.node, port.node->number, place, number});
        }
        ++place;
    }
    return placed;
}

/// By node, those of one node in their order. Numbers that lie close together are counted out,
/// which takes one pass over them. A file's numbers may be any.
void SortByNode(std::vector<PlacedPort>& ports) {
    if (ports.empty()) return;
    constexpr std::size_t spread = 8;
    const auto [low, high] = std::ranges::minmax(ports, {}, &PlacedPort::number);
    const std::int64_t least = low.number;
    const auto range = static_cast<std::size_t>(high.number - least);
    if (range > spread * (ports.size() + spread)) {
        std::ranges::stable_sort(ports, {}, &PlacedPort::number);
        return;
    }
    const auto place = [&](const PlacedPort& port) {
        return static_cast<std::size_t>(port.number - least);
    };
    std::vector<std::uint32_t> next(range + 2, 0);
    for (const PlacedPort& port : ports) ++next[place(port) + 1];
    for (std::size_t i = 1; i < next.size(); ++i) next[i] += next[i - 1];
    std::vector<PlacedPort> sorted(ports.size());
    for (const PlacedPort& port : ports) sorted[next[place(port)]++] = port;
    ports = std::move(sorted);
}

/// What a wire needs to know of a block.
struct WireBlock {
    const Component* component = nullptr;
    CanvasPoint icon;  // pixels
    std::size_t inputs = 0, outputs = 0;
};

std::vector<WireBlock> WireBlocks(const Workspace& workspace, const Scale& scale) {
    std::vector<WireBlock> blocks;
    blocks.reserve(workspace.components.size());
    for (const auto& component : workspace.components) {
        blocks.push_back({component.get(), IconAt(*component, scale), component->inputs.size(),
                          component->outputs.size()});
    }
    return blocks;
}

void Route(Wire& wire, const WireBlock& from, const WireBlock& to, const Scale& scale) {
    const CanvasPoint driver = from.icon, reader = to.icon;
    const CanvasPoint output = TickOf(driver, Side::Output, from.outputs, wire.output, scale);
    const CanvasPoint input = TickOf(reader, Side::Input, to.inputs, wire.input, scale);
    const std::int32_t y1 = WireEndOf(output, Side::Output, scale).y;
    const std::int32_t y2 = WireEndOf(input, Side::Input, scale).y;
    const std::int32_t x1 = driver.x + scale.iconSize + scale.portTick;
    std::int32_t x2 = reader.x - scale.portTick;
    if (std::abs(y1 - y2) >= scale.iconSize) --x2;
    if (driver.x < reader.x && reader.x - driver.x <= scale.gridSize + 1) {
        wire.points[0] = {x1, y1};
        wire.points[1] = {x2, y2};
        return;
    }
    const std::int32_t quarter = scale.iconSize / 4;
    const std::int32_t bus = driver.y - quarter + (driver.y > reader.y ? 0 : scale.gridSize);
    wire.count = 4;
    wire.points[0] = {x1, y1};
    wire.points[1] = {driver.x + scale.iconSize + quarter, bus};
    wire.points[2] = {reader.x - quarter, bus};
    wire.points[3] = {x2, y2};
}

}  // namespace

std::int32_t ShownPorts(const Component& component, Side side) {
    const std::vector<Port>& ports = PortsOf(component, side);
    if (ports.empty() || ports.front().modelType == NoSigType) return 0;
    return static_cast<std::int32_t>(ports.size());
}

CanvasPoint DrawnAt(const Component& component) {
    return OnCanvas(component.x, component.y);
}

CanvasPoint IconAt(const Component& component, const Scale& scale) {
    return scale.ToPixel(DrawnAt(component));
}

CanvasPoint TickAt(const Component& component, Side side, std::int32_t port, const Scale& scale) {
    return TickOf(IconAt(component, scale), side, PortsOf(component, side).size(), port, scale);
}

CanvasPoint WireEndAt(const Component& component, Side side, std::int32_t port,
                      const Scale& scale) {
    return WireEndOf(TickAt(component, side, port, scale), side, scale);
}

std::int32_t OuterMargin(const Scale& scale) {
    return std::min(portZone, (scale.gridSize - scale.iconSize) / 2);
}

bool IsOnBlock(CanvasPoint icon, CanvasPoint point, const Scale& scale) {
    const std::int32_t outer = OuterMargin(scale), reach = scale.iconSize + outer;
    return Within(point, {icon.x - outer, icon.y - outer}, {icon.x + reach, icon.y + reach});
}

Hit HitOnComponent(Component& component, CanvasPoint point, const Scale& scale) {
    const CanvasPoint icon = IconAt(component, scale);
    const std::int32_t size = scale.iconSize, inner = std::min(portZone, size / 4);
    const bool onBody = point.x > icon.x + inner && point.x < icon.x + size - inner &&
                        point.y > icon.y + inner && point.y < icon.y + size - inner;
    Hit hit{&component, Side::Input, 0, {}};
    if (onBody) return hit;
    if (std::abs(point.x - icon.x - size) < std::abs(point.x - icon.x)) hit.side = Side::Output;
    hit.port = NearestPort(component, hit.side, point.y, scale);
    if (hit.port > 0) hit.wireEnd = WireEndAt(component, hit.side, hit.port, scale);
    return hit;
}

Hit HitOnTick(Component& component, Side side, CanvasPoint point, const Scale& scale) {
    const std::int32_t port = NearestPort(component, side, point.y, scale);
    if (port == 0) return {};
    const CanvasPoint tick = TickAt(component, side, port, scale);
    const std::int32_t last = scale.portTick - 1 + portZone;
    const bool holds =
        Within(point, {tick.x - portZone, tick.y - portZone}, {tick.x + last, tick.y + last});
    if (!holds) return {};
    return {&component, side, port, WireEndAt(component, side, port, scale)};
}

std::vector<Wire> Wires(const Workspace& workspace, const Scale& scale) {
    std::vector<PlacedPort> drivers = PlacedPorts(workspace, Side::Output);
    std::vector<PlacedPort> readers = PlacedPorts(workspace, Side::Input);
    SortByNode(drivers);
    SortByNode(readers);
    const std::vector<WireBlock> blocks = WireBlocks(workspace, scale);
    std::vector<Wire> wires;
    wires.reserve(readers.size());
    auto driver = drivers.begin();
    for (const PlacedPort& reader : readers) {
        while (driver != drivers.end() && driver->number < reader.number) ++driver;
        if (driver == drivers.end()) break;
        if (driver->number != reader.number) continue;
        const WireBlock &from = blocks[driver->place], &to = blocks[reader.place];
        Wire wire{reader.node, from.component, to.component, driver->port, reader.port};
        Route(wire, from, to, scale);
        wires.push_back(wire);
    }
    return wires;
}

bool HoldsCell(CanvasPoint drawnAt, CanvasPoint corner) {
    constexpr std::int32_t far = iconUnits + portZoneUnits;
    return Within(corner, {drawnAt.x - portZoneUnits, drawnAt.y - portZoneUnits},
                  {drawnAt.x + far, drawnAt.y + far});
}

CanvasPoint Extent(const Workspace& workspace, const Scale& scale) {
    CanvasPoint extent{scale.gridSize, scale.gridSize};
    for (const auto& component : workspace.components) {
        const CanvasPoint at = DrawnAt(*component);
        extent.x = std::max(extent.x, at.x);
        extent.y = std::max(extent.y, at.y);
    }
    const std::int32_t more = scale.gridSize + scale.iconSize;
    return {extent.x + more, extent.y + more};
}

}  // namespace photrak
