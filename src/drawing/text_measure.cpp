#include "drawing/text_measure.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "base/harmless_text.h"

namespace photrak {
namespace {

// Advance widths in thousandths of the font size, of the characters 32 to 126.
// clang-format off
constexpr std::array<std::uint16_t, 95> regularWidths{
    318, 401, 460, 838, 636, 950, 780, 275, 390, 390, 500, 838, 318, 361, 318, 337,
    636, 636, 636, 636, 636, 636, 636, 636, 636, 636, 337, 337, 838, 838, 838, 531,
    1000, 684, 686, 698, 770, 632, 575, 775, 752, 295, 295, 656, 557, 863, 748, 787,
    603, 787, 695, 635, 611, 732, 684, 989, 685, 611, 685, 390, 337, 390, 838, 500,
    500, 613, 635, 550, 635, 615, 352, 635, 634, 278, 278, 579, 278, 974, 634, 612,
    635, 635, 411, 521, 392, 634, 592, 818, 592, 592, 525, 636, 337, 636, 838,
};
constexpr std::array<std::uint16_t, 95> boldWidths{
    348, 456, 521, 838, 696, 1002, 872, 306, 457, 457, 523, 838, 380, 415, 380, 365,
    696, 696, 696, 696, 696, 696, 696, 696, 696, 696, 400, 400, 838, 838, 838, 580,
    1000, 774, 762, 734, 830, 683, 683, 821, 837, 372, 372, 775, 637, 995, 837, 850,
    733, 850, 770, 720, 682, 812, 774, 1103, 771, 724, 725, 457, 365, 457, 838, 500,
    500, 675, 716, 593, 716, 678, 435, 716, 712, 343, 343, 665, 343, 1042, 712, 687,
    716, 716, 493, 595, 478, 712, 652, 924, 645, 652, 582, 712, 365, 712, 838,
};
struct WideRow {
    char32_t character;
    std::uint16_t regular, bold;
};
// What labels use beyond: units, powers, arrows, Greek.
constexpr WideRow otherWidths[] = {
    {0x00B0, 500, 500},
    {0x00B1, 838, 838},
    {0x00B2, 401, 438},
    {0x00B3, 401, 438},
    {0x00B5, 636, 736},
    {0x00B7, 318, 380},
    {0x00B9, 401, 438},
    {0x00D7, 838, 838},
    {0x0394, 684, 774},
    {0x03A9, 764, 850},
    {0x03B1, 659, 687},
    {0x03B2, 638, 716},
    {0x03B3, 592, 681},
    {0x03B8, 612, 687},
    {0x03BB, 592, 633},
    {0x03BC, 636, 736},
    {0x03C3, 634, 779},
    {0x03C4, 602, 638},
    {0x03C6, 660, 782},
    {0x2013, 500, 500},
    {0x2026, 1000, 1000},
    {0x2070, 401, 438},
    {0x2074, 401, 438},
    {0x2075, 401, 438},
    {0x2076, 401, 438},
    {0x2077, 401, 438},
    {0x2078, 401, 438},
    {0x2079, 401, 438},
    {0x207B, 528, 528},
    {0x2190, 838, 838},
    {0x2192, 838, 838},
    {0x2193, 838, 838},
    {0x2212, 838, 838},
    {0x2264, 838, 838},
    {0x2265, 838, 838},
};
// clang-format on
constexpr std::uint16_t usualOtherWidth = 690;  // accented Latin, Greek, Cyrillic
constexpr std::uint16_t wideWidth = 1000;       // from the CJK blocks on
constexpr char32_t firstWide = 0x2E80;

class Table : public TextMeasure {
  public:
    double Width(std::string_view text, double size, Weight weight) const override {
        double sum = 0.0;
        for (std::size_t at = 0; at < text.size();) {
            sum += CharacterWidth(NextCodePoint(text, at), weight);
        }
        return sum * size / 1000.0;
    }

  private:
    static double CharacterWidth(char32_t c, Weight weight) {
        const bool bold = weight == Weight::Bold;
        if (c >= 32 && c < 127) return bold ? boldWidths[c - 32] : regularWidths[c - 32];
        for (const WideRow& row : otherWidths) {
            if (row.character == c) return bold ? row.bold : row.regular;
        }
        return c >= firstWide ? wideWidth : usualOtherWidth;
    }
};

constexpr std::string_view replacement = "\xEF\xBF\xBD";

}  // namespace

const TextMeasure& TableMeasure() {
    static const Table table;
    return table;
}

std::string Elided(std::string_view text, double width, double size, const TextMeasure& measure) {
    std::string whole(text);
    if (measure.Width(whole, size, Weight::Regular) <= width) return whole;
    std::vector<std::size_t> starts;
    for (std::size_t at = 0; at < text.size(); NextCodePoint(text, at)) starts.push_back(at);
    for (std::size_t kept = starts.size(); kept-- > 2;) {
        const std::size_t head = kept - kept / 2, tail = kept / 2;
        std::string shorter(text.substr(0, starts[head]));
        shorter.append("\xE2\x80\xA6").append(text.substr(starts[starts.size() - tail]));
        if (measure.Width(shorter, size, Weight::Regular) <= width) return shorter;
    }
    return "\xE2\x80\xA6";
}

std::string DrawableText(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = Utf8Length(text);
        const auto lead = static_cast<unsigned char>(text.front());
        const bool noncharacter = length == 3 && (text.substr(0, 3) == "\xEF\xBF\xBE" ||
                                                  text.substr(0, 3) == "\xEF\xBF\xBF");
        const bool control =
            lead < 0x20 || lead == 0x7F ||
            (length == 2 && lead == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0);
        if (length == 0 || noncharacter) {
            out.append(replacement);
        } else if (control) {
            out.push_back(' ');
        } else {
            out.append(text.substr(0, length));
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return out;
}

char32_t NextCodePoint(std::string_view text, std::size_t& position) {
    const std::string_view rest = text.substr(position);
    const std::size_t length = Utf8Length(rest);
    position += std::max<std::size_t>(length, 1);
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(rest[i]); };
    switch (length) {
        case 1:
            return byte(0);
        case 2:
            return (byte(0) & 0x1Fu) << 6 | (byte(1) & 0x3Fu);
        case 3:
            return (byte(0) & 0x0Fu) << 12 | (byte(1) & 0x3Fu) << 6 | (byte(2) & 0x3Fu);
        case 4:
            return (byte(0) & 0x07u) << 18 | (byte(1) & 0x3Fu) << 12 | (byte(2) & 0x3Fu) << 6 |
                   (byte(3) & 0x3Fu);
        default:
            return 0xFFFD;
    }
}

}  // namespace photrak
