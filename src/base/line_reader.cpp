// Views into the text, no copies.
#include "base/line_reader.h"

#include <algorithm>

#include "base/text.h"

namespace photrak {
namespace {

bool IsWhite(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r') || c == '\0';
}

bool IsDelimiter(char c, std::string_view delimiters) {
    return delimiters.find(c == '\0' ? ' ' : c) != std::string_view::npos;
}

}  // namespace

LineReader::LineReader(std::string_view text, std::string name)
    : text_(text), name_(std::move(name)) {}

LineReader::LineReader(std::string_view text, std::string name, SpentText spent)
    : text_(text), name_(std::move(name)), spent_(spent) {}

void LineReader::ForgetRead() {
    if (!line_.empty()) spent_.ForgetBefore(line_.data());
}

bool LineReader::NextEvenIfBlank() {
    position_ = 0;
    if (next_ >= text_.size()) {
        line_ = {};
        return false;
    }
    const std::size_t end = std::min(text_.find('\n', next_), text_.size());
    line_ = text_.substr(next_, end - next_);
    next_ = std::min(end + 1, text_.size());
    ++number_;
    if (line_.ends_with('\r')) line_.remove_suffix(1);
    while (!line_.empty() && IsWhite(line_.front())) line_.remove_prefix(1);
    return true;
}

bool LineReader::Next() {
    while (NextEvenIfBlank()) {
        if (!line_.empty()) return true;
    }
    return false;
}

std::string LineReader::Where() const {
    return Concat(name_, ":", number_);
}

std::string_view LineReader::Word(std::string_view delimiters) {
    while (position_ < line_.size() && IsDelimiter(line_[position_], delimiters)) ++position_;
    const std::size_t begin = position_;
    while (position_ < line_.size() && !IsDelimiter(line_[position_], delimiters)) ++position_;
    const std::string_view word = line_.substr(begin, position_ - begin);
    if (position_ < line_.size()) ++position_;
    return word;
}

std::string_view LineReader::Rest() {
    const std::string_view rest = line_.substr(position_);
    position_ = line_.size();
    return rest;
}

}  // namespace photrak
