// The rules of signal types: which of two types says more, and how a model's list of port types
// grows to any number of ports.
#pragma once

#include <cstdint>
#include <vector>

#include "kernel/workspace.h"

namespace photrak {

/// True if a wire between the two makes both of type `a`: a light or voltage port meets one that
/// takes either, and every definite type meets an unknown one.
bool IsMoreParticular(std::int32_t a, std::int32_t b);

enum class RepeatRule { None, Inputs };

/// `count` ports without nodes after the template of a prototype. Under the rule of inputs a
/// RepeatTwo, RepeatThree or RepeatFour cell goes on with the last two, three or four types given.
std::vector<Port> MakePorts(const std::vector<Port>& portTemplate, std::size_t count,
                            RepeatRule rule);

}  // namespace photrak
