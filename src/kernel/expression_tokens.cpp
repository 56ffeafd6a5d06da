// A token is a mark or a run of letters and digits; whether that is a number shows when it is read.
#include "kernel/expression_tokens.h"

namespace photrak {

namespace {

constexpr std::string_view marks = "+-*/^(),";

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Length of the word at the start of `text`. A sign after the letter e belongs to the exponent of
/// a number (1e-3), but not inside a name (x1e-3 is x1e less 3).
std::size_t WordLength(std::string_view text) {
    const bool isName = IsLetter(text[0]);
    std::size_t length = 1;
    for (; length < text.size() && text[length] != ' '; ++length) {
        const char c = text[length];
        // By design: a capital E takes no sign, so that 1.5E-3 is no number here.
        const bool exponentSign = (c == '+' || c == '-') && text[length - 1] == 'e' && !isName;
        if (!exponentSign && marks.find(c) != std::string_view::npos) break;
    }
    return length;
}

}  // namespace

Token TokenReader::Next() {
    // A tab is no blank: it is part of a word, which then has no meaning.
    const std::size_t first = rest_.find_first_not_of(' ');
    if (first == std::string_view::npos) {
        rest_ = {};
        return {};
    }
    rest_.remove_prefix(first);
    Token token;
    std::size_t length = 1;
    if (marks.find(rest_[0]) != std::string_view::npos) {
        token.kind = Token::Kind::Mark;
        token.mark = rest_[0];
    } else {
        length = WordLength(rest_);
        token.kind = Token::Kind::Word;
        token.word = rest_.substr(0, length);
    }
    rest_.remove_prefix(length);
    return token;
}

}  // namespace photrak
