// Entries are sorted by cell with one count over the cells and one pass over the blocks.
#include "workbench/canvas_index.h"

#include <algorithm>
#include <cstdlib>

namespace photrak {
namespace {

constexpr std::size_t cells = static_cast<std::size_t>(canvasColumns) * canvasRows;

/// The coordinate that certainly lies at or before so many pixels, and one at or after.
std::int32_t UnitsBefore(std::int32_t pixels, const Scale& scale) {
    return static_cast<std::int32_t>(std::clamp((pixels - 1) / scale.zoom - 1.0, -1e6, 1e6));
}
std::int32_t UnitsAfter(std::int32_t pixels, const Scale& scale) {
    return static_cast<std::int32_t>(std::clamp((pixels + 1) / scale.zoom + 1.0, -1e6, 1e6));
}

Hit HitOnTicks(const CanvasIndex& index, CanvasPoint point, const Scale& scale) {
    const std::int32_t side = scale.portTick + portZone;
    const std::int32_t tall = scale.iconSize + index.MostPorts() * scale.portPitch / 2 + side;
    Hit best;
    std::int32_t least = 0;
    std::uint32_t place = 0;
    index.Near(
        {UnitsBefore(point.x - scale.iconSize - side, scale), UnitsBefore(point.y - tall, scale)},
        {UnitsAfter(point.x + side, scale), UnitsAfter(point.y + tall, scale)},
        [&](const CanvasIndex::Entry& entry) {
            for (const Side wanted : {Side::Input, Side::Output}) {
                const Hit hit = HitOnTick(*entry.component, wanted, point, scale);
                if (!hit.component) continue;
                const std::int32_t distance = std::abs(point.y - hit.wireEnd.y);
                const bool isBetter =
                    distance < least || (distance == least && entry.place < place);
                if (best.component && !isBetter) continue;
                best = hit;
                least = distance;
                place = entry.place;
            }
        });
    return best;
}

}  // namespace

void CanvasIndex::Build(const Workspace& workspace) {
    const auto& components = workspace.components;
    starts_.assign(cells + 1, 0);
    mostPorts_ = 0;
    std::vector<Entry> entries;
    std::vector<std::uint32_t> cellOf;
    entries.reserve(components.size());
    cellOf.reserve(components.size());
    for (const auto& component : components) {
        const auto place = static_cast<std::uint32_t>(entries.size());
        entries.push_back({component.get(), DrawnAt(*component), place});
        const CanvasPoint cell = CellOf(entries.back().at);
        cellOf.push_back(static_cast<std::uint32_t>(cell.y * canvasColumns + cell.x));
        ++starts_[cellOf.back() + 1];
        mostPorts_ = std::max({mostPorts_, static_cast<std::int32_t>(component->inputs.size()),
                               static_cast<std::int32_t>(component->outputs.size())});
    }
    for (std::size_t i = 1; i <= cells; ++i) starts_[i] += starts_[i - 1];
    std::vector<std::uint32_t> next(starts_.begin(), starts_.end() - 1);
    entries_.resize(entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i) entries_[next[cellOf[i]]++] = entries[i];
}

Hit HitTest(const CanvasIndex& index, CanvasPoint where, const Scale& scale) {
    const CanvasPoint point = Bounded(where);
    const std::int32_t outer = OuterMargin(scale), reach = scale.iconSize + outer;
    CanvasIndex::Entry first;
    index.Near({UnitsBefore(point.x - reach, scale), UnitsBefore(point.y - reach, scale)},
               {UnitsAfter(point.x + outer, scale), UnitsAfter(point.y + outer, scale)},
               [&](const CanvasIndex::Entry& entry) {
                   if (first.component && entry.place > first.place) return;
                   if (IsOnBlock(scale.ToPixel(entry.at), point, scale)) first = entry;
               });
    if (first.component) return HitOnComponent(*first.component, point, scale);
    return HitOnTicks(index, point, scale);
}

}  // namespace photrak
