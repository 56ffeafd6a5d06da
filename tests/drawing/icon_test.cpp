// Icons: the shipped ones, what the readers refuse, and shapes against closed forms.
#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>
#include <numbers>
#include <set>

#include "base/text.h"
#include "drawing/bitmap_file.h"
#include "drawing/icon_picture.h"
#include "drawing/svg_writer.h"
#include "platform/file_system.h"
#include "support/holds.h"
#include "support/paths.h"
#include "workbench/model_table.h"

namespace photrak {
namespace {

std::string Text(const std::string& path) {
    std::string text, error;
    EXPECT_TRUE(ReadWholeFile(path, text, error)) << path << ": " << error;
    return text;
}

IconPicture Read(const std::string& body) {
    IconPicture icon;
    std::string error;
    EXPECT_TRUE(ReadIcon(Concat("<svg viewBox=\"0 0 30 30\" stroke=\"#1b1f24\">", body, "</svg>"),
                         "x.svg", icon, error))
        << error;
    return icon;
}

TEST(Icons, EveryShippedOneIsReadStaysInItsGridAndDiffersFromTheOthers) {
    std::set<std::string> drawings;
    int count = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(SourceDir() + "/catalogue/icons")) {
        const std::string name = entry.path().filename().string();
        IconPicture icon;
        std::string error;
        ASSERT_TRUE(ReadIcon(Text(entry.path().string()), name, icon, error)) << error;
        for (const IconShape& shape : icon.shapes) {
            const double half = shape.stroke ? 0.5 * shape.width : 0.0;
            for (const Point& p : shape.points) {
                EXPECT_GE(std::min(p.x, p.y), half - 0.1) << name;
                EXPECT_LE(std::max(p.x, p.y), iconGrid - half + 0.1) << name;
            }
        }
        Drawing drawing;
        drawing.items = ItemsOf({std::make_shared<const IconPicture>(icon), {0, 0, 60, 60}});
        EXPECT_TRUE(drawings.insert(DumpText(drawing)).second) << name << " is drawn twice";
        ++count;
    }
    EXPECT_GT(count, 50);
}

TEST(Icons, EveryModelOfThePaletteHasAVectorAndABitmap) {
    const PaletteModels models;
    for (std::int32_t i = 0; i <= models.Last(); ++i) {
        const std::string& file = models.Row(i).bitmap;
        const std::string stem = file.substr(0, file.find('.'));
        EXPECT_TRUE(FileExists(SourceDir() + "/catalogue/icons/" + stem + ".svg")) << stem;
        BitmapImage image;
        std::string error;
        ASSERT_TRUE(ReadBitmap(Text(SourceDir() + "/catalogue/models/" + file), file, image, error))
            << error;
        EXPECT_EQ(image.columns, 30);
        EXPECT_EQ(image.rows, 30);
    }
}

TEST(Icons, CurvesLieWhereTheirFormulasSay) {
    // A quarter circle, a cubic with its middle at known thirds, a relative path.
    const IconPicture icon = Read(
        "<path d=\"M 5 15 A 10 10 0 0 1 15 5\"/><path d=\"M0 0C0 8,8 8,8 0\"/>"
        "<path d=\"m1,2l3 0v4h-3z\"/><circle cx=\"15\" cy=\"15\" r=\"4\"/>");
    ASSERT_EQ(icon.shapes.size(), 4u);
    for (const Point& p : icon.shapes[0].points) {
        EXPECT_NEAR(std::hypot(p.x - 15, p.y - 15), 10.0, 1e-9);
        EXPECT_LE(std::max(p.x, p.y), 15.0 + 1e-9);
    }
    const std::vector<Point>& cubic = icon.shapes[1].points;
    const Point& middle = cubic[cubic.size() / 2];
    EXPECT_NEAR(middle.x, 4.0, 1e-12);
    EXPECT_NEAR(middle.y, 6.0, 1e-12);
    EXPECT_EQ(icon.shapes[2].points, (std::vector<Point>{{1, 2}, {4, 2}, {4, 6}, {1, 6}}));
    EXPECT_TRUE(icon.shapes[2].closed);
    double area = 0.0;
    const std::vector<Point>& round = icon.shapes[3].points;
    for (std::size_t i = 0; i < round.size(); ++i) {
        const Point &a = round[i], &b = round[(i + 1) % round.size()];
        area += 0.5 * (a.x * b.y - b.x * a.y);
    }
    EXPECT_NEAR(area, std::numbers::pi * 16, 0.2);
}

TEST(Icons, RefusesWhatItWouldNotDraw) {
    const std::pair<const char*, const char*> rows[] = {
        {"<text>A</text>", "no <text>"},
        {"<script/>", "no <script>"},
        {"<path d=\"M0 0 S1 1 2 2\"/>", "no 'S'"},
        {"<path d=\"L1 1\"/>", "begins with M"},
        {"<path d=\"M0 0 L1e9 0\"/>", "no number"},
        {"<path d=\"M0 0 Lnan 0\"/>", "is no number"},
        {"<path d=\"M0 0 L1\"/>", "number is missing"},
        {"<path stroke=\"#123456\" d=\"M0 0 L1 1\"/>", "color of no role"},
        {"<path stroke-width=\"3\" d=\"M0 0 L1 1\"/>", "1 or 2 wide"},
        {"<path stroke=\"none\" d=\"M0 0 L1 1\"/>", "neither stroke nor fill"},
        {"<g><path d=\"M0 0 L1 1\"/>", "ends early"},
        {"words", "outside"},
    };
    for (const auto& [body, reason] : rows) {
        IconPicture icon;
        std::string error;
        const std::string text =
            Concat("<svg viewBox=\"0 0 30 30\" stroke=\"#1b1f24\">", body, "</svg>");
        EXPECT_FALSE(ReadIcon(text, "%n.svg", icon, error)) << body;
        EXPECT_TRUE(Holds(error, reason)) << body << ": " << error;
        EXPECT_TRUE(icon.shapes.empty());
    }
}

/// Two columns, two rows, from below: red, green, blue, white.
std::string SmallBitmap() {
    std::string bytes = "BM";
    const auto put = [&](std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> 8 * i & 0xFF);
    };
    for (const std::uint32_t value : {70u, 0u, 54u, 40u, 2u, 2u}) put(value, 4);
    put(1, 2);
    put(24, 2);
    for (int i = 0; i < 6; ++i) put(0, 4);
    bytes += std::string("\x00\x00\xFF\x00\xFF\x00\x00\x00\xFF\x00\x00\xFF\xFF\xFF\x00\x00", 16);
    return bytes;
}

