// Resampling of the file's table, the doubts about it, and the decision on the bits.
#include "models/sources/custom_signal.h"

#include <cmath>
#include <vector>

#include "base/text.h"
#include "kernel/sample_arrays.h"
#include "models/sources/custom_table.h"
#include "models/sources/drive_signal.h"
#include "numeric/interpolation.h"
#include "platform/stop_point.h"

namespace photrak {
namespace {

constexpr ParamRow<CustomSignalParams> rows[] = {
    {"signalType", &CustomSignalParams::signalType, "VOLTAGE",
     Words{"VOLTAGE CURRENT OPTICALDBM OPTICALWATT OPTICAL_REAL_IMAG OPTICAL_AMP_PHASE "
           "OPTICAL_AMP_PHASE_RAD OPTICAL_POWER_PHASE"}},
    {"filename", &CustomSignalParams::filename, ""},
    {"bitRate", &CustomSignalParams::bitRate, 1e10, Range::Positive},
    {"pointsPerBit", &CustomSignalParams::pointsPerBit, 32},
    {"patternLength", &CustomSignalParams::patternLength, 128},
    {"wavelength", &CustomSignalParams::wavelength, 1.55e-6}};

/// The samples of either kind of signal.
struct SampleView {
    Complex* samples;  // one-based
    std::int32_t noPoints;
    double startTime, tStep;  // s
};

/// Interpolated samples whose error estimate reaches their size. A few are told one by one, many by
/// the first of them and their number.
class Doubts {
  public:
    void Add(double time, Complex sample, double error) {
        constexpr std::size_t mostTold = 10;
        ++count_;
        if (texts_.size() >= mostTold) return;
        const bool beyondUnit = Magnitude(sample) + 1.0 <= std::fabs(error);
        constexpr double picosecondsPerSecond = 1e12;
        texts_.push_back(Concat("Warning: Error exceeds 100 percent while interpolate current ",
                                beyondUnit ? "elecSamples" : "input", "!\nt=",
                                time * picosecondsPerSecond, "ps, real input = ", sample.re,
                                ", imag input = ", sample.im, ", error = ", error, "\n"));
    }

    Status Report(const ModelReport& report) const {
        if (count_ == 0) return Status::Success;
        if (count_ == texts_.size()) {
            for (const std::string& text : texts_) report.errorText += text;
            return Status::Warning;
        }
        report.errorText += texts_.front();
        report.errorText +=
            Concat("component '", report.owner, "': this concerns ", count_, " samples\n");
        return Status::Warning;
    }

