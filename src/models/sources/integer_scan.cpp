// One pass over the digits; from_chars does the digits of each base, the prefix is told by hand.
#include "models/sources/integer_scan.h"

#include <charconv>
#include <limits>
#include <system_error>

namespace photrak {
namespace {

/// Removes the prefix of hexadecimal; a lone "0" stays, as it is an octal digit itself.
int TakeBase(std::string_view& digits) {
    if (digits.empty() || digits.front() != '0') return 10;
    const auto isHexDigit = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    };
    if (digits.size() > 2 && (digits[1] == 'x' || digits[1] == 'X') && isHexDigit(digits[2])) {
        digits.remove_prefix(2);
        return 16;
    }
    return 8;
}

}  // namespace

bool ScanShort(std::string_view& text, std::int16_t& value) {
    const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
    if (start == std::string_view::npos) return false;
    std::string_view rest = text.substr(start);
    const bool negative = rest.front() == '-';
    if (negative || rest.front() == '+') rest.remove_prefix(1);

    const int base = TakeBase(rest);
    std::uint64_t magnitude = 0;
    const auto [end, error] =
        std::from_chars(rest.data(), rest.data() + rest.size(), magnitude, base);
    if (error == std::errc::invalid_argument) return false;
    const auto limit = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (error == std::errc::result_out_of_range || magnitude > limit) {
        magnitude = negative ? limit + 1 : limit;
    }
    rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
    value = static_cast<std::int16_t>(negative ? 0 - magnitude : magnitude);
    text = rest;
    return true;
}

}  // namespace photrak
