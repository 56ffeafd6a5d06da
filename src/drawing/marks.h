// Named areas of a drawing. One list serves hit-test, tooltip, screen reader and tests: what can be
// pointed at has an id, a name in words and a hint.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "drawing/geometry.h"

namespace photrak {

struct Mark {
    std::string id;    // "legend:2", "axis:x", "cursor:A"; the part before the colon is its kind
    Rect area;         // pixels
    std::string name;  // what a screen reader says
    std::string hint;  // what a click does; may be empty
};
using Marks = std::vector<Mark>;

/// The topmost (last added) mark that contains `p`; without one the nearest within `tolerance`
/// pixels; null if none is.
const Mark* MarkAt(const Marks& marks, Point p, double tolerance = 0.0);
const Mark* FindMark(const Marks& marks, std::string_view id);

}  // namespace photrak
