// Restricted edit distance over three rows; words are short, and a hostile one is cut off.
#include "base/nearest.h"

#include <algorithm>
#include <vector>

namespace photrak {
namespace {

constexpr std::size_t longest = 64;
constexpr std::size_t whole = 2;  // a mistake; a half is left for words that differ in case alone

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::size_t Replacing(char a, char b) {
    if (a == b) return 0;
    return Lower(a) == Lower(b) ? 0 : whole;
}

/// What a name must stay below to be meant.
std::size_t NearEnough(std::string_view typed) {
    return whole * std::max<std::size_t>(1, (typed.size() + 1) / 3) + 2;
}

/// True if the letters of `part` stand in `word` in this order.
bool IsThinned(std::string_view part, std::string_view word) {
    std::size_t at = 0;
    for (const char c : word) at += at < part.size() && Lower(c) == Lower(part[at]);
    return at == part.size();
}

/// As TypingDistance, but a word cut off or with letters left out is near to the whole.
std::size_t Distance(std::string_view typed, std::string_view name, std::size_t near) {
    const std::size_t distance = TypingDistance(typed, name);
    constexpr std::size_t enough = 4;  // letters that make a word known
    const std::string_view part = typed.size() < name.size() ? typed : name;
    const std::string_view word = typed.size() < name.size() ? name : typed;
    if (part.size() < enough) return distance;
    if (word.starts_with(part)) return std::min<std::size_t>(distance, 1);
    const bool isThinned = part.size() * 2 >= word.size() - 1 && IsThinned(part, word);
    return isThinned ? std::min(distance, near) : distance;
}

}  // namespace

std::size_t TypingDistance(std::string_view typed, std::string_view name) {
    typed = typed.substr(0, longest);
    name = name.substr(0, longest);
    const std::size_t width = name.size() + 1;
    std::vector<std::size_t> before(width), last(width), row(width);
    for (std::size_t j = 0; j < width; ++j) last[j] = j * whole;
    for (std::size_t i = 1; i <= typed.size(); ++i) {
        row[0] = i * whole;
        for (std::size_t j = 1; j < width; ++j) {
            row[j] = std::min({last[j] + whole, row[j - 1] + whole,
                               last[j - 1] + Replacing(typed[i - 1], name[j - 1])});
            const bool swapped = i > 1 && j > 1 && Lower(typed[i - 1]) == Lower(name[j - 2]) &&
                                 Lower(typed[i - 2]) == Lower(name[j - 1]);
            if (swapped) row[j] = std::min(row[j], before[j - 2] + whole);
        }
        std::swap(before, last);
        std::swap(last, row);
    }
    return last[width - 1] + (typed == name ? 0 : 1);
}

std::string DidYouMean(std::string_view name) {
    return name.empty() ? std::string() : "; did you mean '" + std::string(name) + "'?";
}

NearestName::NearestName(std::string_view typed) : typed_(typed), least_(NearEnough(typed)) {}

void NearestName::Offer(std::string_view name) {
    if (name.empty()) return;
    const std::size_t length = std::max(typed_.size(), name.size());
    const std::size_t distance = Distance(typed_, name, NearEnough(typed_) - 1);
    if (distance >= least_ || distance >= whole * length) return;
    least_ = distance;
    found_ = name;
}

}  // namespace photrak
