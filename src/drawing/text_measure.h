// Widths of text. A picture file is laid out with a table, so that it is the same on every machine;
// a window answers with its own font.
#pragma once

#include <string>
#include <string_view>

namespace photrak {

enum class Weight { Regular, Bold };

class TextMeasure {
  public:
    virtual ~TextMeasure() = default;
    /// Width in pixels of UTF-8 text at a font size in pixels.
    virtual double Width(std::string_view text, double size, Weight weight) const = 0;
    /// Height above and below the baseline, in parts of the size.
    virtual double Ascent() const { return 0.76; }
    virtual double Descent() const { return 0.24; }
};

/// The built-in table: the widths of DejaVu Sans, among the widest of the usual interface fonts, so
/// that a viewer with another one leaves air and no overlap.
const TextMeasure& TableMeasure();

/// `text` cut with an ellipsis in the middle until it is at most `width` wide; never empty.
std::string Elided(std::string_view text, double width, double size, const TextMeasure& measure);

/// The text as valid UTF-8 without control characters: a byte that is none becomes U+FFFD, a
/// control character a blank. What comes from a file goes through here before it is drawn.
std::string DrawableText(std::string_view text);

/// The code point at `position`, which moves past it. `text` must be what DrawableText gave.
char32_t NextCodePoint(std::string_view text, std::size_t& position);

}  // namespace photrak
