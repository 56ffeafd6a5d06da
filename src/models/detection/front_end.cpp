// Both models give the positive frequencies; the negative ones are their conjugates.
#include "models/detection/front_end.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "base/line_reader.h"
#include "base/text.h"
#include "kernel/sample_arrays.h"
#include "numeric/interpolation.h"

namespace photrak {
namespace {

constexpr std::string_view frequencyDelimiters = " \t\n";
constexpr std::string_view transferDelimiters = " ,\t\n";
constexpr std::size_t shortestRowBytes = 6;  // "1 1 1" and the line's end

Status Fail(FrontEndParams& frontEnd, std::string& reason, std::string text) {
    frontEnd.count = 0;
    reason = std::move(text);
    return Status::Error;
}

bool ReadWord(std::string_view word, double& value) {
    const std::optional<double> number = WholeDouble(word);
    value = number.value_or(0.0);
    return number.has_value();
}

bool ReadRow(LineReader& reader, FrontEndParams& frontEnd, std::int32_t row) {
    return ReadWord(reader.Word(frequencyDelimiters), frontEnd.frequency.get()[row]) &&
           ReadWord(reader.Word(transferDelimiters), frontEnd.realPart.get()[row]) &&
           ReadWord(reader.Word(transferDelimiters), frontEnd.imagPart.get()[row]);
}

/// Interpolation divides by differences of frequencies, and the search needs an order.
bool KeepsOrder(const double* frequency, std::int32_t row) {
    if (row < 2) return true;
    const double step = frequency[row] - frequency[row - 1];
    return row == 2 ? step != 0.0 : step * (frequency[2] - frequency[1]) > 0.0;
}

/// H at element i = `positive` at (i - 1) df, its conjugate at element N + 2 - i.
// By design: element N/2 + 1 is its own partner and ends up with the conjugate.
template <class Transfer>
void FillPairs(Complex* H, long n, double df, Transfer positive) {
    for (long i = 2; i <= n / 2 + 1; ++i) {
        const Complex h = positive(static_cast<double>(i - 1) * df);
        H[i] = h;
        H[n + 2 - i] = Conjugate(h);
    }
}

/// Flat at tZ between the corners.
struct DefinedTransfer {
    double tZ, zero, pole;

    Complex operator()(double f) const {
        return MakeComplex(tZ * pole * f) / (Complex{f, zero} * Complex{pole, f});
    }
};

/// The cubic through the four rows around f (all rows of a shorter table), beyond the ends of the
/// table as well.
struct TableTransfer {
    const double *frequency, *realPart, *imagPart;
    int count;

    Complex operator()(double f) const {
        const int rows = std::min(count, 4);
        const int before = count > 4 ? WindowOfFour(frequency, count, f) - 1 : 0;
        Complex h;
        double error = 0.0;
        PolyIntTwoRealArray(frequency + before, realPart + before, rows, f, &h.re, &error);
        PolyIntTwoRealArray(frequency + before, imagPart + before, rows, f, &h.im, &error);
        return h;
    }
};

}  // namespace

Status ReadFrontEndTable(std::string_view text, FrontEndParams& frontEnd, std::string& reason) {
    LineReader reader(text, frontEnd.filename);
    reader.Next();
    const std::int32_t announced = WholeInt(reader.Word(frequencyDelimiters)).value_or(0);
    if (announced < 1) {
        return Fail(frontEnd, reason,
                    Concat("line ", reader.LineNumber(),
                           " does not begin with a whole number of rows above 0"));
    }
    // A text cannot hold more rows than this, whatever it announces.
    const std::size_t possible = reader.BytesLeft() / shortestRowBytes + 1;
    const auto capacity =
        static_cast<std::int32_t>(std::min<std::size_t>(possible, std::size_t(announced)));
    for (OwnedBlock<double>* column :
         {&frontEnd.frequency, &frontEnd.realPart, &frontEnd.imagPart}) {
        column->reset(NewSamples<double>(capacity));
        if (!*column) return Fail(frontEnd, reason, "insufficient memory for its rows");
    }
    std::int32_t row = 0;
    while (row < capacity && reader.Next()) {
        if (!ReadRow(reader, frontEnd, ++row)) {
            return Fail(frontEnd, reason,
                        Concat("line ", reader.LineNumber(), " does not hold three numbers"));
        }
        if (!KeepsOrder(frontEnd.frequency.get(), row)) {
            return Fail(frontEnd, reason,
                        Concat("the frequency in line ", reader.LineNumber(),
                               " does not continue the order of those above it"));
        }
    }
    frontEnd.count = row;
    return Status::Success;
}

std::string BadTableText(const FrontEndParams& frontEnd) {
    return FillIn("Error reading receiver front end custom data file '%s'\n", {frontEnd.filename});
}

Status FrontEnd(const ElecSig* esOut, const FrontEndParams& frontEnd, Complex* H,
                const ModelReport& report) {
    if (!esOut || !H) {
        return report.Fail("Empty input ElecSig in FrontEnd().\n");
    }
    if (esOut->domain != FreqDomain) {
        return report.Fail("Error input signal domain in FrontEnd().\n");
    }
    const long n = esOut->noPoints;
    const double df = 1.0 / (static_cast<double>(n) * esOut->tStep);
    if (frontEnd.modelType == "defined") {
        // By design: DC does not see the low corner, so that the mean of a signal passes.
        H[1] = MakeComplex(frontEnd.tZ);
        FillPairs(H, n, df, DefinedTransfer{frontEnd.tZ, frontEnd.zero, frontEnd.pole});
        return Status::Success;
    }
    if (frontEnd.modelType != "custom") {
        return report.Fail("Error in FrontEnd amplifier type.\n");
    }
    if (frontEnd.count < 1) return report.Fail(BadTableText(frontEnd));
    const double* re = frontEnd.realPart.get();
    const double* im = frontEnd.imagPart.get();
    H[1] = MakeComplex(Magnitude({re[1], im[1]}));
    FillPairs(H, n, df, TableTransfer{frontEnd.frequency.get(), re, im, frontEnd.count});
    return Status::Success;
}

}  // namespace photrak
