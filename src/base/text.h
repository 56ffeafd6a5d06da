// Text helpers that know no locale: numbers read and written the same on every machine, and joining
// of message texts without printf.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace photrak {

/// The number at the start of `text` after leading white space (sign, digits, fraction, exponent;
/// decimal only, no "inf", "nan", hexadecimal), 0 if there is none. `used`, if given, gets the
/// characters consumed (0 if there was no number). Overflow gives +-HUGE_VAL, underflow 0.
double ReadDouble(std::string_view text, std::size_t* used = nullptr);
/// The integer at the start of `text` likewise, saturating at 32 bits.
std::int32_t ReadInt(std::string_view text, std::size_t* used = nullptr);
/// The finite number that the whole word is, leading white space aside; empty for "", "0x10",
/// "1.5abc" or "1e999".
std::optional<double> WholeDouble(std::string_view word);
/// The integer likewise, not for "4.9" or one beyond 32 bits.
std::optional<std::int32_t> WholeInt(std::string_view word);

/// The stream's default form: six significant digits, as %g ("inf", "nan" for what is no number).
std::string FormatDefault(double value);
/// The same at the end of `out`: the form and the pace of long files.
void AppendDefault(std::string& out, double value);
/// `digits` significant digits in the same form.
std::string FormatSignificant(double value, int digits);
/// As %e: one digit, six decimals, exponent of at least two digits.
std::string FormatExponent(double value);

/// Truncates toward zero to 32 bits, saturating; NaN gives the lowest value.
std::int32_t SaturateToInt(double value);

/// Joins pieces into one text: Concat("bad value '", name, "' in line ", 12). Doubles take
/// FormatDefault.
inline void AppendPiece(std::string& out, std::string_view piece) {
    out.append(piece);
}
inline void AppendPiece(std::string& out, char piece) {
    out.push_back(piece);
}
inline void AppendPiece(std::string& out, double piece) {
    AppendDefault(out, piece);
}
template <class Integer>
requires(std::is_integral_v<Integer> &&
         !std::is_same_v<Integer, char>) void AppendPiece(std::string& out, Integer piece) {
    out.append(std::to_string(piece));
}
template <class... Pieces>
std::string Concat(const Pieces&... pieces) {
    std::string out;
    (AppendPiece(out, pieces), ...);
    return out;
}

/// `text` with every '%s', in order, replaced by the next piece; "%%" and any other directive stay.
/// For the system's fixed message texts; a piece is never read as a format.
std::string FillIn(std::string_view message, std::initializer_list<std::string_view> pieces);

bool StartsWith(std::string_view text, std::string_view prefix);

}  // namespace photrak
