#include "drawing/roles.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace photrak {
namespace {

struct RoleRow {
    const char* name;
    std::uint32_t light, dark, print;  // 0xRRGGBB
};

// The curve colors keep their hue on all grounds; on dark ground the two darkest are raised, on
// white the two lightest lowered until a thin line of them is seen at once.
// clang-format off
constexpr std::array<RoleRow, 16> plainRoles{{
    {"paper",      0xFFFFFF, 0x15181C, 0xFFFFFF},
    {"ink",        0x1B1F24, 0xE6E9ED, 0x000000},
    {"dim",        0x5F6874, 0x9AA4B0, 0x444444},
    {"grid",       0xE4E7EB, 0x2A2F36, 0xDDDDDD},
    {"frame",      0x8A929C, 0x59626D, 0x000000},
    {"optical",    0xC2410C, 0xF08A4B, 0x000000},
    {"electrical", 0x0072B2, 0x56A8DC, 0x000000},
    {"binary",     0x00795A, 0x2FBF97, 0x000000},
    {"other",      0x5A5A5A, 0xA9A9A9, 0x000000},
    {"selected",   0x2F6FDE, 0x6FA2FF, 0x2F6FDE},
    {"hover",      0x7C5CBF, 0xB79CF0, 0x7C5CBF},
    {"fault",      0xC62828, 0xFF7B72, 0xC62828},
    // Pure hues, which those who draw links know; never the only sign, as wires may have patterns.
    {"wire-optical",    0xFF0000, 0xFF6B6B, 0xFF0000},
    {"wire-electrical", 0x0000FF, 0x7A9BFF, 0x0000FF},
    {"wire-binary",     0x00FF00, 0x66F266, 0x00FF00},
    {"wire-other",      0x000000, 0xE6E9ED, 0x000000},
}};
constexpr std::array<RoleRow, 7> curveRoles{{
    {"blue",       0x0072B2, 0x3E9BDA, 0x0072B2},
    {"vermilion",  0xD55E00, 0xE8772B, 0xD55E00},
    {"green",      0x009E73, 0x19B98D, 0x009E73},
    {"purple",     0xCC79A7, 0xD78DB6, 0xCC79A7},
    {"orange",     0xD08C00, 0xE69F00, 0xD08C00},
    {"sky",        0x3FA0D8, 0x7CC8F2, 0x3FA0D8},
    {"gray",       0x5A5A5A, 0xB0B6BE, 0x5A5A5A},
}};
// clang-format on

constexpr Color FromHex(std::uint32_t rgb) {
    return {static_cast<std::uint8_t>(rgb >> 16), static_cast<std::uint8_t>(rgb >> 8 & 0xFF),
            static_cast<std::uint8_t>(rgb & 0xFF)};
}

bool IsCurve(Role role) {
    return role >= Role::Curve1;
}
int CurveNumber(Role role) {
    return static_cast<int>(role) - static_cast<int>(Role::Curve1);
}

/// sRGB component to light.
double Linear(std::uint8_t component) {
    const double c = component / 255.0;
    return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}
double Luminance(Color color) {
    return 0.2126 * Linear(color.red) + 0.7152 * Linear(color.green) + 0.0722 * Linear(color.blue);
}

std::uint8_t Mix(std::uint8_t from, std::uint8_t to, double part) {
    return static_cast<std::uint8_t>(std::lround(from + (to - from) * part));
}

}  // namespace

Color ColorOf(Role role, Theme theme) {
    const RoleRow& row =
        IsCurve(role) ? curveRoles[static_cast<std::size_t>(CurveNumber(role)) % curveRoles.size()]
                      : plainRoles[static_cast<std::size_t>(role)];
    return FromHex(theme == Theme::Light ? row.light : theme == Theme::Dark ? row.dark : row.print);
}

std::string HexText(Color color) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text = "#";
    for (const std::uint8_t part : {color.red, color.green, color.blue}) {
        text += digits[part >> 4];
        text += digits[part & 15];
    }
    return text;
}

std::string RoleName(Role role) {
    if (IsCurve(role)) return "curve-" + std::to_string(CurveNumber(role) + 1);
    return plainRoles[static_cast<std::size_t>(role)].name;
}

Role CurveRole(int n) {
    const int index = std::max(n, 0) % curveRoleCount;
    return static_cast<Role>(static_cast<int>(Role::Curve1) + index);
}

Dash CurveDash(int n) {
    constexpr Dash dashes[] = {Dash::Solid, Dash::Dashed, Dash::DashDot, Dash::Dotted};
    return dashes[std::max(n, 0) / static_cast<int>(curveRoles.size()) % 4];
}

Marker CurveMarker(int n) {
    return static_cast<Marker>(std::max(n, 0) % (static_cast<int>(Marker::Plus) + 1));
}

Color RampColor(int level, Theme theme) {
    const double part = std::clamp(level, 0, 255) / 255.0;
    struct Ramp {
        std::uint32_t ground, first, middle, last;
    };
    constexpr Ramp onLight{0xFFFFFF, 0xC6DDEC, 0x2C7FB8, 0x08204A};
    constexpr Ramp onDark{0x15181C, 0x153E5C, 0x3E9BDA, 0xF2FAFF};
    const Ramp& ramp = theme == Theme::Dark ? onDark : onLight;
    if (level <= 0) return FromHex(ramp.ground);
    const bool lower = part < 0.5;
    const Color from = FromHex(lower ? ramp.first : ramp.middle);
    const Color to = FromHex(lower ? ramp.middle : ramp.last);
    const double place = lower ? 2.0 * part : 2.0 * part - 1.0;
    return {Mix(from.red, to.red, place), Mix(from.green, to.green, place),
            Mix(from.blue, to.blue, place)};
}

double Contrast(Color a, Color b) {
    const double one = Luminance(a), other = Luminance(b);
    return (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05);
}

}  // namespace photrak
