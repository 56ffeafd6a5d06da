// One set of escapes for both ways.
#include "workbench/script_words.h"

#include <algorithm>
#include <charconv>

namespace photrak {
namespace {

constexpr std::string_view blanks = " \t\r";

/// The character after a backslash, taken off the front; nothing for an unknown one.
std::optional<char> TakeEscape(std::string_view& rest) {
    if (rest.empty()) return std::nullopt;
    const char kind = rest.front();
    rest.remove_prefix(1);
    switch (kind) {
        case 'n':
            return '\n';
        case 't':
            return '\t';
        case '"':
        case '\\':
            return kind;
        case 'x': {
            unsigned value = 0;
            if (rest.size() < 2) return std::nullopt;
            const auto [end, error] = std::from_chars(rest.data(), rest.data() + 2, value, 16);
            if (error != std::errc() || end != rest.data() + 2) return std::nullopt;
            rest.remove_prefix(2);
            return static_cast<char>(value);
        }
        default:
            return std::nullopt;
    }
}

bool TakeQuoted(std::string_view& rest, std::string& word) {
    rest.remove_prefix(1);
    while (!rest.empty()) {
        const char c = rest.front();
        rest.remove_prefix(1);
        if (c == '"') return rest.empty() || blanks.find(rest.front()) != blanks.npos;
        if (c != '\\') {
            word += c;
            continue;
        }
        const std::optional<char> escaped = TakeEscape(rest);
        if (!escaped) return false;
        word += *escaped;
    }
    return false;
}

}  // namespace

std::optional<std::vector<std::string>> SplitWords(std::string_view rest) {
    std::vector<std::string> words;
    while (true) {
        const std::size_t begin = rest.find_first_not_of(blanks);
        if (begin == std::string_view::npos) return words;
        rest.remove_prefix(begin);
        std::string word;
        if (rest.front() == '"') {
            if (!TakeQuoted(rest, word)) return std::nullopt;
        } else {
            const std::size_t end = std::min(rest.find_first_of(blanks), rest.size());
            word = rest.substr(0, end);
            rest.remove_prefix(end);
        }
        words.push_back(std::move(word));
    }
}

std::string Quoted(std::string_view text) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string quoted = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (c == '\n') {
            quoted += "\\n";
        } else if (c == '\t') {
            quoted += "\\t";
        } else if (byte < ' ' || byte == 127) {
            quoted += "\\x";
            quoted += digits[byte / 16];
            quoted += digits[byte % 16];
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

}  // namespace photrak
