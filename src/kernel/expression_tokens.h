// Cuts the text of an expression into words and marks, without a thought about their meaning.
#pragma once

#include <string_view>

namespace photrak {

struct Token {
    enum class Kind { End, Mark, Word };
    Kind kind = Kind::End;
    char mark = 0;          // of a Mark: one of + - * / ^ ( ) ,
    std::string_view word;  // of a Word, borrowed from the text; it may still end in semicolons
};

/// Hands out the tokens of a text that the caller keeps alive.
class TokenReader {
  public:
    TokenReader() = default;
    explicit TokenReader(std::string_view text) : rest_(text) {}
    /// The next token; End again and again after the last.
    Token Next();

  private:
    std::string_view rest_;
};

}  // namespace photrak
