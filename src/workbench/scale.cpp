// Sizes that follow from a zoom.
#include "workbench/scale.h"

#include <algorithm>
#include <cmath>

namespace photrak {
namespace {

constexpr double leastZoom = 0.05, greatestZoom = 20.0;

}  // namespace

void Scale::SetZoom(double newZoom) {
    SetPrintZoom(std::isnan(newZoom) ? 1.0 : std::clamp(newZoom, leastZoom, greatestZoom));
}

void Scale::ContinueZoom(double newZoom) {
    const double former = previousZoom;
    SetZoom(newZoom);
    previousZoom = former;
}

void Scale::SetPrintZoom(double newZoom) {
    previousZoom = zoom;
    zoom = newZoom;
    Derive();
}

void Scale::Derive() {
    iconSize = static_cast<std::int32_t>(zoom * iconUnits + 0.5);
    gridSize = iconSize + iconSize / 2;
    portTick = iconSize >= 30 ? 3 : iconSize >= 15 ? 2 : 1;
    portPitch = iconSize >= 30 ? 6 : iconSize >= 15 ? 4 : 2;
}

std::int32_t Scale::ToPixel(std::int32_t units) const {
    return static_cast<std::int32_t>(units * zoom + 0.5);
}

CanvasPoint Scale::ToCell(CanvasPoint pixels) const {
    // Far outside the window a pointer must not overflow the whole numbers.
    const auto units = [this](std::int32_t p) {
        constexpr double farthest = 1e6;
        return static_cast<std::int32_t>(std::min(std::max(p, 0) / zoom + 0.5, farthest));
    };
    return {std::min(Snap(units(pixels.x)), lastX), std::min(Snap(units(pixels.y)), lastY)};
}

std::int32_t Snap(std::int32_t units) {
    return (units + gridUnits / 2) / gridUnits * gridUnits;
}

CanvasPoint Bounded(CanvasPoint point) {
    constexpr std::int32_t far = 1'000'000'000;
    return {std::clamp(point.x, -far, far), std::clamp(point.y, -far, far)};
}

CanvasPoint OnCanvas(std::int32_t x, std::int32_t y) {
    return {std::clamp(x, 0, lastX), std::clamp(y, 0, lastY)};
}

}  // namespace photrak
