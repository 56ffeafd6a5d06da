// What is painted of a diagram, in order: icons with their ports, wires, selection, then what
// follows the pointer. The window turns it into a display list, the script player prints it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "workbench/workbench.h"

namespace photrak {

enum class WireRole { Optical, Electrical, Binary, Other };

struct PictureIcon {
    const Component* component = nullptr;
    std::string_view
        file;  // bare name of the bitmap that its type, or its own icon file, calls for
    std::int32_t own = -1;  // its own icon file: a place in CanvasPicture::ownFiles
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

/// Borrows names from the diagram and the palette: good until either changes.
struct CanvasPicture {
    CanvasPoint size;
    std::int32_t iconSide = 0, tickSide = 0, selectedSide = 0;
    std::vector<PictureIcon> icons;
    std::vector<PictureTick> ticks;  // of all icons: those of the first icon first, inputs first
    std::vector<PictureWire> wires;
    std::vector<PictureIcon> selected;
    std::vector<PictureIcon> ghost;  // none or one
    std::vector<PictureRubber> rubber;
    std::vector<std::string> ownFiles;  // paths, each once
};

/// The color class of a wire or port by its signal type.
WireRole WireRoleOf(std::int32_t sigType);

CanvasPicture PictureOf(const Workbench& workbench, const DiagramView& view);

}  // namespace photrak
