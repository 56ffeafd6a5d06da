// The blocks of a diagram by the cell of the grid that their corner lies in, so that what is near a
// point is found without a look at all of them.
#pragma once

#include <cstdint>
#include <vector>

#include "workbench/canvas_geometry.h"

namespace photrak {

class CanvasIndex {
  public:
    struct Entry {
        Component* component = nullptr;
        CanvasPoint at;           // drawn corner, model units
        std::uint32_t place = 0;  // in the list of components
    };

    void Build(const Workspace& workspace);
    std::size_t Count() const { return entries_.size(); }
    /// The most ports that one side of a block has.
    std::int32_t MostPorts() const { return mostPorts_; }

    /// All entries whose corner may lie between the two points (model units, both included), in no
    /// order.
    template <class Visit>
    void Near(CanvasPoint low, CanvasPoint high, Visit visit) const {
        const CanvasPoint first = CellOf(low), last = CellOf(high);
        for (std::int32_t row = first.y; row <= last.y && !entries_.empty(); ++row) {
            const auto cell = static_cast<std::size_t>(row * canvasColumns);
            const std::size_t begin = starts_[cell + static_cast<std::size_t>(first.x)];
            const std::size_t end = starts_[cell + static_cast<std::size_t>(last.x) + 1];
            for (std::size_t i = begin; i < end; ++i) visit(entries_[i]);
        }
    }

  private:
    static CanvasPoint CellOf(CanvasPoint units) {
        const CanvasPoint inside = OnCanvas(units.x, units.y);
        return {inside.x / gridUnits, inside.y / gridUnits};
    }

    std::vector<Entry> entries_;         // by cell, row by row
    std::vector<std::uint32_t> starts_;  // of each cell, and the end
    std::int32_t mostPorts_ = 0;
};

/// The first component, in list order, whose rectangle holds the point. A point on the margin
/// around the icon's border is in the port zone: the nearest port of the nearer side. Where no
/// rectangle holds it, a port's square grown by 3 pixels does, so that long rows of ports can be
/// reached.
Hit HitTest(const CanvasIndex& index, CanvasPoint point, const Scale& scale);

/// Whether `test` is true of a component that holds the cell of the corner (model units).
template <class Test>
bool AnyHolds(const CanvasIndex& index, CanvasPoint corner, Test test) {
    constexpr std::int32_t around = iconUnits + portZoneUnits;
    bool found = false;
    index.Near({corner.x - around, corner.y - around},
               {corner.x + portZoneUnits, corner.y + portZoneUnits},
               [&](const CanvasIndex::Entry& entry) {
                   found = found || (HoldsCell(entry.at, corner) && test(entry.component));
               });
    return found;
}

}  // namespace photrak
