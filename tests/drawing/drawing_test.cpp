// Geometry, colors, texts and marks of display lists.
#include <gtest/gtest.h>
#include <random>

#include "drawing/display_list.h"
#include "drawing/number_text.h"

namespace photrak {
namespace {

/// Against the points of the segment themselves, taken one by one.
TEST(ClipSegment, KeepsExactlyWhatLiesInside) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> place(-20.0, 40.0);
    const Rect box{0.0, 5.0, 15.0, 10.0};
    for (int tries = 0; tries < 2000; ++tries) {
        const Point a{place(random), place(random)}, b{place(random), place(random)};
        Point first{NAN, NAN}, last{NAN, NAN};
        constexpr int steps = 4000;
        for (int k = 0; k <= steps; ++k) {
            const Point p{a.x + (b.x - a.x) * k / steps, a.y + (b.y - a.y) * k / steps};
            if (!box.Contains(p)) continue;
            if (std::isnan(first.x)) first = p;
            last = p;
        }
        Point from = a, to = b;
        const bool stays = ClipSegment(box, from, to);
        if (std::isnan(first.x)) {
            EXPECT_TRUE(!stays || std::hypot(to.x - from.x, to.y - from.y) < 0.05);
            continue;
        }
        ASSERT_TRUE(stays);
        EXPECT_NEAR(from.x, first.x, 0.03);
        EXPECT_NEAR(to.y, last.y, 0.03);
    }
    Point inside{1.0, 6.0}, end{2.0, 7.0};
    ASSERT_TRUE(ClipSegment(box, inside, end));
    EXPECT_EQ(inside, (Point{1.0, 6.0}));
}

TEST(Roles, TextIsLegibleAndCurvesDiffer) {
    for (const Theme theme : {Theme::Light, Theme::Dark, Theme::Print}) {
        const Color paper = ColorOf(Role::Paper, theme);
        for (const Role text : {Role::Ink, Role::Dim, Role::Fault, Role::Selected, Role::Optical,
                                Role::Electrical, Role::Binary}) {
            EXPECT_GE(Contrast(ColorOf(text, theme), paper), 4.5)
                << RoleName(text) << static_cast<int>(theme);
        }
        // A curve is a line: WCAG asks 3 : 1 of graphics; the lightest of the palette have at
        // least 2.7.
        for (int i = 0; i < curveRoleCount; ++i) {
            EXPECT_GE(Contrast(ColorOf(CurveRole(i), theme), paper), 2.7) << i;
            for (int k = 0; k < i; ++k) {
                EXPECT_FALSE(ColorOf(CurveRole(i), theme) == ColorOf(CurveRole(k), theme) &&
                             CurveDash(i) == CurveDash(k));
            }
        }
        // Ordered in gray: more is always farther from the ground.
        for (int level = 1; level < 255; ++level) {
            EXPECT_LE(Contrast(RampColor(level, theme), paper),
                      Contrast(RampColor(level + 1, theme), paper) + 1e-12)
                << level;
        }
    }
}

TEST(Texts, AreMadeDrawableAndCutInTheMiddle) {
    const std::string bad = "\xFF";
    EXPECT_EQ(DrawableText("a\x01\tb\x7F"), "a  b ");
    EXPECT_EQ(DrawableText("\xC2\xB5 " + bad + "\xC0\x80\xED\xA0\x80"),
              "\xC2\xB5 "
              "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(DrawableText("\xE2\x82"), "\xEF\xBF\xBD\xEF\xBF\xBD");
    const TextMeasure& measure = TableMeasure();
    const std::string name = "a rather long name \xCE\xBB of a curve";
    const std::string shorter = Elided(name, 80.0, 11.0, measure);
    EXPECT_LE(measure.Width(shorter, 11.0, Weight::Regular), 80.0);
    EXPECT_EQ(shorter.substr(0, 3), "a r");
    EXPECT_EQ(shorter.substr(shorter.size() - 4), "urve");
    EXPECT_EQ(Elided("abc", 1.0, 11.0, measure), "\xE2\x80\xA6");
    // Ten digits of 636 thousandths.
    EXPECT_NEAR(measure.Width("0123456789", 10.0, Weight::Regular), 63.6, 1e-9);
}

TEST(Numbers, ReadAsAPersonWritesThem) {
    EXPECT_EQ(FixedText(0.30000000000000004, 0.05), "0.30");
    EXPECT_EQ(FixedText(-1e-20, 0.1), "0.0");
    EXPECT_EQ(FixedText(-25.0, 5.0),
              "\xE2\x88\x92"
              "25");
    EXPECT_EQ(FixedText(1549.3456, 0.0002), "1549.3456");
    EXPECT_EQ(DecadeText(-12), "10\xE2\x81\xBB\xC2\xB9\xC2\xB2");
    EXPECT_EQ(ReadableText(2e-9),
              "2\xC3\x97"
              "10\xE2\x81\xBB\xE2\x81\xB9");
    EXPECT_EQ(ReadableText(NAN), "no number");
    EXPECT_EQ(EngineeringText(1.25e-10, "s"), "125 ps");
    EXPECT_EQ(EngineeringText(999.9996e-6, "W", 3), "1000 \xC2\xB5W");
    EXPECT_EQ(EngineeringText(-31.25, "dBm"),
              "\xE2\x88\x92"
              "31.25 dBm");
    EXPECT_EQ(EngineeringText(1.934145e14, "Hz", 7), "193.4145 THz");
    EXPECT_EQ(EngineeringText(0.0, "V"), "0 V");
    EXPECT_EQ(PrefixFor(1e-3).text, "m");
    EXPECT_EQ(PrefixFor(1e30).exponent, 24);
}

TEST(Marks, TheTopmostUnderThePointerOrTheNearestAround) {
    const Marks marks = {{"pane", {0, 0, 100, 100}, "", ""},
                         {"legend:0", {10, 10, 20, 10}, "", ""},
                         {"axis:y", {-30, 0, 20, 100}, "", ""}};
    EXPECT_EQ(MarkAt(marks, {15, 15})->id, "legend:0");
    EXPECT_EQ(MarkAt(marks, {50, 50})->id, "pane");
    EXPECT_EQ(MarkAt(marks, {-4, 50}), nullptr);
    EXPECT_EQ(MarkAt(marks, {-4, 50}, 5.0)->id, "pane");
    EXPECT_EQ(MarkAt(marks, {-7, 50}, 5.0)->id, "axis:y");
    EXPECT_EQ(FindMark(marks, "axis:x"), nullptr);
}

}  // namespace
}  // namespace photrak
