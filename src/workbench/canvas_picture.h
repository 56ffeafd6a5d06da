// What is painted of a diagram, in order: icons with their ports, wires, selection, then what
// follows the pointer. The window turns it into a display list, the script player prints it.
#pragma once

#include <string>
#include <vector>

#include "workbench/workbench.h"

namespace photrak {

enum class WireRole { Optical, Electrical, Binary, Other };

struct PictureIcon {
    const Component* component = nullptr;
    std::string file;  // bare name of the bitmap that its type, or its own icon file, calls for
    CanvasPoint at;
};
struct PictureTick {
    const Component* component = nullptr;
    Side side = Side::Input;
    std::int32_t port = 0;
    CanvasPoint at;
};
struct PictureWire {
    Wire wire;
    WireRole role = WireRole::Other;
};
struct PictureRubber {
    bool connects = true;
    CanvasPoint from, to;
};

struct CanvasPicture {
    CanvasPoint size;
    std::int32_t iconSide = 0, tickSide = 0, selectedSide = 0;
    std::vector<PictureIcon> icons;
    std::vector<PictureTick> ticks;  // of all icons: those of the first icon first, inputs first
    std::vector<PictureWire> wires;
    std::vector<PictureIcon> selected;
    std::vector<PictureIcon> ghost;  // none or one
    std::vector<PictureRubber> rubber;
};

/// The color class of a wire or port by its signal type.
WireRole WireRoleOf(std::int32_t sigType);

CanvasPicture PictureOf(const Workbench& workbench, const DiagramView& view);

/// The bare name of the bitmap file of a component.
std::string IconFileOf(const Workbench& workbench, const DiagramView& view,
                       const Component& component);

}  // namespace photrak
