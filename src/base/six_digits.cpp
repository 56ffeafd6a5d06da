// A power of ten brings the six digits before the point, in extended precision: powers up to 10^27
// are exact there, and the one product or quotient is off by half a unit in the 64th bit. Only
// where what follows the digits is within 10^-6 of a half could that, or a tie, change the
// rounding.
#include "base/six_digits.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace photrak {
namespace {

using Extended = long double;
static_assert(std::numeric_limits<Extended>::digits >= 64 ||
                  std::numeric_limits<Extended>::digits == 53,
              "the powers of ten must be exact");

// 5^27 is below 2^63, and 5^22 below 2^53.
constexpr int mostPower = std::numeric_limits<Extended>::digits >= 64 ? 27 : 22;
constexpr int digitCount = 6;
constexpr std::int64_t least = 100'000, most = 1'000'000;  // six digits as a whole number
constexpr Extended tieMargin = 1e-6L;

constexpr auto powers = [] {
    std::array<Extended, mostPower + 1> table{};
    table[0] = 1.0L;
    for (std::size_t i = 1; i < table.size(); ++i) table[i] = table[i - 1] * 10.0L;
    return table;
}();

/// value * 10^power; false beyond the table.
bool Scale(double value, int power, Extended& scaled) {
    if (power > mostPower || power < -mostPower) return false;
    const Extended factor = powers[static_cast<std::size_t>(std::abs(power))];
    scaled = power < 0 ? value / factor : value * factor;
    return true;
}

/// The whole number of six digits and the power of ten of its first; false where that is not sure.
bool FindDigits(double value, std::int64_t& digits, int& exponent) {
    const int binary = static_cast<int>(std::bit_cast<std::uint64_t>(value) >> 52) - 1023;
    // Rounded down: the power of ten itself or one below it.
    exponent = static_cast<int>(std::floor(binary * 0.30102999566398120));
    Extended scaled = 0.0L;
    if (!Scale(value, digitCount - 1 - exponent, scaled)) return false;
    if (scaled >= static_cast<Extended>(most)) {
        ++exponent;
        if (!Scale(value, digitCount - 1 - exponent, scaled)) return false;
    }
    digits = static_cast<std::int64_t>(scaled);
    const Extended rest = scaled - static_cast<Extended>(digits);
    if (std::fabs(rest - 0.5L) < tieMargin) return false;
    if (rest > 0.5L) ++digits;
    if (digits == most) {
        digits = least;
        ++exponent;
    }
    return digits >= least && digits < most;
}

char* WriteExponent(char* out, int exponent) {
    *out++ = 'e';
    *out++ = exponent < 0 ? '-' : '+';
    const int size = std::abs(exponent);  // below 100 within the table
    *out++ = static_cast<char>('0' + size / 10);
    *out++ = static_cast<char>('0' + size % 10);
    return out;
}

/// `count` digits with the point after `whole` of them, or none at the end.
char* WriteDigits(char* out, const char* text, int count, int whole) {
    for (int i = 0; i < count; ++i) {
        if (i == whole) *out++ = '.';
        *out++ = text[i];
    }
    return out;
}

}  // namespace

char* WriteSixDigits(char* out, double value) {
    const double size = std::fabs(value);
    std::int64_t digits = 0;
    int exponent = 0;
    if (size == 0.0) {
        if (std::signbit(value)) *out++ = '-';
        *out++ = '0';
        return out;
    }
    if (!std::isnormal(size) || !FindDigits(size, digits, exponent)) return nullptr;
    char text[digitCount];
    for (int i = digitCount; i-- > 0; digits /= 10) text[i] = static_cast<char>('0' + digits % 10);
    int count = digitCount;
    while (count > 1 && text[count - 1] == '0') --count;

    if (std::signbit(value)) *out++ = '-';
    if (exponent < -4 || exponent >= digitCount) {
        return WriteExponent(WriteDigits(out, text, count, 1), exponent);
    }
    if (exponent < 0) {
        *out++ = '0';
        *out++ = '.';
        for (int i = -1; i > exponent; --i) *out++ = '0';
        return WriteDigits(out, text, count, count);
    }
    out = WriteDigits(out, text, count, exponent + 1);
    for (int i = count; i <= exponent; ++i) *out++ = '0';
    return out;
}

}  // namespace photrak
