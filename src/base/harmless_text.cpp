// Most texts are plain: they are looked through once and copied.
#include "base/harmless_text.h"

#include <algorithm>

#include "base/text.h"

namespace photrak {

std::size_t Utf8Length(std::string_view text) {
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
    };
    const unsigned lead = byte(0), second = byte(1);
    if (lead < 0x80) return 1;
    if (lead < 0xC2 || lead > 0xF4) return 0;
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
    }
    const bool isWrong = (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
                         (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F);
    return isWrong ? 0 : length;
}

std::string_view CutAtCharacter(std::string_view text, std::size_t most) {
    if (text.size() <= most) return text;
    const std::size_t longestTail = 3;  // continuation bytes of one character
    std::size_t length = most;
    while (length > 0 && most - length <= longestTail &&
           (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) {
        --length;
    }
    return text.substr(0, most - length <= longestTail ? length : most);
}

namespace {

bool IsPlain(char c) {
    const auto code = static_cast<unsigned char>(c);
    return c == '\t' || (code >= 0x20 && code < 0x7F);
}

void AppendHexadecimal(std::string& out, std::string_view mark, unsigned code) {
    constexpr std::string_view digits = "0123456789abcdef";
    out.append(mark);
    out.push_back(digits[code / 16 % 16]);
    out.push_back(digits[code % 16]);
}

/// The character at the start of `text`, or its escape; gives the bytes that it took.
std::size_t AppendCharacter(std::string& out, std::string_view text) {
    const std::size_t length = Utf8Length(text);
    const auto lead = static_cast<unsigned char>(text.front());
    const unsigned second = length == 2 ? static_cast<unsigned char>(text[1]) : 0u;
    if (length == 2 && lead == 0xC2 && second < 0xA0) {
        AppendHexadecimal(out, "\\u00", second);
    } else if (length <= 1 && !IsPlain(text.front()) && lead < 0xA0) {
        AppendHexadecimal(out, "\\x", lead);
    } else {
        out.append(text.substr(0, std::max<std::size_t>(length, 1)));
    }
    return std::max<std::size_t>(length, 1);
}

void AppendLine(std::string& out, std::string_view line) {
    if (line.size() <= mostShownBytes && std::ranges::all_of(line, IsPlain)) {
        out.append(line);
        return;
    }
    constexpr std::size_t noteBytes = 40;
    std::string shown;
    std::size_t at = 0, keptFrom = 0, keptShown = 0;  // what stays of a line that proves too long
    while (at < line.size() && shown.size() <= mostShownBytes) {
        at += AppendCharacter(shown, line.substr(at));
        if (shown.size() > mostShownBytes - noteBytes) continue;
        keptFrom = at;
        keptShown = shown.size();
    }
    if (shown.size() > mostShownBytes) {
        shown.resize(keptShown);
        shown += Concat(" ... (", line.size() - keptFrom, " more bytes)");
    }
    out.append(shown);
}

}  // namespace

std::string HarmlessText(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (;;) {
        const std::size_t end = text.find('\n');
        AppendLine(out, text.substr(0, end));
        if (end == std::string_view::npos) return out;
        out.push_back('\n');
        text.remove_prefix(end + 1);
    }
}

}  // namespace photrak
