// Command files and columns as their writers, and as nobody, writes them.
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

#include "plotting/command_file.h"
#include "plotting/data_file.h"
#include "support/holds.h"

namespace photrak {
namespace {

PlotSpec Read(std::string_view text) {
    PlotSpec spec;
    std::string error;
    EXPECT_TRUE(ReadPlotCommands(text, "x.pcs", spec, error)) << error;
    return spec;
}

TEST(PlotCommands, ReadWhatTheWritersWrite) {
    const PlotSpec traces = Read(
        "/xl\"Time (s)\"\n/yl\"Signal (Real)\"\n/altyl\"Binary Value\"\n/tt\"A \"b\" Signal "
        "Plot\"\n/lcm2,1,3,4\n/ls1\n"
        "/tb\"x polarization\"\n/st7\n/w,,-0.1,1.1\n/altw,,-0.1,1.1\n/lt\"<< &l = 1550 nm "
        "(x+y)\"\n/lt\">> \\# 1\"\n"
        "a b_real.sig\r\nplots/a_bin.sig /alty\n/nx1\n");
    EXPECT_EQ(traces.title, "A \"b\" Signal Plot");
    EXPECT_EQ(traces.secondLabel, "Binary Value");
    EXPECT_EQ(traces.legends, (std::vector<std::string>{"\xE2\x86\x90 \xCE\xBB = 1550 nm (x+y)",
                                                        "\xE2\x86\x92 #1"}));
    ASSERT_EQ(traces.files.size(), 2u);
    EXPECT_EQ(traces.files[0].name, "a b_real.sig");
    EXPECT_EQ(traces.files[1].name, "a_bin.sig");
    EXPECT_TRUE(traces.files[1].secondAxis && !traces.files[0].secondAxis);
    EXPECT_EQ(traces.y.least, -0.1);
    EXPECT_EQ(traces.second.greatest, 1.1);
    EXPECT_FALSE(traces.x.least || traces.x.greatest);
    EXPECT_EQ(traces.symbols, CurveSymbols::Points);
    EXPECT_TRUE(traces.notes.empty());
    EXPECT_EQ(ColorPlace(traces.colors[0]), 0);
    EXPECT_EQ(ColorPlace(traces.colors[1]), 1);
    EXPECT_EQ(ColorPlace(traces.colors[2]), 2);

    const PlotSpec rates =
        Read("/lc2\n/l\n/st\n/w-24,-18,1e-42,0.001\n/ly2 1e-43,1\nr.ber\n/nx1\n");
    EXPECT_TRUE(rates.logarithmic && rates.oneColor);
    EXPECT_EQ(rates.symbols, CurveSymbols::All);
    EXPECT_EQ(rates.y.least, 1e-42);  // the window comes before the decades
    EXPECT_EQ(rates.x.greatest, -18.0);
    EXPECT_EQ(Read("/ly 1e-15,0.01\nr.ber\n").y.greatest, 0.01);
    const PlotSpec two = Read("/ly2 1e-9,1\na.sig\nr.ber /alty\n");
    EXPECT_TRUE(two.secondLogarithmic && !two.logarithmic);
    EXPECT_TRUE(two.second.least == 1e-9 && !two.y.least);
    EXPECT_EQ(Read("e.eye\n/nx1 /ny1020\n").yColumns, 1020);
}

TEST(PlotCommands, KeepNotesOfWhatTheyPassOver) {
    const PlotSpec spec = Read("/zz9\n/w1,nan,%s\n/lcm0,x\n/nx2\n/ny-3\n/tt\"unfinished\na.sig\n");
    ASSERT_EQ(spec.notes.size(), 6u);
    EXPECT_EQ(spec.notes[0], "x.pcs:1: unknown option '/zz9'");
    EXPECT_TRUE(Holds(spec.notes[2], "'%s' is no number"));
    EXPECT_EQ(spec.title, "unfinished");
    EXPECT_EQ(spec.x.least, 1.0);
}

TEST(PlotCommands, ReachNoFileOutsideOfTheFolder) {
    for (const std::string name :
         {"/etc/passwd", "../a.sig", "a/../../b.sig", "..", "a/", "x\x01.sig", "/alty"}) {
        PlotSpec spec;
        std::string error;
        // What begins with a slash is an option and never a file.
        if (ReadPlotCommands(name + "\n", "x.pcs", spec, error)) {
            EXPECT_TRUE(spec.files.empty()) << name;
            EXPECT_EQ(spec.notes.size(), 1u);
        } else {
            EXPECT_TRUE(Holds(error, "x.pcs:1: the data file")) << name;
        }
    }
}

TEST(DataTable, NumbersEqualTheLibrarysInEveryBit) {
    std::mt19937_64 random(7);
    std::string text;
    std::vector<double> expected;
    for (int i = 0; i < 20000; ++i) {
        char word[64];
        const double size = std::pow(10.0, static_cast<double>(random() % 640) - 320.0);
        const double value =
            static_cast<double>(static_cast<std::int64_t>(random())) * 1e-19 * size;
        const int form = static_cast<int>(random() % 4);
        std::snprintf(word, sizeof word,
                      form == 0   ? "%.6g"
                      : form == 1 ? "%.17g"
                      : form == 2 ? "%.3e"
                                  : "%+.9G",
                      value);
        expected.push_back(std::strtod(word, nullptr));
        text += std::string(word) + "\n";
    }
    DataTable table;
    std::string error;
    ASSERT_TRUE(ReadDataTable(text, "x.sig", table, error)) << error;
    ASSERT_EQ(table.rows, expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (!std::isfinite(expected[i])) continue;
        ASSERT_EQ(table.columns[0][i], expected[i]) << i;
    }
}

TEST(DataTable, GapsAndUnfinishedRows) {
    DataTable table;
    std::string error;
    ASSERT_TRUE(
        ReadDataTable("0 1 2\n\n1 . nan\r\n2\n3 inf -1e999\n4 5 6.5", "x.ber", table, error))
        << error;
    EXPECT_EQ(table.rows, 4u);
    ASSERT_EQ(table.columns.size(), 3u);
    EXPECT_TRUE(table.lastRowIncomplete);
    for (const std::size_t row : {1u, 2u, 3u}) {
        EXPECT_TRUE(std::isnan(table.columns[1][row]) && std::isnan(table.columns[2][row])) << row;
    }
    EXPECT_EQ(table.columns[2][0], 2.0);
    ASSERT_TRUE(ReadDataTable("", "x.ber", table, error));
    EXPECT_EQ(table.rows, 0u);
    EXPECT_FALSE(ReadDataTable("1 2\n3 4\n", "x.ber", table, error, /*mostValues=*/3));
    EXPECT_TRUE(Holds(error, "x.ber:2: more than 200000000 values in a plot"));
}

TEST(DataTable, FaultsHaveTheirLine) {
    const std::pair<std::string, std::string> rows[] = {
        {"0 1\n1 x2\n", "x.sig:2: 'x2' is no number"},
        {"0 1\n1 2 3\n", "x.sig:2: more columns than in the first row (2)"},
        {"0 1\n\n1 1e\n", "x.sig:3: '1e' is no number"},
        {"0x10 1\n", "'0x10' is no number"},
        {"1-2 3\n", "'1-2' is no number"},
        {"-\n", "'-' is no number"},
        {"%s%n\n", "'%s%n' is no number"},
        {std::string(3'000'000, '1') + "x\n", "is no number"}};
    for (const auto& [text, message] : rows) {
        DataTable table;
        std::string error;
        EXPECT_FALSE(ReadDataTable(text, "x.sig", table, error));
        EXPECT_TRUE(Holds(error, message));
        EXPECT_LT(error.size(), 200u);
    }
    DataTable table;
    std::string error, wide;
    for (std::size_t i = 0; i <= maxDataColumns; ++i) wide += "1 ";
    EXPECT_FALSE(ReadDataTable(wide + "\n", "x.sig", table, error));
    EXPECT_TRUE(Holds(error, "more than 1048576 columns"));
}

}  // namespace
}  // namespace photrak
