// What a pointer and a keyboard do over a drawing, in its pixels: what a window hands to the logic.
#pragma once

#include <cstdint>
#include <string>

#include "drawing/geometry.h"

namespace photrak {

enum class PointerAction : std::uint8_t { Press, Move, Release, DoubleClick, Leave };
enum class PointerButton : std::uint8_t { None, Left, Middle, Right };

struct Modifiers {
    bool shift = false, control = false, alt = false;
};

struct PointerInput {
    PointerAction action = PointerAction::Move;
    Point at;
    /// That changed; while moving, the one that is held.
    PointerButton button = PointerButton::None;
    Modifiers modifiers;
};

struct WheelInput {
    Point at;
    double steps = 0.0;  // notches, above 0 away from the user; fractions from touchpads
    double sideways = 0.0;
    Modifiers modifiers;
};

enum class PointerShape : std::uint8_t { Arrow, Cross, Hand, Grab, SizeAcross, SizeUpDown, Wait };

}  // namespace photrak
