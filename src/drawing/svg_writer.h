// A drawing as an SVG text: no script, no outside resource, no date; the same drawing gives the
// same bytes on every machine.
#pragma once

#include <string>

#include "drawing/display_list.h"

namespace photrak {

/// `title` is what a screen reader says of the whole picture. Coordinates have two decimals. The
/// overlay is drawn too.
std::string SvgText(const Drawing& drawing, Theme theme, std::string_view title);

/// A text as it may stand in XML, between tags and in attributes.
std::string XmlEscaped(std::string_view text);

}  // namespace photrak
