// The order of a paint is the order of the lists.
#include "workbench/canvas_picture.h"

#include <filesystem>

#include "base/text.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

void AddTicks(const Component& component, const Scale& scale, CanvasPicture& picture) {
    for (const Side side : {Side::Input, Side::Output}) {
        const std::int32_t count = ShownPorts(component, side);
        for (std::int32_t port = 1; port <= count; ++port) {
            picture.ticks.push_back({&component, side, port, TickAt(component, side, port, scale)});
        }
    }
}

void AddDrag(const Workbench& workbench, const DiagramView& view, CanvasPicture& picture) {
    const Drag& drag = view.drag;
    if (view.ghost.shown) {
        const std::string file = drag.kind == DragKind::Move && view.current
                                     ? IconFileOf(workbench, view, *view.current)
                                     : workbench.palette.Row(view.modelIndex).bitmap;
        picture.ghost.push_back({nullptr, file, view.ghost.at});
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

std::string IconFileOf(const Workbench& workbench, const DiagramView& view,
                       const Component& component) {
    const std::string& own = component.ICON;
    if (own.find('.') != std::string::npos) {
        std::error_code error;
        for (const fs::path& path : {fs::path(view.directory) / own,
                                     fs::path(workbench.catalogue.superBlockDirectory) / own}) {
            if (fs::is_regular_file(path, error)) return fs::path(own).filename().string();
        }
    }
    return workbench.palette.Row(workbench.palette.IndexOf(component.type)).bitmap;
}

CanvasPicture PictureOf(const Workbench& workbench, const DiagramView& view) {
    const Scale& scale = workbench.scale;
    CanvasPicture picture;
    picture.size = {canvasColumns * scale.gridSize, canvasRows * scale.gridSize};
    picture.iconSide = scale.iconSize;
    picture.tickSide = scale.portTick;
    picture.selectedSide = scale.iconSize + 5;
    for (const auto& component : view.workspace->components) {
        picture.icons.push_back(
            {component.get(), IconFileOf(workbench, view, *component), IconAt(*component, scale)});
        AddTicks(*component, scale, picture);
    }
    for (const Wire& wire : Wires(*view.workspace, scale)) {
        picture.wires.push_back({wire, WireRoleOf(wire.node->type)});
    }
    for (const Component* component : view.selection) {
        const CanvasPoint at = IconAt(*component, scale);
        picture.selected.push_back({component, {}, {at.x - 2, at.y - 2}});
    }
    AddDrag(workbench, view, picture);
    return picture;
}

}  // namespace photrak
