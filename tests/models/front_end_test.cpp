#include "models/detection/front_end.h"

#include <cmath>
#include <vector>

#include "base/text.h"
#include "support/signals.h"

namespace photrak {
namespace {

constexpr std::int32_t size = 32;
constexpr double df = 1e9;  // Hz

Owned<ElecSig> SpectrumToSize() {
    Owned<ElecSig> signal = RampWaveform(size, 1.0 / (size * df));
    signal->domain = FreqDomain;
    return signal;
}

/// H[1..size], element 0 unused.
std::vector<Complex> TransferOf(const FrontEndParams& frontEnd) {
    std::vector<Complex> H(size + 1);
    std::string text;
    EXPECT_EQ(FrontEnd(SpectrumToSize().get(), frontEnd, H.data(), text), Status::Success) << text;
    return H;
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
    const std::vector<Complex> H = TransferOf(frontEnd);
    EXPECT_EQ(Value(H[1]), std::complex<double>(500.0)) << "DC is exempt from the low corner";
    for (int i = 2; i <= size / 2 + 1; ++i) {
        const double f = (i - 1) * df;
        // A first-order high-pass at the zero times a first-order low-pass at the pole.
        const std::complex<double> expected = 500.0 / ((1.0 + std::complex<double>(0.0, 2e9 / f)) *
                                                       (1.0 + std::complex<double>(0.0, f / 8e9)));
        EXPECT_NEAR(std::abs(Value(H[size + 2 - i]) - std::conj(expected)), 0.0, 1e-10) << i;
        if (i <= size / 2) {
            EXPECT_NEAR(std::abs(Value(H[i]) - expected), 0.0, 1e-10) << i;
        }
    }
}

/// Rows of a cubic, which four points determine inside the table and beyond its ends.
double CubicRe(double f) {
    const double x = f / 1e10;
    return 100.0 + x * (3.0 - x * (20.0 - 4.0 * x));
}
double CubicIm(double f) {
    const double x = f / 1e10;
    return x * (-30.0 + x * (2.0 + x));
}
std::string CubicTable(std::vector<double> frequencies) {
    std::string text = Concat("  ", frequencies.size(), " rows follow\n\n");
    for (const double f : frequencies) {
        text += Concat("\t", FormatSignificant(f, 17), " ", FormatSignificant(CubicRe(f), 17), ", ",
                       FormatSignificant(CubicIm(f), 17), "\n");
    }
    return text;
}

TEST(FrontEnd, FollowsACubicThroughFourRowsOfItsTable) {
    for (const std::vector<double>& rows :
         {std::vector<double>{1e9, 3e9, 4e9, 9e9},
          std::vector<double>{2e9, 3e9, 5e9, 7e9, 11e9, 13e9, 14.5e9},
          std::vector<double>{14e9, 12e9, 9e9, 8e9, 3e9, 1e9}}) {
        const FrontEndParams frontEnd = Custom(CubicTable(rows));
        EXPECT_EQ(frontEnd.count, static_cast<int>(rows.size()));
        const std::vector<Complex> H = TransferOf(frontEnd);
        EXPECT_NEAR(H[1].re, std::hypot(CubicRe(rows[0]), CubicIm(rows[0])), 1e-10);
        EXPECT_EQ(H[1].im, 0.0);
        for (int i = 2; i <= size / 2 + 1; ++i) {
            const std::complex<double> expected(CubicRe((i - 1) * df), CubicIm((i - 1) * df));
            EXPECT_NEAR(std::abs(Value(H[size + 2 - i]) - std::conj(expected)), 0.0, 1e-9) << i;
            if (i <= size / 2) {
                EXPECT_EQ(Value(H[i]), std::conj(Value(H[size + 2 - i])));
            }
        }
    }
}

TEST(FrontEnd, UsesAllRowsOfAShortTable) {
    const std::vector<Complex> one = TransferOf(Custom("1\n5e9 3 4\n"));
    EXPECT_EQ(Value(one[1]), std::complex<double>(5.0));
    EXPECT_EQ(Value(one[7]), std::complex<double>(3.0, 4.0));
    EXPECT_EQ(Value(one[size / 2 + 1]), std::complex<double>(3.0, -4.0));
    const std::vector<Complex> two = TransferOf(Custom("2\n1e9 10 0\n3e9 20 -2\n"));
    EXPECT_NEAR(std::abs(Value(two[6]) - std::complex<double>(30.0, -4.0)), 0.0, 1e-12);
    // Three rows of f^2 and of -f, f in GHz.
    const std::vector<Complex> three = TransferOf(Custom("3\n1e9 1 -1\n2e9 4 -2\n4e9 16 -4"));
    EXPECT_NEAR(std::abs(Value(three[11]) - std::complex<double>(100.0, -10.0)), 0.0, 1e-10);
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
    EXPECT_EQ(Custom("1\n1e9 1 2\nfree text\n").count, 1);
    EXPECT_EQ(Custom("4\n").count, 0);
}

TEST(FrontEnd, RefusesTablesThatAreNone) {
    const struct {
        const char *text, *reason;
    } rows[] = {
        {"", "the number of rows is not above 0"},
        {"-3\n1 1 1\n", "the number of rows is not above 0"},
        {"rows\n1 1 1\n", "the number of rows is not above 0"},
        {"2\n1e9 1 1\n2e9 1\n", "line 3 does not hold three numbers"},
        {"1\n1e9,1,1\n", "line 2 does not hold three numbers"},
        {"1\n1e9 nan 0\n", "line 2 does not hold three numbers"},
        {"2\n1e9 1 1\n1e9 2 2\n",
         "the frequency in line 3 does not continue the order of those above it"},
        {"3\n1e9 1 1\n2e9 2 2\n1e9 1 1\n",
         "the frequency in line 4 does not continue the order of those above it"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        FrontEndParams frontEnd;
        std::string reason;
        EXPECT_EQ(ReadFrontEndTable(row.text, frontEnd, reason), Status::Error);
        EXPECT_EQ(reason, row.reason);
        EXPECT_EQ(frontEnd.count, 0);
    }
}

}  // namespace
}  // namespace photrak
