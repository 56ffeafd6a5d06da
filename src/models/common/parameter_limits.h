// What a model accepts as the value of a parameter, as a table, and the message for anything else.
// The catalogue's limits keep users within reason; these keep the arithmetic sound whatever a
// file, an expression or a random draw gave.
#pragma once

#include <cmath>
#include <span>
#include <string>
#include <string_view>

#include "base/status.h"
#include "kernel/param_table.h"
#include "models/common/refusals.h"

namespace photrak {

/// Refuses a value outside the range.
Status CheckRange(std::string_view owner, std::string_view name, double value, Range range,
                  std::string& errorText);

template <class Params>
struct ParameterLimit {
    std::string_view name;
    double Params::*member;
    Range range;
};

/// The first parameter that breaks its limit is reported. Params has the component's name in owner.
template <class Params>
Status CheckLimits(const Params& params, std::span<const ParameterLimit<Params>> limits,
                   std::string& errorText) {
    for (const ParameterLimit<Params>& limit : limits) {
        const Status status =
            CheckRange(params.owner, limit.name, params.*limit.member, limit.range, errorText);
        if (status != Status::Success) return status;
    }
    return Status::Success;
}

}  // namespace photrak
