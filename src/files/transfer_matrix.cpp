// Text reader of transfer matrices: numbers between white space, whatever the lines, after a head
// line of three words. The counts are held against the bytes that follow before memory is taken.
#include "files/transfer_matrix.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/text.h"
#include "base/units.h"

namespace photrak {
namespace {

constexpr std::string_view formatWord = "TransferMatrixFormat1";
constexpr std::size_t headLineLength = 80;  // characters; what stands after is a remark

Complex Polar(double amplitude, double angle) {
    return {amplitude * std::cos(angle), amplitude * std::sin(angle)};
}

/// How an entry's numbers make an element.
struct NumberForm {
    std::string_view word;
    int numbers;         // of an entry
    int magnitudes;      // the first so many are magnitudes, which decibels apply to
    double decibelBase;  // 10^(x / decibelBase)
    Complex (*element)(double x, double y);
};
constexpr NumberForm forms[] = {
    {"REAL", 1, 1, 20.0, [](double x, double) { return MakeComplex(x); }},
    {"COMPLEX", 2, 2, 20.0, [](double x, double y) { return MakeComplex(x, y); }},
    {"REAL_IMAG", 2, 2, 20.0, [](double x, double y) { return MakeComplex(x, y); }},
    {"AMP_PHASE", 2, 1, 20.0, [](double x, double y) { return Polar(x, y * radiansPerDegree); }},
    {"AMP_PHASE_RAD", 2, 1, 20.0, [](double x, double y) { return Polar(x, y); }},
    {"POWER_PHASE", 2, 1, 10.0,
     [](double x, double y) { return Polar(std::sqrt(x), y * radiansPerDegree); }},
};
/// Any other word: powers.
constexpr NumberForm powerForm = {"", 1, 1, 10.0,
                                  [](double x, double) { return MakeComplex(std::sqrt(x)); }};

const NumberForm& FindForm(std::string_view word) {
    const auto* form = std::find_if(std::begin(forms), std::end(forms),
                                    [&](const NumberForm& row) { return row.word == word; });
    return form == std::end(forms) ? powerForm : *form;
}

constexpr bool IsSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

std::string_view TakeWord(std::string_view& line) {
    while (!line.empty() && IsSpace(line.front())) line.remove_prefix(1);
    std::size_t length = 0;
    while (length < line.size() && !IsSpace(line[length])) ++length;
    const std::string_view word = line.substr(0, length);
    line.remove_prefix(length);
    return word;
}

bool IsDecibel(std::string_view word) {
    return word.size() == 2 && (word[0] | 0x20) == 'd' && (word[1] | 0x20) == 'b';
}

bool IsSameInAnyCase(std::string_view a, std::string_view b) {
    const auto same = [](char x, char y) {
        return x == y || ((x ^ y) == 0x20 && (x | 0x20) >= 'a');
    };
    return std::ranges::equal(a, b, same);
}

/// A head line without a form, whose place the scale or a number has taken, or with one of the
/// forms misspelled in its case. All of these would otherwise silently read as powers.
bool IsNoForm(std::string_view word) {
    std::size_t used = 0;
    ReadDouble(word, &used);
    if (word.empty() || used != 0 || IsDecibel(word)) return true;
    return std::ranges::any_of(forms, [&](const NumberForm& form) {
        return word != form.word && IsSameInAnyCase(word, form.word);
    });
}

/// Walks a text number by number.
class Scanner {
  public:
    Scanner(std::string_view text, std::string_view name) : text_(text), name_(name) {}

    std::string_view Line() {
        const std::size_t end = std::min(text_.find('\n', at_), text_.size());
        const std::string_view line = text_.substr(at_, end - at_);
        at_ = std::min(end + 1, text_.size());
        return line;
    }
    [[nodiscard]] bool Read(double& value) { return Read(value, ReadDouble); }
    [[nodiscard]] bool Read(std::int32_t& value) { return Read(value, ReadInt); }
    std::size_t BytesLeft() const { return text_.size() - at_; }

    /// The line is that of the last number read, or of what stands in place of the next.
    Status Fail(std::string_view reason, std::string& errorText) {
        const auto line =
            1 + std::count(text_.begin(), text_.begin() + static_cast<std::ptrdiff_t>(at_), '\n');
        AppendPiece(errorText, Concat(name_, ":", line, ": ", reason));
        return Status::Error;
    }
    Status FailMissing(std::string& errorText) {
        SkipSpace();
        return Fail(at_ == text_.size() ? "the file ends where a number must stand"
                                        : "a number must stand here",
                    errorText);
    }

    /// Text that is no number may follow the last one, as a remark.
    Status CheckEnd(std::string& errorText) {
        SkipSpace();
        std::size_t used = 0;
        ReadDouble(text_.substr(at_), &used);
        return used == 0 ? Status::Success
                         : Fail("more numbers stand here than the counts ask for", errorText);
    }

