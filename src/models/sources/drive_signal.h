// What the sources of electrical drive signals share.
#pragma once

#include <cstdint>

namespace photrak {

/// A drive signal has at most 2^26 samples, 2 GiB with their noise.
inline constexpr std::int32_t maxDriveExponent = 26;
inline constexpr std::int32_t maxDriveSamples = std::int32_t{1} << maxDriveExponent;

}  // namespace photrak
