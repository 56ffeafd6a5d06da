// A drawing as an SVG text: no script, no outside resource, no date; the same drawing gives the
// same bytes on every machine.
#pragma once

#include <string>

#include "drawing/display_list.h"

namespace photrak {

/// `title` is what a screen reader says of the whole picture. Coordinates have two decimals. The
/// overlay is drawn too.
std::string SvgText(const Drawing& drawing, Theme theme, std::string_view title);

/// The same for a place in a page, whose style gives the colors: `SvgPalette` of a theme declares
/// them, and hides the density images of class "on-light" or "on-dark" that are of the other one.
/// `id`, a plain word, tells the pictures of a page apart.
std::string InlineSvgText(const Drawing& drawing, std::string_view title, std::string_view id);
/// The colors of all roles as custom properties: "--ink:#1b1f24;--paper:..."
std::string SvgPalette(Theme theme);

/// A text as it may stand in XML, between tags and in attributes.
std::string XmlEscaped(std::string_view text);

}  // namespace photrak
