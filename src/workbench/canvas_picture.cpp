// The order of a paint is the order of the lists.
#include "workbench/canvas_picture.h"

#include <unordered_map>

#include "workbench/superblock_paths.h"

namespace photrak {
namespace {

void AddTicks(const Component& component, const Scale& scale, CanvasPicture& picture) {
    for (const Side side : {Side::Input, Side::Output}) {
        const std::int32_t count = ShownPorts(component, side);
        for (std::int32_t port = 1; port <= count; ++port) {
            picture.ticks.push_back({&component, side, port, TickAt(component, side, port, scale)});
        }
    }
}

/// The pictures that components call for. A file or a type is looked up once for all of them.
class IconFiles {
  public:
    IconFiles(const Workbench& workbench, const DiagramView& view,
              std::vector<std::string>& ownFiles)
        : workbench_(workbench), view_(view), ownFiles_(ownFiles) {}

    PictureIcon Of(const Component& component) {
        const std::string_view name = component.ICON;
        if (name.find('.') != std::string_view::npos) {
            const auto [place, isNew] = own_.try_emplace(name, -1);
            if (isNew) place->second = Find(component.ICON);
            if (place->second >= 0) {
                return {&component, name.substr(name.rfind('/') + 1), place->second, {}};
            }
        }
        const auto [file, isNew] = byType_.try_emplace(component.type);
        if (isNew) {
            const PaletteModels& palette = workbench_.palette;
            file->second = palette.Row(palette.IndexOf(component.type)).bitmap;
        }
        return {&component, file->second, -1, {}};
    }

  private:
    std::int32_t Find(const std::string& name) {
        auto path = FindFromDiagram(name, view_.directory, workbench_.catalogue);
        if (!path) return -1;
        ownFiles_.push_back(std::move(*path));
        return static_cast<std::int32_t>(ownFiles_.size()) - 1;
    }

    const Workbench& workbench_;
    const DiagramView& view_;
    std::vector<std::string>& ownFiles_;
    std::unordered_map<std::string_view, std::int32_t> own_;
    std::unordered_map<std::string_view, std::string_view> byType_;
};

void AddDrag(const Workbench& workbench, const DiagramView& view, IconFiles& files,
             CanvasPicture& picture) {
    const Drag& drag = view.drag;
    if (view.ghost.shown) {
        PictureIcon ghost{nullptr, workbench.palette.Row(view.modelIndex).bitmap, -1, {}};
        if (drag.kind == DragKind::Move && view.current) ghost = files.Of(*view.current);
        const std::int32_t half = workbench.scale.iconSize / 2;
        ghost.at = {view.ghost.pointer.x - half, view.ghost.pointer.y - half};
        picture.ghost.push_back(ghost);
    }
    if (drag.kind == DragKind::Connect || drag.kind == DragKind::Disconnect) {
        picture.rubber.push_back({drag.kind == DragKind::Connect, drag.start, drag.last});
    }
}

}  // namespace

WireRole WireRoleOf(std::int32_t sigType) {
    switch (sigType) {
        case OpSigType:
            return WireRole::Optical;
        case ElecSigType:
            return WireRole::Electrical;
        case BinSigType:
            return WireRole::Binary;
        default:
            return WireRole::Other;
    }
}

CanvasPicture PictureOf(const Workbench& workbench, const DiagramView& view) {
    const Scale& scale = workbench.scale;
    CanvasPicture picture;
    picture.size = {canvasColumns * scale.gridSize, canvasRows * scale.gridSize};
    picture.iconSide = scale.iconSize;
    picture.tickSide = scale.portTick;
    picture.selectedSide = scale.iconSize + 5;
    IconFiles files(workbench, view, picture.ownFiles);
    picture.icons.reserve(view.workspace->components.size());
    for (const auto& component : view.workspace->components) {
        picture.icons.push_back(files.Of(*component));
        picture.icons.back().at = IconAt(*component, scale);
        AddTicks(*component, scale, picture);
    }
    for (const Wire& wire : Wires(*view.workspace, scale)) {
        picture.wires.push_back({wire, WireRoleOf(wire.node->type)});
    }
    for (const Component* component : view.selection) {
        const CanvasPoint at = IconAt(*component, scale);
        picture.selected.push_back({component, {}, -1, {at.x - 2, at.y - 2}});
    }
    AddDrag(workbench, view, files, picture);
    return picture;
}

}  // namespace photrak
