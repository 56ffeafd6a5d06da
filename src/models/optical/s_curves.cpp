// The text is read pair by pair into staging arrays of one curve's largest size.
#include "models/optical/s_curves.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "base/text.h"
#include "base/units.h"
#include "kernel/sample_arrays.h"
#include "numeric/interpolation.h"

namespace photrak {
namespace {

/// Numbers of a text, with the line on which the last one stands.
class NumberText {
  public:
    explicit NumberText(std::string_view text) : rest_(text) {}

    std::optional<double> Next() {
        Drop(std::min(rest_.find_first_not_of(" \t\n\v\f\r"), rest_.size()));
        std::size_t used = 0;
        const double value = ReadDouble(rest_, &used);
        if (used == 0) return std::nullopt;
        Drop(used);
        return value;
    }
    void SkipToLineEnd() {
        const std::size_t end = rest_.find_first_of("\n*");
        Drop(end == std::string_view::npos ? rest_.size() : end + 1);
    }
    bool AtEnd() const { return rest_.empty(); }
    int Line() const { return line_; }

  private:
    void Drop(std::size_t count) {
        line_ += static_cast<int>(std::count(rest_.data(), rest_.data() + count, '\n'));
        rest_.remove_prefix(count);
    }
    std::string_view rest_;
    int line_ = 1;
};

class SCurveReader {
  public:
    SCurveReader(std::string_view text, std::string_view fileName, const ModelReport& report)
        : numbers_(text), fileName_(fileName), report_(report) {}

    Status Read(std::string_view notStarted, SCurves& curves);

  private:
    Status ReadLine(bool& closed);
    Status Begin(double inputPower);
    Status AddPoint(double wavelength, double value);
    Status Finish();

    Status Refuse(std::string_view reason) {
        return report_.Fail("ERROR: ", fileName_, ":", line_, ": ", reason, "\n");
    }
    Status OutOfMemory() { return report_.Fail("OpticalAmplifier: Error creating S curve data\n"); }

    NumberText numbers_;
    std::string_view fileName_;
    const ModelReport& report_;
    SCurves curves_;
    int line_ = 1;
    std::int32_t count_ = 0;  // points of the curve at hand
    OwnedBlock<double> wavelength_, value_;
};

Status SCurveReader::Begin(double inputPower) {
    if (!curves_.empty()) {
        const Status status = Finish();
        if (status != Status::Success) return status;
    }
    if (curves_.size() == maxCurves) {
        return Refuse(Concat("more than ", maxCurves, " curves"));
    }
    curves_.emplace_back().inputPower = inputPower;
    count_ = 0;
    return Status::Success;
}

Status SCurveReader::AddPoint(double wavelength, double value) {
    if (count_ == maxCurvePoints) {
        return Refuse(Concat("more than ", maxCurvePoints, " points in a curve"));
    }
    if (count_ > 0 && !(wavelength > wavelength_.get()[count_])) {
        return Refuse(Concat("wavelength ", wavelength, " is not above the one before"));
    }
    ++count_;
    wavelength_.get()[count_] = wavelength;
    value_.get()[count_] = value;
    return Status::Success;
}

/// Gives the last curve the points read since it began.
Status SCurveReader::Finish() {
    if (count_ == 0) return Refuse("the curve before has no points");
    SCurve& curve = curves_.back();
    double *wavelength = nullptr, *value = nullptr;
    const bool copied = CopySamples(wavelength, wavelength_.get(), count_);
    curve.wavelength.reset(wavelength);
    if (!copied || !CopySamples(value, value_.get(), count_)) return OutOfMemory();
    curve.value.reset(value);
    curve.count = count_;
    return Status::Success;
}

Status SCurveReader::ReadLine(bool& closed) {
    const std::optional<double> first = numbers_.Next();
    line_ = numbers_.Line();
    if (!first && numbers_.AtEnd()) {
        return Refuse("the file ends without its closing line, a number below 0");
    }
    closed = first && *first < 0.0;
    if (closed) return Finish();
    const std::optional<double> second = first ? numbers_.Next() : std::nullopt;
    if (!second) return Refuse("two numbers must stand here");
    if (!std::isfinite(*first) || !std::isfinite(*second)) {
        return Refuse("a number is out of range");
    }
    numbers_.SkipToLineEnd();
    return *first == 0.0 ? Begin(*second) : AddPoint(*first, *second);
}

Status SCurveReader::Read(std::string_view notStarted, SCurves& curves) {
    NumberText ahead = numbers_;
    if (ahead.Next() != 0.0) {
        return report_.Fail(FillIn(notStarted, {fileName_}));
    }
    wavelength_.reset(NewSamples<double>(maxCurvePoints));
    value_.reset(NewSamples<double>(maxCurvePoints));
    if (!wavelength_ || !value_) return OutOfMemory();
    for (bool closed = false; !closed;) {
        const Status status = ReadLine(closed);
        if (status != Status::Success) return status;
    }
    curves = std::move(curves_);
    return Status::Success;
}

double CurveValue(const SCurve& curve, double x) {
    const double *wavelength = curve.wavelength.get(), *value = curve.value.get();
    if (!(x > wavelength[1])) return value[1];
    if (x >= wavelength[curve.count]) return value[curve.count];
    double y = 0.0, error = 0.0;
    PolyInt4(x, wavelength, value, curve.count, &y, &error);
    return y;
}

}  // namespace

Status ReadSCurves(std::string_view text, std::string_view fileName, std::string_view notStarted,
                   SCurves& curves, const ModelReport& report) {
    return SCurveReader(text, fileName, report).Read(notStarted, curves);
}

SCurvePair ChooseSCurves(const SCurves& curves, double inputPower) {
    SCurvePair pair;
    // By design: watts meet the dBm of the file here. While all powers of a file are below
    // 0 dBm that makes the strongest curve count, alone.
    for (const SCurve& curve : curves) {
        const double power = curve.inputPower;
        if (power <= inputPower && (!pair.lo || power > pair.lo->inputPower)) pair.lo = &curve;
        if (power >= inputPower && (!pair.hi || power < pair.hi->inputPower)) pair.hi = &curve;
    }
    if (!pair.lo) pair.lo = pair.hi;
    if (!pair.hi) pair.hi = pair.lo;
    if (pair.hi != pair.lo && inputPower > 0.0) {  // darkness has no dBm: the lower curve counts
        const double dBm = DbmFromWatts(inputPower);
        pair.toHi = (dBm - pair.lo->inputPower) / (pair.hi->inputPower - pair.lo->inputPower);
    }
    return pair;
}

double SCurveValue(const SCurvePair& pair, double wavelength) {
    const double v1 = CurveValue(*pair.lo, wavelength);
    if (pair.hi == pair.lo) return v1;
    return pair.toHi * (CurveValue(*pair.hi, wavelength) - v1) + v1;
}

}  // namespace photrak
