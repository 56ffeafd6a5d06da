// Plain number files, written by hand: one value to a line, which may carry free text after it. An
// asterisk ends that text at once: what follows it on the line is the next value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace photrak {

class NumberFile {
  public:
    /// `text` must outlive the reader.
    explicit NumberFile(std::string_view text) : text_(text) {}

    /// The next value, and the rest of its line skipped. Nothing at the end of the text or where no
    /// number stands; the reader then stays where it is. White space before a value, new lines
    /// included, does not count.
    std::optional<double> NextDouble();
    /// The same for a whole number (the part before a decimal point), saturating at 32 bits.
    std::optional<std::int32_t> NextInt();

    /// Moves past the next new line or asterisk, or to the end of the text.
    void SkipToLineEnd();
    /// True when nothing but white space is left.
    bool AtEnd() const;
    /// Bytes not yet read: a bound for what counts in the file may ask for.
    std::size_t BytesLeft() const { return text_.size(); }

  private:
    std::string_view text_;  // what is not yet read
};

}  // namespace photrak
