// Lines to samples. Nothing is guessed: a line without its numbers ends the reading with an error.
#include "models/sources/custom_table.h"

#include <algorithm>
#include <cmath>

#include "base/line_reader.h"
#include "base/text.h"
#include "base/units.h"
#include "kernel/sample_arrays.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

constexpr std::int32_t minCustomLines = 4;  // the points of the interpolation
constexpr std::size_t maxCustomFileBytes = std::size_t{1} << 28;

/// Darkness where the power is not above 0.
double FieldOfPower(double power) {
    return power > 0.0 ? std::sqrt(power) : 0.0;
}

Complex Polar(double amplitude, double phase) {
    return {amplitude * std::cos(phase), amplitude * std::sin(phase)};
}

Complex Plain(double value, double /*second*/) {
    return {value, 0.0};
}

constexpr CustomSampleForm forms[] = {
    {"VOLTAGE", ElecSigType, VoltageUnit, 1, Plain},
    {"CURRENT", ElecSigType, CurrentUnit, 1, Plain},
    {"OPTICALDBM", OpSigType, VoltageUnit, 1,
     [](double dbm, double) {
         return Complex{std::sqrt(WattsFromDbm(dbm)), 0.0};
     }},
    {"OPTICALWATT", OpSigType, VoltageUnit, 1,
     [](double power, double) {
         return Complex{FieldOfPower(power), 0.0};
     }},
    {"OPTICAL_REAL_IMAG", OpSigType, VoltageUnit, 2,
     [](double re, double im) {
         return Complex{re, im};
     }},
    {"OPTICAL_AMP_PHASE", OpSigType, VoltageUnit, 2,
     [](double amplitude, double degrees) { return Polar(amplitude, degrees * radiansPerDegree); }},
    {"OPTICAL_AMP_PHASE_RAD", OpSigType, VoltageUnit, 2, Polar},
    {"OPTICAL_POWER_PHASE", OpSigType, VoltageUnit, 2,
     [](double power, double degrees) {
         return Polar(FieldOfPower(power), degrees * radiansPerDegree);
     }},
};

/// Takes a number off the front of the line; false if none stands there.
bool TakeNumber(std::string_view& line, double& value) {
    std::size_t used = 0;
    value = ReadDouble(line, &used);
    line.remove_prefix(used);
    return used > 0;
}

bool StartsWithNumber(std::string_view line) {
    double value = 0.0;
    return TakeNumber(line, value);
}

class TableReader {
  public:
    TableReader(const CustomSampleForm& form, const std::string& filename, CustomTable& table,
                const ModelReport& report)
        : form_(form), filename_(filename), table_(table), report_(report) {}

    Status Read(std::string_view text) {
        const auto lines =
            std::count_if(text.begin(), text.end(), [](char c) { return c == '\n' || c == '*'; }) +
            1;
        if (lines > maxCustomLines + 1) {
            return Refuse(0, Concat("has more than ", maxCustomLines, " lines"));
        }
        if (!Reserve(static_cast<std::int32_t>(lines))) {
            return report_.Fail(
                "Insufficient memory for dynamic allocation in Signal_Gen_Custom().\n");
        }
        LineReader reader(text, filename_);
        while (reader.Next()) {
            const Status status = ReadLine(reader.Line(), reader.LineNumber());
            if (status != Status::Success) return status;
        }
        if (table_.rows >= minCustomLines) return Status::Success;
        return Refuse(
            0, Concat("has ", table_.rows, " samples; at least ", minCustomLines, " are needed"));
    }

  private:
    Status Refuse(int line, std::string_view reason) {
        const std::string place = line > 0 ? Concat(", line ", line, ",") : "";
        return report_.Refuse("custom signal file '", filename_, "'", place, " ", reason);
    }

    bool Reserve(std::int32_t rows) {
        table_.time.reset(NewUnclearedSamples<double>(rows));
        table_.real.reset(NewUnclearedSamples<double>(rows));
        table_.imaginary.reset(NewUnclearedSamples<double>(rows));
        return table_.time && table_.real && table_.imaginary;
    }

    /// One sample, and free text after it. An asterisk ends that text, and a number behind the
    /// asterisk begins another sample.
    Status ReadLine(std::string_view line, int number) {
        for (;;) {
            double time = 0.0, first = 0.0, second = 0.0;
            const bool complete = TakeNumber(line, time) && TakeNumber(line, first) &&
                                  (form_.values == 1 || TakeNumber(line, second));
            if (!complete) {
                return Refuse(number, Concat("does not hold ", form_.values + 1, " numbers"));
            }
            const Status status = Append(time, form_.sample(first, second), number);
            if (status != Status::Success) return status;
            const std::size_t mark = line.find('*');
            if (mark == std::string_view::npos) return Status::Success;
            line.remove_prefix(mark + 1);
            if (!StartsWithNumber(line)) return Status::Success;
        }
    }

    Status Append(double time, Complex sample, int number) {
        if (!(std::isfinite(time) && std::isfinite(sample.re) && std::isfinite(sample.im))) {
            return Refuse(number, "holds a value beyond the range of numbers");
        }
        if (table_.rows > 0 && !(time > table_.time.get()[table_.rows])) {
            return Refuse(number, "is not later than the line before it");
        }
        const std::int32_t row = ++table_.rows;
        table_.time.get()[row] = time;
        table_.real.get()[row] = sample.re;
        table_.imaginary.get()[row] = sample.im;
        return Status::Success;
    }

    const CustomSampleForm& form_;
    const std::string& filename_;
    CustomTable& table_;
    const ModelReport& report_;
};

}  // namespace

const CustomSampleForm* FindCustomSampleForm(std::string_view signalType) {
    const auto* form = std::find_if(
        std::begin(forms), std::end(forms),
        [&](const CustomSampleForm& candidate) { return candidate.signalType == signalType; });
    return form == std::end(forms) ? nullptr : form;
}

Status ReadCustomTable(const CustomSampleForm& form, const std::string& filename,
                       CustomTable& table, const ModelReport& report) {
    std::string text, reason;
    if (!ReadWholeFile(filename, text, reason, maxCustomFileBytes)) {
        report.errorText += FillIn("Cannot open file: %s.\n", {filename});
        report.errorText += Concat("  component '", report.owner, "': ", reason, "\n");
        return Status::Error;
    }
    return TableReader(form, filename, table, report).Read(text);
}

}  // namespace photrak
