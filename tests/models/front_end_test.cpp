#include "models/detection/front_end.h"

#include <cmath>
#include <vector>

#include "base/text.h"
#include "support/signals.h"

namespace photrak {
namespace {

constexpr std::int32_t size = 32;
constexpr double df = 1e9;  // Hz

/// H[1..size], element 0 unused; the upper half mirrors the lower one.
std::vector<std::complex<double>> TransferOf(const FrontEndParams& frontEnd) {
    const Owned<ElecSig> signal = RampWaveform(size, 1.0 / (size * df));
    std::vector<Complex> H(size + 1);
    std::string text;
    EXPECT_EQ(FrontEnd(signal.get(), frontEnd, H.data(), {"fe", text}), Status::Success) << text;
    std::vector<std::complex<double>> values;
    for (const Complex& element : H) values.push_back(Value(element));
    for (int i = 2; i <= size / 2; ++i) EXPECT_EQ(values[i], std::conj(values[size + 2 - i])) << i;
    return values;
}

FrontEndParams Custom(std::string_view text) {
    FrontEndParams frontEnd;
    frontEnd.modelType = "custom";
    std::string reason;
    EXPECT_EQ(ReadFrontEndTable(text, frontEnd, reason), Status::Success) << reason;
    return frontEnd;
}

TEST(FrontEnd, IsFlatBetweenItsCorners) {
    FrontEndParams frontEnd;
    frontEnd.modelType = "defined";
    frontEnd.tZ = 500.0;
    frontEnd.zero = 2e9;
    frontEnd.pole = 8e9;
    const auto H = TransferOf(frontEnd);
    EXPECT_EQ(H[1], 500.0) << "DC is exempt from the low corner";
    for (int i = 2; i <= size / 2 + 1; ++i) {
        // A first-order high-pass at the zero times a first-order low-pass at the pole.
        const std::complex<double> j(0.0, 1.0), s = j * ((i - 1) * df);
        const auto expected = 500.0 / ((1.0 - 2e9 / s) * (1.0 + s / 8e9));
        EXPECT_NEAR(std::abs(H[size + 2 - i] - std::conj(expected)), 0.0, 1e-10) << i;
    }
}

/// A cubic, which four points determine inside the table and beyond its ends.
std::complex<double> Cubic(double f) {
    const double x = f / 1e10;
    return {100.0 + x * (3.0 - x * (20.0 - 4.0 * x)), x * (-30.0 + x * (2.0 + x))};
}
std::string CubicTable(const std::vector<double>& frequencies) {
    std::string text = Concat("  ", frequencies.size(), " rows follow\n\n");
    for (const double f : frequencies) {
        text += Concat("\t", FormatSignificant(f, 17), " ", FormatSignificant(Cubic(f).real(), 17),
                       ", ", FormatSignificant(Cubic(f).imag(), 17), "\n");
    }
    return text;
}

TEST(FrontEnd, FollowsACubicThroughFourRowsOfItsTable) {
    for (const std::vector<double>& rows : {std::vector<double>{1e9, 3e9, 4e9, 9e9},
                                            {2e9, 3e9, 5e9, 7e9, 11e9, 13e9, 14.5e9},
                                            {14e9, 12e9, 9e9, 8e9, 3e9, 1e9}}) {
        const auto H = TransferOf(Custom(CubicTable(rows)));
        EXPECT_NEAR(std::abs(H[1] - std::abs(Cubic(rows[0]))), 0.0, 1e-10);
        for (int i = 2; i <= size / 2 + 1; ++i) {
            EXPECT_NEAR(std::abs(H[size + 2 - i] - std::conj(Cubic((i - 1) * df))), 0.0, 1e-9) << i;
        }
    }
}

TEST(FrontEnd, UsesAllRowsOfAShortTableAndFourOfALongOne) {
    std::string step = "8\n";
    for (int i = 1; i <= 8; ++i) step += Concat(i, "e9 ", i > 4 ? 1 : 0, " 0\n");
    const auto eight = TransferOf(Custom(step));
    EXPECT_EQ(eight[2], 0.0);
    EXPECT_NEAR(std::abs(eight[9] - 1.0), 0.0, 1e-12);
    const auto one = TransferOf(Custom("1\n5e9 3 4\n"));
    EXPECT_EQ(one[1], 5.0);
    EXPECT_EQ(one[size / 2 + 1], std::complex<double>(3.0, -4.0));
}

TEST(FrontEnd, ReadsWhatThereIsOfATruncatedTable) {
    const std::string whole = "3\n1e9 1 2\n2e9 3 4\n3e9 5 6\n";
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        FrontEndParams frontEnd;
        std::string reason;
        const Status status =
            ReadFrontEndTable(std::string_view(whole).substr(0, length), frontEnd, reason);
        EXPECT_EQ(status == Status::Error, !reason.empty()) << length;
        EXPECT_TRUE(status == Status::Success || frontEnd.count == 0) << length;
    }
    EXPECT_EQ(Custom("3\n1e9 1 2\n2e9 3 4\n").count, 2);
    EXPECT_EQ(Custom("2147483647\n1e9 1 2\n").count, 1) << "a count never sizes memory";
}

TEST(FrontEnd, RefusesTablesThatAreNone) {
    const struct {
        const char *text, *reason;
    } rows[] = {
        {"-3\n1 1 1\n", "line 1 does not begin with a whole number of rows above 0"},
        {"\n4.9\n1 1 1\n", "line 2 does not begin with a whole number of rows above 0"},
        {"1\n0x190 1 1\n", "line 2 does not hold three numbers"},
        {"1\n1e9 4O0 1\n", "line 2 does not hold three numbers"},
        {"2\n1e9 1 1\n2e9 1\n", "line 3 does not hold three numbers"},
        {"1\n1e9 nan 0\n", "line 2 does not hold three numbers"},
        {"3\n1e9 1 1\n2e9 2 2\n1e9 1 1\n",
         "the frequency in line 4 does not continue the order of those above it"},
    };
    for (const auto& row : rows) {
        FrontEndParams frontEnd;
        std::string reason;
        EXPECT_EQ(ReadFrontEndTable(row.text, frontEnd, reason), Status::Error);
        EXPECT_EQ(reason, row.reason);
    }
}

}  // namespace
}  // namespace photrak
