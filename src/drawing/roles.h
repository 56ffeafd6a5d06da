// What a line or an area stands for. A drawing names roles; a theme turns them into colors, so that
// light, dark and print are three tables and no drawing is made twice.
#pragma once

#include <cstdint>
#include <string>

namespace photrak {

enum class Role : std::uint8_t {
    Paper,
    Ink,
    Dim,  // secondary text: file name, notes
    Grid,
    Frame,
    Optical,
    Electrical,
    Binary,
    Other,
    Selected,
    Hover,
    Fault,
    // Wires and ports of a diagram, by the type of their signal.
    WireOptical,
    WireElectrical,
    WireBinary,
    WireOther,
    // Curves, in the order in which a plot takes them.
    Curve1,
    Curve2,
    Curve3,
    Curve4,
    Curve5,
    Curve6,
    Curve7,
    Curve8,
    Curve9,
    Curve10,
    Curve11,
    Curve12,
    Curve13,
    Curve14,
};
inline constexpr int roleCount = static_cast<int>(Role::Curve14) + 1;
inline constexpr int curveRoleCount = 14;

enum class Theme : std::uint8_t { Light, Dark, Print };
enum class Dash : std::uint8_t { Solid, Dashed, Dotted, DashDot };
enum class Marker : std::uint8_t { Circle, Square, Diamond, Triangle, Cross, Plus, TriangleDown };

struct Color {
    std::uint8_t red = 0, green = 0, blue = 0;
    bool operator==(const Color&) const = default;
};

Color ColorOf(Role role, Theme theme);
/// "#0072b2".
std::string HexText(Color color);
/// A word for the role, as text dumps and the classes of an SVG have it: "ink", "curve-3".
std::string RoleName(Role role);

/// The look of the n-th curve (from 0, wrapping): the 7 colors of Okabe and Ito (2008) that stand
/// on both grounds, then the same with dashes; the marker changes with each curve.
Role CurveRole(int n);
Dash CurveDash(int n);
Marker CurveMarker(int n);

/// Color of a density, 0 (nothing) to 255 (most): one hue of rising contrast to the ground, ordered
/// in gray too.
Color RampColor(int level, Theme theme);

/// Ratio of the relative luminances, 1 to 21. Source: WCAG 2.1, contrast ratio.
double Contrast(Color a, Color b);

}  // namespace photrak
