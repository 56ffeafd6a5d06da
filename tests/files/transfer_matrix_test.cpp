// Transfer matrix files: every number form, the layout of elements, interpolation, faulty texts.
#include "files/transfer_matrix.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

#include "base/text.h"
#include "support/signals.h"

namespace photrak {
namespace {

constexpr double rounding = 1e-15;

TransferMatrix ReadGood(std::string_view text) {
    TransferMatrix matrix;
    std::string errorText;
    EXPECT_EQ(ReadTransferMatrix(text, "good.txt", matrix, errorText), Status::Success);
    EXPECT_EQ(errorText, "");
    return matrix;
}

TEST(TransferMatrix, EveryNumberFormMakesItsElement) {
    const double quarter = std::numbers::pi / 2.0;
    const struct {
        std::string_view words, entry;
        std::complex<double> element;
    } rows[] = {
        {"POWER LIN", "0.25", {0.5, 0.0}},
        {"INTENSITY LIN", "0.25", {0.5, 0.0}},  // any word that is no other form
        {"REAL LIN", "-0.25", {-0.25, 0.0}},
        {"REAL db", "-6", {std::pow(10.0, -0.3), 0.0}},
        {"REAL_IMAG Db", "-20 20", {0.1, 10.0}},
        {"AMP_PHASE dB", "-20 -90", std::polar(0.1, -quarter)},
        {"AMP_PHASE_RAD LIN", "2 1.5", std::polar(2.0, 1.5)},
        {"POWER_PHASE LIN", "0.25 90", std::polar(0.5, quarter)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Concat(row.words, ": ", row.entry));
        const TransferMatrix matrix = ReadGood(
            Concat("TransferMatrixFormat1 ", row.words, "\n1 1 1 0 0\n1.55e-6 ", row.entry, "\n"));
        const Complex element = matrix.At(1, 1, 1.3e-6);
        EXPECT_NEAR(element.re, row.element.real(), rounding * 10.0);
        EXPECT_NEAR(element.im, row.element.imag(), rounding * 10.0);
    }
}

// Row 1 over its points, then row 2; each point with a wavelength of no use and all columns.
constexpr std::string_view twoByThree =
    "TransferMatrixFormat1 REAL LIN, and a remark that goes on for longer than eighty characters "
    "do\n"
    "2 3 3 1e-6 3e-6\n"
    "0 111 121 131\n0 112 122 132\r\n0 113 123 133\n"
    "0 211 221 231 0 212 222 232 0 213 223 233\n\n(measured)";

TEST(TransferMatrix, PlacesAndInterpolatesElements) {
    const TransferMatrix matrix = ReadGood(twoByThree);
    for (std::int32_t row = 1; row <= 2; ++row) {
        for (std::int32_t column = 1; column <= 3; ++column) {
            const double first = 100.0 * row + 10.0 * column + 1.0;
            EXPECT_NEAR(matrix.At(row, column, 2e-6).re, first + 1.0, 1e-9);
            EXPECT_NEAR(matrix.At(row, column, 1.25e-6).re, first + 0.25, 1e-9);
            EXPECT_NEAR(matrix.At(row, column, std::nextafter(3e-6, 0.0)).re, first + 2.0, 1e-9);
        }
    }
    for (const double outside :
         std::initializer_list<double>{1e-6, 3e-6, 0.0, -2e-6, 5e-6, NAN, HUGE_VAL, -HUGE_VAL}) {
        EXPECT_EQ(Value(matrix.At(2, 3, outside)), 0.0) << outside;
    }
}

TEST(TransferMatrix, AnotherKindOfFileLeavesTheMatrixInUse) {
    TransferMatrix matrix = ReadGood(twoByThree);
    std::string errorText;
    for (const std::string_view text : {"", "transfermatrixformat1 REAL\n", "1 1 1 0 0\n"}) {
        EXPECT_EQ(ReadTransferMatrix(text, "other.txt", matrix, errorText), Status::Success);
    }
    EXPECT_EQ(matrix.columns, 3);
    EXPECT_EQ(errorText, "");
}

TEST(TransferMatrix, FaultyFilesAreRefusedByLineAndLeaveTheMatrixInUse) {
    const struct {
        std::string_view text;  // after the head line
        std::string_view complaint;
        std::string_view form = "POWER LIN";
    } rows[] = {
        {"1 1 1 0 0\n0 1\n", "1: '' is no form of numbers", ""},
        {"1 1 1 0 0\n0 1\n", "1: 'db' is no form of numbers", "db"},
        {"1 1 1 0 0\n0 1\n", "1: 'Amp_Phase' is no form of numbers", "Amp_Phase LIN"},
        {"0 1\n", "1: '1' is no form of numbers", "1 1 1 0 0"},
        {"1 1 1 0 0\n0 0x10", "3: a number must stand here"},
        {"1 1 1 0 0\n0 1.5abc\n", "3: a number must stand here"},
        {"1 1 2 1 2\n0 1\n0 1\n\n 0 1\n", "6: more numbers stand here than the counts ask for"},
        {"", "2: the file ends where a number must stand"},
        {"1 1 1.5%s%n 0 0\n0 1\n", "2: a number must stand here"},
        {"0 1 1 0 0\n0 1\n", "2: 0 rows and 1 columns; each must be 1 to 64"},
        {"1 1 10000000 1 2\n", "2: 10000000 wavelengths; there must be 1 to 1000000"},
        {"64 64 1000000 1 2\n0 1\n",
         "2: the counts ask for 4160000000 numbers, more than the file has"},
        {"1 1 2 2 2\n0 1\n0 1\n",
         "2: the wavelengths run from 2 to 2 m; they must be finite and ascend"},
        {"1 1 2 1 2\n0 1\n0 nan 1\n", "4: a number must stand here"},
        {"1 1 2 1 2\n0 1\n0 -1\n", "4: the element is not a finite number"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        TransferMatrix matrix = ReadGood(twoByThree);
        std::string errorText;
        EXPECT_EQ(ReadTransferMatrix(Concat("TransferMatrixFormat1 ", row.form, "\n", row.text),
                                     "f.txt", matrix, errorText),
                  Status::Error);
        EXPECT_EQ(errorText, Concat("f.txt:", row.complaint));
        EXPECT_EQ(matrix.rows, 2);
    }
}

}  // namespace
}  // namespace photrak
