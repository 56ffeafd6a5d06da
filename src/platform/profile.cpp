// One walk over the lines finds where a key stands, or where it would; reading and writing both use
// it.
#include "platform/profile.h"

#include <charconv>

namespace photrak {
namespace {

constexpr std::string_view blanks = " \t\r";

std::string_view Trim(std::string_view text) {
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool SameName(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (Lower(a[i]) != Lower(b[i])) return false;
    }
    return true;
}

/// Positions in the text: [begin, end) is the line of the key without its newline; where there is
/// no such line both are the end of the last line of the section. Without the section both are
/// npos.
struct Place {
    std::size_t begin = std::string_view::npos, end = std::string_view::npos;
    std::string_view value;
    bool found = false;
};

Place FindKey(std::string_view text, std::string_view section, std::string_view key) {
    Place place;
    bool inside = false;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view line = Trim(text.substr(at, end - at));
        if (line.starts_with('[')) {
            inside = SameName(Trim(line.substr(1, line.find(']') - 1)), section);
        }
        if (inside && !line.empty()) place.begin = place.end = end;
        const auto equals = line.find('=');
        if (inside && equals != std::string_view::npos &&
            SameName(Trim(line.substr(0, equals)), key)) {
            return {at, end, Trim(line.substr(equals + 1)), true};
        }
        at = end + 1;
    }
    return place;
}

}  // namespace

std::optional<int> FindProfileInt(std::string_view text, std::string_view section,
                                  std::string_view key) {
    const Place place = FindKey(text, section, key);
    int value = 0;
    if (!place.found ||
        std::from_chars(place.value.data(), place.value.data() + place.value.size(), value).ec !=
            std::errc()) {
        return std::nullopt;
    }
    return value;
}

std::vector<std::pair<std::string, int>> ProfileInts(std::string_view text,
                                                     std::string_view section) {
    std::vector<std::pair<std::string, int>> keys;
    bool inside = false;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view line = Trim(text.substr(at, end - at));
        at = end + 1;
        if (line.starts_with('[')) {
            inside = SameName(Trim(line.substr(1, line.find(']') - 1)), section);
        }
        const auto equals = line.find('=');
        if (!inside || line.starts_with('[') || equals == std::string_view::npos) continue;
        const std::string_view key = Trim(line.substr(0, equals));
        keys.emplace_back(key, FindProfileInt(text, section, key).value_or(0));
    }
    return keys;
}

std::string WithProfileInt(std::string_view text, std::string_view section, std::string_view key,
                           int value) {
    const std::string line = std::string(key) + "=" + std::to_string(value);
    const Place place = FindKey(text, section, key);
    std::string result(text);
    if (place.found) return result.replace(place.begin, place.end - place.begin, line);
    if (place.begin != std::string_view::npos) return result.insert(place.begin, "\n" + line);
    if (!result.empty() && result.back() != '\n') result += '\n';
    return result + "[" + std::string(section) + "]\n" + line + "\n";
}

}  // namespace photrak