  private:
    std::size_t count_ = 0;
    std::vector<std::string> texts_;
};

/// True if the four points of the interpolation keep apart when seen from t: their distances may be
/// lost in rounding far outside of the table.
bool PointsKeepApart(const CustomTable& table, double t) {
    const double* time = table.time.get();
    const int start = WindowOfFour(time, table.rows, t);
    for (int i = start; i < start + 3; ++i) {
        if ((time[i] - t) - (time[i + 1] - t) == 0.0) return false;
    }
    return true;
}

Status Resample(const CustomSignalParams& params, const CustomTable& table, const SampleView& view,
                const ModelReport& report) {
    Doubts doubts;
    const double first = table.time.get()[1];
    for (std::int32_t i = 1; i <= view.noPoints; ++i) {
        LookForStop(i);
        const double t = first + (i - 1) * view.tStep;
        if (!PointsKeepApart(table, t)) {
            return report.Refuse("the times of '", params.filename,
                                 "' lie too close for the time step ", view.tStep, " s");
        }
        Complex& sample = view.samples[i];
        double realError = 0.0, imaginaryError = 0.0;
        PolyInt4(t, table.time.get(), table.real.get(), table.rows, &sample.re, &realError);
        PolyInt4(t, table.time.get(), table.imaginary.get(), table.rows, &sample.im,
                 &imaginaryError);
        if (!std::isfinite(sample.re) || !std::isfinite(sample.im)) {
            return report.Refuse("the interpolation of '", params.filename,
                                 "' leaves the range of numbers at ", t, " s");
        }
        const double error =
            std::fabs(imaginaryError) > std::fabs(realError) ? imaginaryError : realError;
        if (error != 0.0 && Magnitude(sample) <= std::fabs(error)) doubts.Add(t, sample, error);
    }
    return doubts.Report(report);
}

/// Bits by the middle sample of each against the middle between the extremes.
void DecideBits(const CustomSignalParams& params, const SampleView& view, BinSig& bits) {
    double high = -100000.0, low = 100000.0;
    // By design: the extremes are found by the real part, and hold the magnitude.
    for (std::int32_t i = 1; i <= view.noPoints; ++i) {
        const Complex sample = view.samples[i];
        if (sample.re > high) high = Magnitude(sample);
        if (sample.re < low) low = Magnitude(sample);
    }
    const double threshold = (high + low) / 2.0;
    bits.bitSequence[0] = 0;
    for (std::int32_t k = 1; k <= bits.noPoints; ++k) {
        const std::int32_t middle = params.pointsPerBit / 2 + 1 + (k - 1) * params.pointsPerBit;
        bits.bitSequence[k] = Magnitude(view.samples[middle]) > threshold ? 1 : 0;
    }
}

Status MakeBits(const CustomSignalParams& params, const SampleView& view, Owned<BinSig>& bits,
                const ModelReport& report) {
    if (Make(bits, CreateBinSig, params.patternLength)) {
        return report.Fail("Error in creating Binary Signal in Signal_Gen_Custom().\n");
    }
    bits->bitRate = params.bitRate;
    bits->startTime = view.startTime;
    DecideBits(params, view, *bits);
    return Status::Success;
}

Status CheckSettings(const CustomSignalParams& params, const CustomSampleForm& form,
                     std::int32_t& noPoints, const ModelReport& report) {
    Status status = CheckParams(rows, params, report);
    if (status == Status::Success && form.sigType == OpSigType) {
        status = CheckRange(report, "wavelength", params.wavelength, Range::Positive);
    }
    if (status != Status::Success) return status;
    const bool counts = params.pointsPerBit > 0 && params.patternLength > 0 &&
                        SampleCount(params.patternLength, params.pointsPerBit, noPoints) &&
                        noPoints <= maxDriveSamples;
    const double tStep = 1.0 / (params.pointsPerBit * params.bitRate);
    if (counts && tStep > 0.0 && std::isfinite(tStep)) return Status::Success;
    return report.Refuse(params.patternLength, " bits of ", params.pointsPerBit, " samples at ",
                         params.bitRate, " bit/s make no signal of 1 to ", maxDriveSamples,
                         " samples");
}

/// Fields that both kinds of waveform have under the same names.
template <class Wave>
void SetGrid(const CustomSignalParams& params, const CustomTable& table, Wave& wave) {
    wave.tStep = 1.0 / (params.pointsPerBit * params.bitRate);
    wave.bitRate = params.bitRate;
    wave.patternLength = params.patternLength;
    wave.startTime = table.time.get()[1];
}

/// The waveform, of zeros, and a view of its samples.
struct CustomWave {
    Owned<ElecSig> electrical;
    Owned<OpSignal> optical;
    SampleView view{};
};

Status MakeWave(const CustomSignalParams& params, const CustomSampleForm& form,
                const CustomTable& table, std::int32_t noPoints, CustomWave& wave,
                const ModelReport& report) {
    if (form.sigType == ElecSigType) {
        if (Make(wave.electrical, CreateElecSig, noPoints)) {
            return report.Fail("Error in creating ElecSig in Signal_Gen_Custom().\n");
        }
        ElecSig& sig = *wave.electrical;
        sig.UnitType = static_cast<std::int16_t>(form.unitType);
        SetGrid(params, table, sig);
        wave.view = {sig.elecSamples, noPoints, sig.startTime, sig.tStep};
        return Status::Success;
    }
    if (Make(wave.optical, CreateOpSignalWithSig, noPoints)) {
        return report.Fail("Error in creating OpSig in Signal_Gen_Custom().\n");
    }
    OpSig& sig = *wave.optical->channels;
    sig.wavelength = params.wavelength;
    SetGrid(params, table, sig);
    wave.view = {sig.Ex_samples, noPoints, sig.startTime, sig.tStep};
    return Status::Success;
}

}  // namespace

std::vector<ParamSpec> CustomSignalParamSpecs() {
    return SpecsOf(rows);
}

CustomSignalParams ReadCustomSignalParams(Parameter* parameters) {
    CustomSignalParams params;
    ReadParams(rows, parameters, params);
    return params;
}

Status Signal_Gen_Custom(const CustomSignalParams& params, Nodelist* outputs,
                         const ModelReport& report) {
    const CustomSampleForm* form = FindCustomSampleForm(params.signalType);
    if (!form) {
        return report.Fail(FillIn("ERROR: signal type of component %s invalid\n", {report.owner}));
    }
    if (!outputs) return report.Refuse("no output port");
    std::int32_t noPoints = 0;
    CustomTable table;
    Status status = CheckSettings(params, *form, noPoints, report);
    if (status == Status::Success) {
        status = ReadCustomTable(*form, params.filename, table, report);
    }
    CustomWave wave;
    if (status == Status::Success) {
        status = MakeWave(params, *form, table, noPoints, wave, report);
    }
    if (status == Status::Success) status = Resample(params, table, wave.view, report);
    if (status == Status::Error) return status;
    Owned<BinSig> bits;
    if (MakeBits(params, wave.view, bits, report) != Status::Success) return Status::Error;

    outputs->sigType = form->sigType;
    outputs->sig = form->sigType == ElecSigType ? static_cast<void*>(wave.electrical.release())
                                                : static_cast<void*>(wave.optical.release());
    if (Nodelist* second = outputs->next) {
        second->sigType = BinSigType;
        second->sig = bits.release();
    }
    return status;
}

Status RunCustomSignal(const ModelCall& call) {
    return Signal_Gen_Custom(ReadCustomSignalParams(call.component.parameters), call.outputs, call);
}

}  // namespace photrak
