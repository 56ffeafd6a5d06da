// Digits of the frequency column, labels, options.
#include "results/spectrum_file.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "results/curve_file.h"

namespace photrak {
namespace {

/// What differs between the axes; in the order of SpectrumAxis.
struct AxisWords {
    std::string_view xLabel, yLabel, title;
};
constexpr AxisWords axisWords[] = {
    {"Baseband Frequency (Hz)", "Spectral Content (", " Baseband Signal Spectrum"},
    {"Wavelength (m)", "Power (", " Wavelength Spectrum"},
    {"Optical Frequency (Hz)", "Power (", " Optical Frequency Spectrum"},
};

std::string RowsText(const SpectrumFile& file) {
    constexpr std::size_t usualNumberLength = 14;  // with its blank
    const int digits = DigitsToTellApart(file.x);
    std::string rows;
    rows.reserve(file.x.size() * (file.curves.size() + 1) * usualNumberLength);
    for (std::size_t i = 0; i < file.x.size(); ++i) {
        rows += FormatSignificant(file.x[i], digits);
        for (const std::vector<double>& curve : file.curves) {
            rows += ' ';
            AppendDefault(rows, curve[i]);
        }
        rows += '\n';
    }
    return rows;
}

AxisRange RangeOfAll(const std::vector<std::vector<double>>& curves) {
    AxisRange all = RangeOf(curves.front());
    for (const std::vector<double>& curve : curves) {
        const AxisRange range = RangeOf(curve);
        all = {std::min(all.least, range.least), std::max(all.greatest, range.greatest)};
    }
    return all;
}

std::string ScriptText(const SpectrumFile& file) {
    const AxisWords& words = axisWords[static_cast<int>(file.axis)];
    std::string script;
    AppendTextLine(script, "/xl", words.xLabel);
    AppendTextLine(script, "/yl", Concat(words.yLabel, file.unit, ")"));
    AppendTextLine(script, "/tt", Concat(LabelText(file.blockName), words.title));
    script.append(curveColors).append("\n");
    if (!file.box.empty()) AppendTextLine(script, "/tb", file.box);
    script += "/ls1\n";
    if (file.arePoints) script += "/st7\n";
    script += WindowLine(RangeOf(file.x), RangeOfAll(file.curves));
    script.append(file.name).append(".frq\n");
    for (const std::string& legend : file.legends) AppendTextLine(script, "/lt", legend);
    return script += "/nx1\n";
}

}  // namespace

int DigitsToTellApart(const std::vector<double>& ascending) {
    constexpr int fewest = 6, most = 15;
    if (ascending.size() < 2) return fewest;
    double closest = ascending[1] - ascending[0];
    for (std::size_t i = 2; i < ascending.size(); ++i) {
        closest = std::min(closest, ascending[i] - ascending[i - 1]);
    }
    const double largest = std::max(std::abs(ascending.front()), std::abs(ascending.back()));
    if (!(closest > 0.0)) return most;
    const double digits = std::floor(std::log10(largest)) - std::floor(std::log10(closest)) + 1.0;
    return static_cast<int>(std::clamp<double>(digits, fewest, most));
}

Status WriteSpectrum(const SpectrumFile& file, std::string& errorText) {
    const FileResult data = WritePlotFile(file.name + ".frq", RowsText(file), errorText);
    if (data == FileResult::Refused) return Status::Error;
    if (data == FileResult::Failed) return Status::Success;
    return WriteCommandFile(file.name + ".pcf", ScriptText(file), file.mode, errorText);
}

}  // namespace photrak
