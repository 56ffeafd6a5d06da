// Lines, limits and options of the curve.
#include "results/ber_curve.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "results/curve_file.h"

namespace photrak {
namespace {

constexpr std::string_view curveTitle = "BER Graph", curveLabel = "BER";
constexpr std::string_view notComputed = ". ";  // which the viewer skips
constexpr double lowerMargin = 0.1, upperMargin = 10.0;

/// The axes of the plot.
struct Limits {
    AxisRange x{}, y{};
    bool logarithmic = true;
    bool given = false;  // they differ from those of the data
};

AxisRange RangeOf(const std::vector<double>& values) {
    const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
    return {*least, *greatest};
}

/// Rates above 0 set the lower limit, all that are known the upper one.
AxisRange RangeOfRates(const std::vector<double>& rates, bool& anyZero) {
    AxisRange range{0.0, 0.0};
    for (const double rate : rates) {
        if (rate == 0.0) anyZero = true;
        if (!(rate > 0.0)) continue;
        range.least = range.least == 0.0 ? rate : std::min(range.least, rate);
        range.greatest = std::max(range.greatest, rate);
    }
    return range;
}

Limits LimitsOf(const std::vector<double>& innerValues, const std::vector<double>& rates) {
    Limits limits;
    bool anyZero = false;
    limits.x = RangeOf(innerValues);
    limits.y = RangeOfRates(rates, anyZero);
    if (limits.x.IsFlat() && !limits.y.IsFlat()) {
        limits.x = WidenedRange(limits.x.least);
        limits.given = true;
    }
    if (limits.y.greatest == 0.0) {
        limits.y = {-10.0, 10.0};
        limits.logarithmic = false;
        limits.given = true;
    } else if (limits.y.greatest < upperMargin * limits.y.least) {
        limits.y = {lowerMargin * limits.y.least, upperMargin * limits.y.greatest};
        limits.given = true;
    }
    // Among other points of its curve a rate of 0 just goes missing; a curve of that point alone
    // would be empty on a logarithmic axis.
    if (anyZero && innerValues.size() > 1) limits.given = true;
    if (anyZero && innerValues.size() == 1) limits.logarithmic = false;
    return limits;
}

/// The powers of ten around rates; a rate has one from 1e-323 on, and limits around 0 have none.
AxisRange Decades(AxisRange rates) {
    constexpr double least = -323.0;
    if (rates.least < 0.0) return rates;
    return {std::pow(10.0, std::max(std::floor(std::log10(rates.least)), least)),
            std::pow(10.0, std::max(std::ceil(std::log10(rates.greatest)), least))};
}

/// "X0,X1,Y0,Y1"; flat limits in x are left open.
std::string WindowText(AxisRange x, AxisRange y) {
    const std::string ends = x.IsFlat() ? "," : Concat(x.least, ',', x.greatest);
    return Concat("/w", ends, ',', y.least, ',', y.greatest, '\n');
}

}  // namespace

BerCurve::BerCurve(std::string innerName, std::vector<double> innerValues, std::string outerName,
                   std::vector<double> outerValues)
    : innerName_(std::move(innerName)),
      outerName_(std::move(outerName)),
      innerValues_(std::move(innerValues)),
      outerValues_(std::move(outerValues)),
      BER_(innerValues_.size() * outerValues_.size(), -1.0),
      lines_(innerValues_.size()),
      stale_(innerValues_.size(), true) {}

void BerCurve::Set(std::size_t inner, std::size_t outer, double BER) {
    double& place = BER_[outer * innerValues_.size() + inner];
    if (place == BER) return;
    place = BER;
    stale_[inner] = true;
}

std::string BerCurve::Line(std::size_t inner) const {
    std::string line = FormatDefault(innerValues_[inner]);
    for (std::size_t outer = 0; outer < outerValues_.size(); ++outer) {
        if (line.back() != ' ') line.push_back(' ');
        const double BER = BER_[outer * innerValues_.size() + inner];
        line += BER < 0.0 ? std::string(notComputed) : FormatDefault(BER);
    }
    line.push_back('\n');
    return line;
}

const std::vector<std::string>& BerCurve::Lines() {
    for (std::size_t inner = 0; inner < lines_.size(); ++inner) {
        if (stale_[inner]) lines_[inner] = Line(inner);
        stale_[inner] = false;
    }
    return lines_;
}

std::string BerCurve::Script(std::string_view dataFile) const {
    const bool onePoint = innerValues_.size() == 1, oneCurve = outerValues_.size() == 1;
    const Limits limits = LimitsOf(innerValues_, BER_);
    const AxisRange y = Decades(limits.y);
    std::string script;
    AppendTextLine(script, "/tt", curveTitle);
    AppendTextLine(script, "/xl",
                   onePoint ? std::string("Single BER Result") : LabelText(innerName_));
    AppendTextLine(script, "/yl", curveLabel);
    script += oneCurve ? "/lc2\n/ls1\n" : "/l\n";
    script += onePoint ? "/st7\n" : "/st\n";
    if (limits.given) script += WindowText(limits.x, y);
    if (limits.logarithmic) {
        script += Concat(oneCurve ? "/ly2 " : "/ly ", y.least, ',', y.greatest, '\n');
    }
    script += Concat(dataFile, '\n');
    for (const double value : outerValues_) {
        if (outerName_.empty()) break;
        AppendTextLine(script, "/lt", Concat(LabelText(outerName_), " = ", value));
    }
    return script += "/nx1\n";
}

Status WriteBerCurve(const std::string& root, BerCurve& curve, PlotMode mode,
                     std::string& errorText) {
    const std::string name = root + ".ber";
    std::string text;
    for (const std::string& line : curve.Lines()) text += line;
    const FileResult data = WritePlotFile(name, text, errorText);
    if (data == FileResult::Refused) return Status::Error;
    if (data == FileResult::Failed) return Status::Success;
    return WriteCommandFile(root + ".pcb", curve.Script(name), mode, errorText);
}

}  // namespace photrak
