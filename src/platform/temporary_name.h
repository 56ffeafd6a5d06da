// Names of files under way: they tell whose they are, so that what a killed writer left can go.
#pragma once

#include <string>
#include <string_view>

namespace photrak {

inline constexpr std::string_view temporaryStart = ".photrak-", temporaryEnd = ".tmp";

/// The start of the names that this process gives, ".photrak-PID-HOST".
std::string TemporaryStem();
/// The process of this machine that a temporary name speaks of; 0 for any other name.
int OwnerOfTemporary(std::string_view name);

}  // namespace photrak
