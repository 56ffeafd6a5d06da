// Numbers by from_chars and to_chars, which know no locale.
#include "base/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "base/six_digits.h"

namespace photrak {
namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// What stands before the digits of a number. `begin` is where from_chars starts: after a plus
/// sign, which it does not know, but at a minus sign.
struct NumberStart {
    std::size_t begin = 0;   // of what from_chars gets
    std::size_t digits = 0;  // after the sign
    bool negative = false;
};

NumberStart FindNumber(std::string_view text) {
    NumberStart start;
    const auto first = text.find_first_not_of(" \t\n\v\f\r");
    start.begin = first == std::string_view::npos ? text.size() : first;
    start.digits = start.begin;
    if (start.begin < text.size() && (text[start.begin] == '+' || text[start.begin] == '-')) {
        start.negative = text[start.begin] == '-';
        ++start.digits;
        if (!start.negative) ++start.begin;
    }
    return start;
}

/// True if the number (digits, fraction, exponent; known to be outside the range) is too large
/// rather than too small: the power of ten of its first digit tells.
bool IsTooLarge(std::string_view number) {
    const auto mantissa = number.substr(0, number.find_first_of("eE"));
    const auto point = std::min(mantissa.find('.'), mantissa.size());
    const auto lead = mantissa.find_first_of("123456789");
    if (lead == std::string_view::npos) return false;
    double power =
        lead < point ? static_cast<double>(point - lead) - 1.0 : -static_cast<double>(lead - point);
    if (mantissa.size() + 1 < number.size()) power += ReadInt(number.substr(mantissa.size() + 1));
    return power > 0.0;
}

std::string Format(double value, std::chars_format form, int digits) {
    if (std::isnan(value)) return "nan";
    std::array<char, 128> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, form, digits);
    return std::string(text.data(), end.ptr);
}

}  // namespace

double ReadDouble(std::string_view text, std::size_t* used) {
    if (used) *used = 0;
    const NumberStart start = FindNumber(text);
    const std::string_view digits = text.substr(start.digits);
    const std::size_t point = digits.starts_with('.') ? 1 : 0;
    if (digits.size() <= point || !IsDigit(digits[point])) return 0.0;  // also inf and nan

    const std::string_view number = text.substr(start.begin);
    double value = 0.0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    const auto length = static_cast<std::size_t>(result.ptr - number.data());
    if (used) *used = start.begin + length;
    if (result.ec != std::errc::result_out_of_range) return value;
    const std::size_t sign = start.negative ? 1 : 0;
    value = IsTooLarge(number.substr(sign, length - sign)) ? HUGE_VAL : 0.0;
    return start.negative ? -value : value;
}

std::int32_t ReadInt(std::string_view text, std::size_t* used) {
    if (used) *used = 0;
    const NumberStart start = FindNumber(text);
    if (start.digits >= text.size() || !IsDigit(text[start.digits])) return 0;

    const std::string_view number = text.substr(start.begin);
    std::int32_t value = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (used) *used = start.begin + static_cast<std::size_t>(result.ptr - number.data());
    if (result.ec != std::errc::result_out_of_range) return value;
    return start.negative ? std::numeric_limits<std::int32_t>::min()
                          : std::numeric_limits<std::int32_t>::max();
}

std::optional<double> WholeDouble(std::string_view word) {
    std::size_t used = 0;
    const double value = ReadDouble(word, &used);
    if (used == 0 || used != word.size() || !std::isfinite(value)) return std::nullopt;
    return value;
}

std::optional<std::int32_t> WholeInt(std::string_view word) {
    std::size_t used = 0;
    const std::int32_t value = ReadInt(word, &used);
    // A double holds every 32-bit number: another value means that the integer saturated.
    const bool saturated = static_cast<double>(value) != ReadDouble(word.substr(0, used));
    if (used == 0 || used != word.size() || saturated) return std::nullopt;
    return value;
}

void AppendDefault(std::string& out, double value) {
    constexpr int digits = 6;
    std::array<char, mostSixDigits> text;
    if (const char* end = WriteSixDigits(text.data(), value)) {
        out.append(text.data(), static_cast<std::size_t>(end - text.data()));
    } else {
        out += FormatSignificant(value, digits);
    }
}

std::string FormatDefault(double value) {
    std::string text;
    AppendDefault(text, value);
    return text;
}

std::string FormatSignificant(double value, int digits) {
    return Format(value, std::chars_format::general, std::clamp(digits, 1, 60));
}

std::string FormatExponent(double value) {
    return Format(value, std::chars_format::scientific, 6);
}

std::int32_t SaturateToInt(double value) {
    constexpr auto lowest = std::numeric_limits<std::int32_t>::min();
    constexpr auto highest = std::numeric_limits<std::int32_t>::max();
    if (!(value > lowest)) return lowest;
    return value >= highest ? highest : static_cast<std::int32_t>(value);
}

std::string FillIn(std::string_view message, std::initializer_list<std::string_view> pieces) {
    std::string result;
    const auto* piece = pieces.begin();
    for (std::size_t i = 0; i < message.size(); ++i) {
        const std::string_view directive = message.substr(i, 2);
        if (directive == "%s" && piece != pieces.end()) {
            result.append(*piece++);
            ++i;
        } else if (directive == "%%") {
            result.append(directive);
            ++i;
        } else {
            result.push_back(message[i]);
        }
    }
    return result;
}

bool StartsWith(std::string_view text, std::string_view prefix) {
    return text.starts_with(prefix);
}

}  // namespace photrak