  private:
    /// A number up to its end: a count of 1.5 must not become a 1 and a number more.
    template <class Value>
    bool Read(Value& value, Value (*read)(std::string_view, std::size_t*)) {
        std::size_t used = 0;
        value = read(text_.substr(at_), &used);
        const std::size_t end = at_ + used;
        if (used == 0 || (end < text_.size() && !IsSpace(text_[end]))) return false;
        at_ = end;
        return true;
    }
    void SkipSpace() {
        while (at_ < text_.size() && IsSpace(text_[at_])) ++at_;
    }
    std::string_view text_, name_;
    std::size_t at_ = 0;
};

Status ReadHead(Scanner& scanner, TransferMatrix& matrix, std::string& errorText) {
    if (!scanner.Read(matrix.rows) || !scanner.Read(matrix.columns) ||
        !scanner.Read(matrix.points) || !scanner.Read(matrix.firstWavelength) ||
        !scanner.Read(matrix.lastWavelength)) {
        return scanner.FailMissing(errorText);
    }
    const auto isPortCount = [](std::int32_t count) {
        return count >= 1 && count <= maxMatrixPorts;
    };
    if (!isPortCount(matrix.rows) || !isPortCount(matrix.columns)) {
        return scanner.Fail(Concat(matrix.rows, " rows and ", matrix.columns,
                                   " columns; each must be 1 to ", maxMatrixPorts),
                            errorText);
    }
    if (matrix.points < 1 || matrix.points > maxMatrixPoints) {
        return scanner.Fail(
            Concat(matrix.points, " wavelengths; there must be 1 to ", maxMatrixPoints), errorText);
    }
    const double first = matrix.firstWavelength, last = matrix.lastWavelength;
    if (matrix.points > 1 && !(first < last && std::isfinite(last - first))) {
        return scanner.Fail(Concat("the wavelengths run from ", first, " to ", last,
                                   " m; they must be finite and ascend"),
                            errorText);
    }
    return Status::Success;
}

/// One entry as an element.
Status ReadEntry(Scanner& scanner, const NumberForm& form, bool decibels, Complex& element,
                 std::string& errorText) {
    double numbers[2] = {0.0, 0.0};
    for (int i = 0; i < form.numbers; ++i) {
        if (!scanner.Read(numbers[i])) return scanner.FailMissing(errorText);
        if (decibels && i < form.magnitudes) {
            numbers[i] = std::pow(10.0, numbers[i] / form.decibelBase);
        }
    }
    element = form.element(numbers[0], numbers[1]);
    if (std::isfinite(element.re) && std::isfinite(element.im)) return Status::Success;
    return scanner.Fail("the element is not a finite number", errorText);
}

Status ReadElements(Scanner& scanner, const NumberForm& form, bool decibels, TransferMatrix& matrix,
                    std::string& errorText) {
    for (std::int32_t row = 1; row <= matrix.rows; ++row) {
        for (std::int32_t point = 0; point < matrix.points; ++point) {
            double wavelength = 0.0;  // of no use: the grid is uniform
            if (!scanner.Read(wavelength)) return scanner.FailMissing(errorText);
            for (std::int32_t column = 1; column <= matrix.columns; ++column) {
                Complex& element = matrix.Element(row, column)[point];
                const Status status = ReadEntry(scanner, form, decibels, element, errorText);
                if (status != Status::Success) return status;
            }
        }
    }
    return Status::Success;
}

}  // namespace

Complex TransferMatrix::At(std::int32_t row, std::int32_t column, double wavelength) const {
    const Complex* value = Element(row, column);
    if (points == 1) return value[0];
    if (!(wavelength > firstWavelength && wavelength < lastWavelength)) return {};
    const double p =
        (wavelength - firstWavelength) / (lastWavelength - firstWavelength) * (points - 1);
    // Rounding may lift p onto the last point, which has no successor.
    const auto i = std::min(static_cast<std::int32_t>(p), points - 2);
    const double r = p - i;
    return (1.0 - r) * value[i] + r * value[i + 1];
}

bool SizeTransferMatrix(TransferMatrix& matrix, std::int32_t rows, std::int32_t columns,
                        std::int32_t points) {
    const auto count = static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns) *
                       static_cast<std::size_t>(points);
    matrix.rows = rows;
    matrix.columns = columns;
    matrix.points = points;
    matrix.values.reset(static_cast<Complex*>(AllocateZeroed(count, sizeof(Complex))));
    if (!matrix.values) matrix = {};
    return matrix.values != nullptr;
}

Status ReadTransferMatrix(std::string_view text, std::string_view name, TransferMatrix& matrix,
                          std::string& errorText) {
    Scanner scanner(text, name);
    std::string_view head = scanner.Line().substr(0, headLineLength);
    // By design: another kind of file is no error, and the matrix in use stays in use.
    if (TakeWord(head) != formatWord) return Status::Success;
    const std::string_view formName = TakeWord(head);
    if (IsNoForm(formName)) {
        AppendPiece(errorText, Concat(name, ":1: '", formName, "' is no form of numbers"));
        return Status::Error;
    }
    const NumberForm& form = FindForm(formName);
    const bool decibels = IsDecibel(TakeWord(head));

    TransferMatrix read;
    Status status = ReadHead(scanner, read, errorText);
    if (status != Status::Success) return status;
    // A number takes a character and what parts it from the one before.
    const std::int64_t numbers =
        std::int64_t{read.rows} * read.points * (1 + read.columns * form.numbers);
    if (static_cast<std::uint64_t>(numbers) > scanner.BytesLeft() / 2) {
        return scanner.Fail(
            Concat("the counts ask for ", numbers, " numbers, more than the file has"), errorText);
    }
    if (!SizeTransferMatrix(read, read.rows, read.columns, read.points)) {
        return scanner.Fail("no memory for the matrix", errorText);
    }
    status = ReadElements(scanner, form, decibels, read, errorText);
    if (status == Status::Success) status = scanner.CheckEnd(errorText);
    if (status == Status::Success) matrix = std::move(read);
    return status;
}

}  // namespace photrak
