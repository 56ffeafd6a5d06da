#include "drawing/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace photrak {
namespace {

constexpr std::string_view prefixTexts[] = {"y", "z", "a", "f", "p", "n", "\xC2\xB5", "m", "",
                                            "k", "M", "G", "T", "P", "E", "Z",        "Y"};
constexpr int noPrefix = 8;
constexpr int greatestFixed = 15;  // decimals

constexpr std::string_view raisedDigits[] = {
    "\xE2\x81\xB0", "\xC2\xB9",     "\xC2\xB2",     "\xC2\xB3",     "\xE2\x81\xB4",
    "\xE2\x81\xB5", "\xE2\x81\xB6", "\xE2\x81\xB7", "\xE2\x81\xB8", "\xE2\x81\xB9"};
constexpr std::string_view raisedMinus = "\xE2\x81\xBB";
constexpr std::string_view timesSign = "\xC3\x97";

std::string ToChars(double value, std::chars_format format, int precision) {
    char buffer[400];
    const auto [end, error] =
        std::to_chars(buffer, buffer + sizeof buffer, value, format, precision);
    return error == std::errc() ? std::string(buffer, end) : std::string("?");
}

/// The hyphen of a number becomes a minus sign; a zero loses it.
std::string WithMinusSign(std::string text) {
    if (text.empty() || text.front() != '-') return text;
    text.erase(0, 1);
    const bool zero = text.find_first_not_of("0.") == std::string::npos;
    return zero ? text : std::string(minusSign) + text;
}

std::string WithoutTrailingZeros(std::string text) {
    if (text.find('.') == std::string::npos) return text;
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text;
}

int ExponentOf(double value) {
    return static_cast<int>(std::floor(std::log10(std::fabs(value))));
}

std::string NotANumber(double value) {
    return std::isnan(value) ? "no number"
           : value < 0.0     ? std::string(minusSign) + "infinite"
                             : "infinite";
}

}  // namespace

double PowerOfTen(int exponent) {
    return std::pow(10.0, exponent);
}

SiPrefix PrefixOf(int exponent) {
    const int index = exponent % 3 == 0 ? exponent / 3 + noPrefix : noPrefix;
    if (index < 0 || index >= static_cast<int>(std::size(prefixTexts))) return {"", 0};
    return {prefixTexts[index], 3 * (index - noPrefix)};
}

SiPrefix PrefixFor(double value) {
    if (value == 0.0 || !std::isfinite(value)) return {"", 0};
    const int thousands = static_cast<int>(std::floor(std::log10(std::fabs(value)) / 3.0 + 1e-12));
    return PrefixOf(3 * std::clamp(thousands, -8, 8));
}

std::string FixedText(double value, double step) {
    if (!std::isfinite(value)) return NotANumber(value);
    int decimals =
        step > 0.0 && std::isfinite(step) ? std::max(0, -ExponentOf(step * 1.0000001)) : 6;
    if (std::fabs(value) >= 1e7 || decimals > greatestFixed) {
        const int digits =
            value == 0.0 ? 0 : std::clamp(ExponentOf(value) - ExponentOf(step * 1.0000001), 0, 15);
        return ReadableText(value, digits + 1);
    }
    return WithMinusSign(ToChars(value, std::chars_format::fixed, decimals));
}

std::string DecadeText(int exponent) {
    std::string text = "10";
    if (exponent < 0) text += raisedMinus;
    for (const char digit : std::to_string(std::abs(exponent))) text += raisedDigits[digit - '0'];
    return text;
}

std::string ReadableText(double value, int digits) {
    if (!std::isfinite(value)) return NotANumber(value);
    if (value == 0.0) return "0";
    digits = std::clamp(digits, 1, 17);
    const std::string scientific = ToChars(value, std::chars_format::scientific, digits - 1);
    const std::size_t e = scientific.find('e');
    const int exponent = std::stoi(scientific.substr(e + 1));
    if (exponent >= -4 && exponent < 6) {
        const std::string fixed =
            ToChars(value, std::chars_format::fixed, std::max(0, digits - 1 - exponent));
        return WithMinusSign(WithoutTrailingZeros(fixed));
    }
    const std::string mantissa = WithoutTrailingZeros(scientific.substr(0, e));
    if (mantissa == "1") return DecadeText(exponent);
    return WithMinusSign(mantissa) + std::string(timesSign) + DecadeText(exponent);
}

bool TakesPrefix(std::string_view unit) {
    return !unit.empty() && !unit.starts_with("dB") && unit != "rad" && unit != "%";
}

std::string EngineeringText(double value, std::string_view unit, int digits) {
    if (!TakesPrefix(unit) || !std::isfinite(value)) {
        return ReadableText(value, digits) + (unit.empty() ? "" : " ") + std::string(unit);
    }
    // Wavelengths read as 1550 nm, not as 1.55 um.
    const SiPrefix prefix = PrefixFor(unit == "m" ? 0.5 * value : value);
    return ReadableText(value / PowerOfTen(prefix.exponent), digits) + " " +
           std::string(prefix.text) + std::string(unit);
}

}  // namespace photrak
