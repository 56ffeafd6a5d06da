// SVG and PNG texts, taken apart again.
#include <cstdint>
#include <gtest/gtest.h>

#include "drawing/png_image.h"
#include "drawing/svg_writer.h"
#include "support/holds.h"
#include "support/svg_reader.h"

namespace photrak {
namespace {

Drawing SmallDrawing(std::string text) {
    Drawing drawing;
    drawing.size = {120.0, 80.0};
    drawing.Add(ClipBegin{{1, 2, 30, 40}});
    drawing.Add(GroupBegin{"curve:0", text});
    drawing.Add(Polyline{{{1.234, 5}, {2.0, 1.0 / 3.0}}, {Role::Curve8, 1.5, CurveDash(7), 0.5}});
    drawing.Add(Segments{{{0, 0}, {1, 1}, {2, 2}, {3, 3}}, {}});
    drawing.Add(GroupEnd{});
    drawing.Add(ClipEnd{});
    drawing.Add(Symbols{{{5, 5}}, Marker::Diamond, 6.0, Role::Curve1, 1.0});
    drawing.AddOver(TextItem{{10, 70}, text, 11.0, Role::Ink, Anchor::End, Weight::Bold, true});
    return drawing;
}

TEST(SvgText, EscapesTextsAndNestsItsGroups) {
    const std::string hostile = "<script>alert('&%s')</script>\"]]>\x01";
    const std::string svg = SvgText(SmallDrawing(hostile), Theme::Light, hostile);
    EXPECT_EQ(svg.find("<script"), std::string::npos);
    const auto elements = ReadSvg(svg);
    const std::string shown = "<script>alert('&%s')</script>\"]]> ";
    int texts = 0;
    for (const SvgElement& element : elements) {
        if (element.name == "text" || element.name == "title") {
            EXPECT_EQ(element.text, shown);
            ++texts;
        }
        if (element.name == "polyline") {
            EXPECT_EQ(element.mark, "curve:0");
            EXPECT_EQ(element.attributes.at("points"), "1.23,5 2,0.33");
            EXPECT_EQ(element.attributes.at("stroke-dasharray"), "7.5 4.5");
            EXPECT_EQ(element.attributes.at("stroke-opacity"), "0.5");
        }
        if (element.name == "path") {
            EXPECT_EQ(element.attributes.at("d"), "M0 0L1 1M2 2L3 3");
        }
    }
    EXPECT_EQ(texts, 2);
    EXPECT_TRUE(Holds(svg, "rotate(-90 10 70)"));
    EXPECT_EQ(svg, SvgText(SmallDrawing(hostile), Theme::Light, hostile));
}

std::string FromBase64(std::string_view text) {
    static constexpr std::string_view digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    std::uint32_t bits = 0;
    int held = 0;
    for (const char c : text.substr(0, text.find('='))) {
        bits = bits << 6 | static_cast<std::uint32_t>(digits.find(c));
        if ((held += 6) >= 8) bytes += static_cast<char>(bits >> (held -= 8) & 0xFF);
    }
    return bytes;
}

/// A block of fixed codes unpacked by the table of RFC 1951, written down number by number.
class Inflater {
  public:
    explicit Inflater(std::string_view data) : data_(data) {}
    std::string Run() {
        static constexpr int lengthBase[] = {3,  4,  5,  6,   7,   8,   9,   10,  11, 13,
                                             15, 17, 19, 23,  27,  31,  35,  43,  51, 59,
                                             67, 83, 99, 115, 131, 163, 195, 227, 258};
        static constexpr int distanceBase[] = {
            1,   2,   3,   4,   5,   7,    9,    13,   17,   25,   33,   49,   65,    97,    129,
            193, 257, 385, 513, 769, 1025, 1537, 2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577};
        EXPECT_EQ(Bits(1), 1);
        EXPECT_EQ(Bits(2), 1);
        std::string out;
        for (int symbol = Symbol(); symbol != 256; symbol = Symbol()) {
            if (symbol < 256) {
                out += static_cast<char>(symbol);
                continue;
            }
            const int l = symbol - 257;
            const int length = lengthBase[l] + Bits(l < 8 || l == 28 ? 0 : l / 4 - 1);
            int d = 0;
            for (int i = 0; i < 5; ++i) d = d << 1 | Bits(1);
            const auto distance =
                static_cast<std::size_t>(distanceBase[d] + Bits(d < 4 ? 0 : d / 2 - 1));
            if (distance > out.size()) return "bad distance";
            for (int i = 0; i < length; ++i) out += out[out.size() - distance];
        }
        return out;
    }

  private:
    int Bits(int count) {
        int value = 0;
        for (int i = 0; i < count; ++i, ++at_)
            value |= (static_cast<unsigned char>(data_.at(at_ / 8)) >> (at_ % 8) & 1) << i;
        return value;
    }
    int Symbol() {
        int code = 0;
        for (int i = 0; i < 7; ++i) code = code << 1 | Bits(1);
        if (code <= 0x17) return 256 + code;
        code = code << 1 | Bits(1);
        if (code >= 0x30 && code <= 0xBF) return code - 0x30;
        if (code >= 0xC0 && code <= 0xC7) return 280 + code - 0xC0;
        return 144 + (code << 1 | Bits(1)) - 0x190;
    }
    std::string_view data_;
    std::size_t at_ = 0;
};

TEST(PngBytes, UnpackToTheLevels) {
    DensityImage image;
    image.columns = 300;
    image.rows = 40;
    for (int i = 0; i < image.columns * image.rows; ++i) {
        // Runs, rows like the one above, and noise of all literals.
        const int row = i / image.columns;
        image.levels.push_back(static_cast<std::uint8_t>(row < 10   ? 0
                                                         : row < 20 ? i % 300 / 7
                                                                    : (i * 7919 + i / 3) & 0xFF));
    }
    const std::string png = PngBytes(image, Theme::Dark);
    EXPECT_EQ(png.substr(1, 3), "PNG");
    // The checksum of an empty IEND chunk is known.
    EXPECT_EQ(png.substr(png.size() - 4), "\xAE\x42\x60\x82");
    const std::size_t idat = png.find("IDAT");
    const std::string rows = Inflater(std::string_view(png).substr(idat + 6)).Run();
    ASSERT_EQ(rows.size(), 301u * 40u);
    for (int i = 0; i < image.columns * image.rows; ++i) {
        const auto place = static_cast<std::size_t>(i + i / 300 + 1);
        ASSERT_EQ(static_cast<std::uint8_t>(rows[place]), image.levels[static_cast<std::size_t>(i)])
            << i;
    }
    for (const std::string_view bytes : {"", "a", "ab", "abc", "\xFF\x01\x02\x03"})
        EXPECT_EQ(FromBase64(Base64(bytes)), bytes);
    EXPECT_EQ(Base64("ab"), "YWI=");
}

}  // namespace
}  // namespace photrak
