#include "plotting/data_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>

#include "base/text.h"
#include "drawing/text_measure.h"

namespace photrak {
namespace {

constexpr double gap = std::numeric_limits<double>::quiet_NaN();

constexpr bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == ',' || c == '\0';
}
constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Powers of ten that a double holds exactly: a mantissa below 2^53 times or over one of them is
// rounded once, and so equals what the library reads.
constexpr std::array<double, 23> exactPowers = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int mostDigits = 15;

/// The usual short number; null when the library has to read it (many digits, far exponents,
/// words).
const char* ReadShort(const char* p, const char* end, double& value) {
    bool negative = false;
    if (p < end && (*p == '-' || *p == '+')) negative = *p++ == '-';
    std::uint64_t mantissa = 0;  // of too many digits it wraps; they go to the library
    int digits = 0, power = 0;
    for (; p < end && IsDigit(*p); ++p, ++digits)
        mantissa = 10 * mantissa + static_cast<std::uint64_t>(*p - '0');
    if (p < end && *p == '.') {
        const char* fraction = ++p;
        for (; p < end && IsDigit(*p); ++p, ++digits)
            mantissa = 10 * mantissa + static_cast<std::uint64_t>(*p - '0');
        power = static_cast<int>(fraction - p);
    }
    if (digits == 0 || digits > mostDigits) return nullptr;
    if (p < end && (*p == 'e' || *p == 'E')) {
        bool below = false;
        if (++p < end && (*p == '-' || *p == '+')) below = *p++ == '-';
        int exponent = 0, exponentDigits = 0;
        for (; p < end && IsDigit(*p) && exponentDigits < 5; ++p, ++exponentDigits) {
            exponent = 10 * exponent + (*p - '0');
        }
        if (exponentDigits == 0) return nullptr;
        power += below ? -exponent : exponent;
    }
    if (power < -22 || power > 22) return nullptr;
    const auto whole = static_cast<double>(mantissa);
    value = power < 0 ? whole / exactPowers[static_cast<std::size_t>(-power)]
                      : whole * exactPowers[static_cast<std::size_t>(power)];
    if (negative) value = -value;
    return p;
}

/// Any word; null if it is neither a number nor a gap. Infinite values are gaps: no axis shows
/// them.
const char* ReadAny(const char* p, const char* end, double& value) {
    const char* stop = p;
    while (stop < end && !IsBlank(*stop) && *stop != '\n') ++stop;
    if (stop - p == 1 && *p == '.') {
        value = gap;
        return stop;
    }
    const char* first = p < stop && *p == '+' ? p + 1 : p;
    const auto [used, problem] = std::from_chars(first, stop, value);
    if (problem == std::errc::result_out_of_range) {
        value = ReadDouble({first, static_cast<std::size_t>(stop - first)});
    } else if (problem != std::errc()) {
        return nullptr;
    }
    if (!(value - value == 0.0)) value = gap;
    return used == stop ? stop : nullptr;
}

class Scanner {
  public:
    Scanner(std::string_view text, const std::string& name, DataTable& table,
            std::size_t mostValues, SpentText spent)
        : at_(text.data()),
          end_(text.data() + text.size()),
          name_(name),
          table_(table),
          mostValues_(mostValues),
          spent_(spent) {}

    bool Read(std::string& error) {
        while (at_ < end_) {
            ++line_;
            spent_.ForgetBefore(at_);
            if (!ReadRow()) {
                error += Concat(name_, ":", line_, ": ", problem_);
                return false;
            }
        }
        return true;
    }

  private:
    bool ReadRow() {
        const char* start = at_;
        std::size_t column = 0;
        while (true) {
            while (at_ < end_ && IsBlank(*at_)) ++at_;
            if (at_ == end_ || *at_ == '\n') break;
            double value = gap;
            if (!ReadWord(value) || !Store(column++, value)) return false;
        }
        if (at_ < end_) ++at_;
        if (column == 0) return true;
        if (table_.rows == 0) Reserve(start);
        for (; column < table_.columns.size(); ++column) table_.columns[column].push_back(gap);
        ++table_.rows;
        return true;
    }

    /// Room for as many rows as fit the text, if they are as long as the first.
    void Reserve(const char* start) {
        const auto rows =
            static_cast<std::size_t>((end_ - start) / std::max<std::ptrdiff_t>(at_ - start, 1));
        const std::size_t most = mostValues_ / table_.columns.size();
        for (auto& column : table_.columns) column.reserve(std::min(rows + rows / 16 + 1, most));
    }

    bool ReadWord(double& value) {
        const char* next = ReadShort(at_, end_, value);
        if (next && (next == end_ || IsBlank(*next) || *next == '\n')) {
            at_ = next;
            return true;
        }
        next = ReadAny(at_, end_, value);
        if (!next) return Fault(Concat("'", DrawableText(Word()), "' is no number"));
        at_ = next;
        return true;
    }

    bool Store(std::size_t column, double value) {
        if (table_.rows == 0) {
            if (column == maxDataColumns)
                return Fault(Concat("more than ", maxDataColumns, " columns"));
            table_.columns.emplace_back();
        } else if (column >= table_.columns.size()) {
            return Fault(
                Concat("more columns than in the first row (", table_.columns.size(), ")"));
        }
        if (++values_ > mostValues_)
            return Fault(Concat("more than ", maxDataValues, " values in a plot"));
        table_.columns[column].push_back(value);
        return true;
    }

    std::string_view Word() const {
        constexpr std::ptrdiff_t shown = 30;
        const char* stop = at_;
        while (stop < end_ && stop - at_ < shown && !IsBlank(*stop) && *stop != '\n') ++stop;
        return {at_, static_cast<std::size_t>(stop - at_)};
    }
    bool Fault(std::string text) {
        problem_ = std::move(text);
        return false;
    }

    const char* at_;
    const char* end_;
    const std::string& name_;
    DataTable& table_;
    std::size_t mostValues_;
    SpentText spent_;
    std::size_t line_ = 0, values_ = 0;
    std::string problem_;
};

}  // namespace

bool ReadDataTable(std::string_view text, const std::string& name, DataTable& table,
                   std::string& error, std::size_t mostValues, SpentText spent) {
    table = {};
    const std::size_t lastEnd = text.rfind('\n');
    const std::size_t whole = lastEnd == std::string_view::npos ? 0 : lastEnd + 1;
    table.lastRowIncomplete = text.find_first_not_of(" \t\r", whole) != std::string_view::npos;
    return Scanner(text.substr(0, whole), name, table, mostValues, spent).Read(error);
}

}  // namespace photrak
