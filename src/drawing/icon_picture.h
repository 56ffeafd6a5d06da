// Icons as vectors: a small strict part of SVG read into shapes with roles, so that one file serves
// every size and theme, on the screen, on paper and in picture files.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/display_list.h"

namespace photrak {

/// One outline of an icon, curves flattened, in units of the icon's grid.
struct IconShape {
    std::vector<Point> points;
    bool closed = false;
    std::optional<Role> stroke, fill;
    double width = 2.0;  // of the stroke
};

struct IconPicture {
    std::vector<IconShape> shapes;  // in the order of painting
};

/// Side of the grid on which icons are drawn.
inline constexpr double iconGrid = 30.0;

/// Reads an icon: `svg` with viewBox "0 0 30 30", in it `path` (M L H V C A Z, also relative),
/// `line`, `polyline`, `polygon`, `rect`, `circle`, `ellipse` with the attributes `stroke`, `fill`
/// and `stroke-width` (1 or 2), colors being those of roles in the light theme or "none"; `g` gives
/// its attributes to what it holds. False with "NAME: ..." for anything else: it would not be
/// drawn.
[[nodiscard]] bool ReadIcon(std::string_view text, const std::string& name, IconPicture& icon,
                            std::string& error);

/// The lines and areas of an icon.
std::vector<DrawItem> ItemsOf(const IconItem& item);

}  // namespace photrak
