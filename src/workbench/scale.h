// The drawing scale that all open diagrams share, and the way between pixels and model units. The
// grid is 45 units: an icon of 30 and a gap of 15; all arithmetic is whole numbers that cut toward
// zero.
#pragma once

#include <cstdint>

namespace photrak {

inline constexpr std::int32_t gridUnits = 45, iconUnits = 30;
inline constexpr std::int32_t canvasColumns = 120, canvasRows = 90;
/// The last cell's corner, in model units.
inline constexpr std::int32_t lastX = (canvasColumns - 1) * gridUnits;
inline constexpr std::int32_t lastY = (canvasRows - 1) * gridUnits;

/// A point in pixels of the canvas or in units of the model.
struct CanvasPoint {
    std::int32_t x = 0, y = 0;
    friend bool operator==(CanvasPoint, CanvasPoint) = default;
};

struct Scale {
    double zoom = 1.0;          // pixels per model unit
    double previousZoom = 1.0;  // before the last change
    std::int32_t iconSize = 30, gridSize = 45;
    std::int32_t portTick = 3;   // side of a port's square, pixels
    std::int32_t portPitch = 6;  // from one port to the next

    /// Moves the present zoom to previousZoom, equal or not, and derives the sizes. Stays within
    /// 0.05 and 20; what is no number gives 1.
    void SetZoom(double newZoom);
    /// Goes on with a change of zoom, as a turning wheel does: previousZoom stays.
    void ContinueZoom(double newZoom);
    /// For printing: without the limits.
    void SetPrintZoom(double newZoom);

    std::int32_t ToPixel(std::int32_t units) const;
    CanvasPoint ToPixel(CanvasPoint units) const { return {ToPixel(units.x), ToPixel(units.y)}; }
    /// The corner of the grid cell that a point in pixels belongs to, within the canvas.
    CanvasPoint ToCell(CanvasPoint pixels) const;

  private:
    void Derive();
};

/// The grid position nearest to a model coordinate that is not negative.
std::int32_t Snap(std::int32_t units);
/// Where the pointer may be, far outside the window too, without overflow of what is added to it.
CanvasPoint Bounded(CanvasPoint point);
/// Positions from files, moved into the canvas.
CanvasPoint OnCanvas(std::int32_t x, std::int32_t y);

}  // namespace photrak
