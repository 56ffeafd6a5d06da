// Ports stand at even distances around the middle of their side; wires run straight to the next
// column, else just above the driver's row or through the gap below it.
#include "workbench/canvas_geometry.h"

#include <algorithm>
#include <cstdlib>
#include <unordered_map>

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

/// An input port that stands on a node, by its reader's place in the list.
struct Reading {
    const Node* node;
    const Component* reader;
    std::int32_t port;
};
struct Driving {
    const Component* driver;
    std::int32_t port;
};

void Route(Wire& wire, const Scale& scale) {
    const CanvasPoint driver = IconAt(*wire.from, scale), reader = IconAt(*wire.to, scale);
    const std::int32_t y1 = WireEndAt(*wire.from, Side::Output, wire.output, scale).y;
    const std::int32_t y2 = WireEndAt(*wire.to, Side::Input, wire.input, scale).y;
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
    const CanvasPoint icon = IconAt(component, scale);
    const auto count = static_cast<std::int32_t>(PortsOf(component, side).size());
    return {side == Side::Input ? icon.x - scale.portTick : icon.x + scale.iconSize,
            FirstTop(icon.y, count, scale) + (port - 1) * scale.portPitch};
}

CanvasPoint WireEndAt(const Component& component, Side side, std::int32_t port,
                      const Scale& scale) {
    CanvasPoint end = TickAt(component, side, port, scale);
    if (side == Side::Output) end.x += scale.portTick;
    end.y += (scale.portTick - 1) / 2;
    return end;
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
    std::unordered_map<const Node*, Driving> drivers;
    std::vector<Reading> readings;
    for (const auto& component : workspace.components) {
        std::int32_t port = 0;
        for (const Port& output : component->outputs) {
            ++port;
            if (output.node && output.node->number != 0) {
                drivers.try_emplace(output.node, Driving{component.get(), port});
            }
        }
        port = 0;
        for (const Port& input : component->inputs) {
            ++port;
            if (input.node && input.node->number != 0) {
                readings.push_back({input.node, component.get(), port});
            }
        }
    }
    std::ranges::stable_sort(readings, {}, [](const Reading& r) { return r.node->number; });
    std::vector<Wire> wires;
    wires.reserve(readings.size());
    for (const Reading& reading : readings) {
        const auto driver = drivers.find(reading.node);
        if (driver == drivers.end()) continue;
        Wire wire{reading.node, driver->second.driver, reading.reader, driver->second.port,
                  reading.port};
        Route(wire, scale);
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