TEST(Bitmaps, AreReadFromBelowAndRefusedWhenTheyLie) {
    const std::string good = SmallBitmap();
    BitmapImage image;
    std::string error;
    ASSERT_TRUE(ReadBitmap(good, "x.bmp", image, error)) << error;
    EXPECT_EQ(image.pixels,
              (std::vector<std::uint8_t>{0, 0, 255, 255, 255, 255, 255, 0, 0, 0, 255, 0}));
    Drawing drawing;
    drawing.size = {10, 10};
    image.rect = {0, 0, 10, 10};
    drawing.Add(image);
    EXPECT_TRUE(Holds(SvgText(drawing, Theme::Light, ""), "data:image/png;base64,"));
    const std::pair<std::size_t, char> lies[] = {{0, 'X'},     {18, '\x00'}, {19, '\x02'},
                                                 {22, '\x09'}, {25, '\x80'}, {28, '\x07'},
                                                 {30, '\x01'}, {10, '\x7F'}};
    for (const auto& [at, byte] : lies) {
        std::string bad = good;
        bad[at] = byte;
        EXPECT_FALSE(ReadBitmap(bad, "x.bmp", image, error)) << at;
        EXPECT_TRUE(error.starts_with("x.bmp: ")) << error;
    }
    for (std::size_t size = 0; size < good.size(); ++size) {
        EXPECT_FALSE(ReadBitmap(good.substr(0, size), "x.bmp", image, error)) << size;
    }
}

}  // namespace
}  // namespace photrak
