// A hash of texts to tell contents apart: the same on every machine. No protection against intent.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace photrak {

/// FNV-1a with 64 bits (Fowler, Noll, Vo). Pieces count with their lengths: "ab", "c" is not "a",
/// "bc".
class Hash {
  public:
    Hash& Add(std::string_view text) {
        for (std::size_t rest = text.size(), i = 0; i < sizeof rest; ++i, rest >>= 8) {
            Step(static_cast<unsigned char>(rest & 0xFF));
        }
        for (const char c : text) Step(static_cast<unsigned char>(c));
        return *this;
    }
    std::uint64_t Value() const { return value_; }
    /// Sixteen hexadecimal digits.
    std::string Text() const {
        std::string text;
        for (int shift = 60; shift >= 0; shift -= 4) {
            text += "0123456789abcdef"[(value_ >> shift) & 0xF];
        }
        return text;
    }

  private:
    void Step(unsigned char byte) { value_ = (value_ ^ byte) * 0x100000001B3; }
    std::uint64_t value_ = 0xCBF29CE484222325;
};

}  // namespace photrak
