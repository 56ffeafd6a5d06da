// Numbers as a reader of a picture wants them: SI prefixes, as many digits as a step needs, powers
// of ten with raised digits, a real minus sign. No locale.
#pragma once

#include <string>
#include <string_view>

namespace photrak {

inline constexpr std::string_view minusSign = "\xE2\x88\x92";

struct SiPrefix {
    std::string_view text;  // "n"
    int exponent;           // -9
};
/// The prefix of the largest power 10^3k (k from -8 to 8) that is at most abs(value); that of 0 is
/// none.
SiPrefix PrefixFor(double value);
/// The prefix of an exponent that is a multiple of 3 from -24 to 24, otherwise none.
SiPrefix PrefixOf(int exponent);

/// 10^exponent, correctly rounded where the library's pow is (exponents to 300).
double PowerOfTen(int exponent);

/// `value` with just the decimals that tell multiples of `step` apart: FixedText(0.3, 0.05) is
/// "0.30". Beyond six digits before the point the form is one digit, decimals and a power.
std::string FixedText(double value, double step);
/// "10" with raised digits: 10^-9 as a label of a decade.
std::string DecadeText(int exponent);
/// `digits` significant digits, a power of ten with raised digits outside 1e-4 to 1e6.
std::string ReadableText(double value, int digits = 6);
/// A value with its unit and an SI prefix: EngineeringText(1.25e-10, "s", 4) is "125 ps". Units
/// that take no prefix ("dB", "dBm", none) get the number alone.
std::string EngineeringText(double value, std::string_view unit, int digits = 5);
bool TakesPrefix(std::string_view unit);

}  // namespace photrak
