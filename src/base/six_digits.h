// The default form of numbers, six significant digits as %g has them, at the pace of long files.
#pragma once

namespace photrak {

/// Longest text of a number in that form: "-1.23457e-308".
inline constexpr int mostSixDigits = 16;

/// Writes `value` and gives the end; null, and nothing written, for the rare number that this way
/// does not decide: one close to the middle between two texts, of extreme size, or none at all.
char* WriteSixDigits(char* out, double value);

}  // namespace photrak
