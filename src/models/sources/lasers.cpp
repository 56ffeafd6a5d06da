// Time scales and envelopes of the pulse shapes as a table, the walk of the pulse through the slots
// of a train, and the channel both lasers make.
#include "models/sources/lasers.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "base/text.h"
#include "base/units.h"
#include "numeric/roots.h"
#include "platform/stop_point.h"

namespace photrak {
namespace {

Status CheckExponent(std::string_view name, std::int32_t exponent, const ModelReport& report) {
    if (exponent >= 0 && exponent <= maxLaserExponent) return Status::Success;
    return report.RefuseValue(name, exponent,
                              Concat("an exponent of 2 from 0 to ", maxLaserExponent));
}

/// A signal of one channel, all zeros. Both lasers report under one name.
Status MakeSignal(Owned<OpSignal>& signal, std::int32_t n, const ModelReport& report) {
    if (Make(signal, CreateOpSignalWithSig, n)) {
        return report.Fail("Error in creating OpSig in LaserCW().\n");
    }
    return Status::Success;
}

void Store(Owned<OpSignal> signal, Nodelist* output) {
    output->sig = signal.release();
    output->sigType = OpSigType;
}

Status CheckOutput(const Nodelist* output, const ModelReport& report) {
    if (output) return Status::Success;
    return report.Refuse("no output port");
}

// --- Constant field ---

constexpr ParamRow<CwLaserParams> cwRows[] = {
    {"peakPower", &CwLaserParams::peakPower, 2e-3, Range::NotNegative},
    {"wavelength", &CwLaserParams::wavelength, 1.55e-6, Range::Positive},
    {"RIN", &CwLaserParams::RIN, -150.0, Range::NotNegative, ParamUnit::PowerDecibels},
    {"k", NoEffect{}, 0.0},
    {"delta", NoEffect{}, 0.0},
    {"signalType", &CwLaserParams::signalType, "CW", Words{"CW TimeSequence"}},
    {"noSamples", &CwLaserParams::noSamples, 12},
    {"timeStep", &CwLaserParams::timeStep, 3.125e-12},
    {"phase", &CwLaserParams::phase, 0.0, Range::Finite, ParamUnit::Degrees}};

/// Number of samples; with one of them there is no spacing to check.
Status CountSamples(const CwLaserParams& params, std::int32_t& n, const ModelReport& report) {
    n = 1;
    if (params.signalType != "TimeSequence") return Status::Success;
    const Status exponent = CheckExponent("noSamples", params.noSamples, report);
    if (exponent != Status::Success) return exponent;
    n = std::int32_t{1} << params.noSamples;
    if (n == 1) return Status::Success;
    return CheckRange(report, "timeStep", params.timeStep, Range::Positive);
}

// --- Pulses ---

constexpr ParamRow<ModeLockedLaserParams> pulseRows[] = {
    {"type", &ModeLockedLaserParams::type, "gaussian",
     Words{"gaussian supGaussian sech raisedCosAmp raisedCosPow on_off"}},
    {"pattern", &ModeLockedLaserParams::pattern, "Periodic", Words{"Periodic Single"}},
    {"repRate", &ModeLockedLaserParams::repRate, 1e10, Range::Positive},
    {"patternLength", &ModeLockedLaserParams::patternLength, 7},
    {"pointsPerBit", &ModeLockedLaserParams::pointsPerBit, 5},
    {"peakPower", &ModeLockedLaserParams::peakPower, 1e-3, Range::NotNegative},
    {"wavelength", &ModeLockedLaserParams::wavelength, 1.55e-6, Range::Positive},
    {"RIN", &ModeLockedLaserParams::RIN, -150.0, Range::NotNegative, ParamUnit::PowerDecibels},
    {"k", NoEffect{}, 0.0},
    {"delta", NoEffect{}, 0.0},
    {"width", &ModeLockedLaserParams::width, 20e-12, Range::Positive},
    {"ChirpFactor", &ModeLockedLaserParams::ChirpFactor, 0.0},
    {"phaseShift", &ModeLockedLaserParams::phaseShift, 0.0}};
constexpr ParamRow<ModeLockedLaserParams> rampRows[] = {
    {"riseTime", &ModeLockedLaserParams::riseTime, 5e-12, Range::NotNegative},
    {"fallTime", &ModeLockedLaserParams::fallTime, 5e-12, Range::NotNegative}};

/// A pulse around its center.
struct Pulse {
    double peak;                // field, sqrt(W)
    double width;               // as the user gives it, s
    double riseTime, fallTime;  // s
    double T = 0.0;             // time scale of the shape, s
    double exponent = 0.0;      // super-Gaussian: power falls as exp(-(|tau| / T)^exponent)
};

// By design: "width" is not one definition. It is the full width at half height of the
// field for "gaussian", of the power for "supGaussian" and both raised cosines, 3.35 time scales
// for "sech". Links are tuned to these numbers.
constexpr double gaussianWidth = 2.3548200450309493;  // 2 sqrt(2 ln 2)
constexpr double sechWidth = 3.3468106480569846;

void SetSuperGaussianScale(Pulse& pulse) {
    constexpr double least = 1.0, greatest = 25.0, tolerance = 1e-10;
    pulse.exponent =
        SuperGaussianOrder(2.0 * pulse.riseTime / pulse.width, least, greatest, tolerance);
    pulse.T = 0.5 * pulse.width * std::pow(std::numbers::ln2, -1.0 / pulse.exponent);
}

void SetRaisedCosineScale(Pulse& pulse) {
    pulse.T = pulse.width * pi / (2.0 * std::acos(std::numbers::sqrt2 - 1.0));
}

double Gaussian(const Pulse& pulse, double tau) {
    const double x = tau / pulse.T;
    return pulse.peak * std::exp(-0.5 * x * x);
}

double SuperGaussian(const Pulse& pulse, double tau) {
    return pulse.peak * std::exp(-0.5 * std::pow(std::fabs(tau) / pulse.T, pulse.exponent));
}

double HyperbolicSecant(const Pulse& pulse, double tau) {
    return pulse.peak / std::cosh(tau / pulse.T);
}

/// Between 0 and 1, 0 beyond one time scale.
double RaisedCosine(const Pulse& pulse, double tau) {
    if (std::fabs(tau) > pulse.T) return 0.0;
    return 0.5 * (1.0 + std::cos(pi * tau / pulse.T));
}

/// Flat top with ramps that are linear in power; the ramps' middles are one width apart. A ramp of
/// no duration is a sharp edge.
double OnOff(const Pulse& pulse, double tau) {
    const double sinceStart = tau + 0.5 * (pulse.width + pulse.riseTime);
    const double untilEnd = 0.5 * (pulse.width + pulse.fallTime) - tau;
    if (sinceStart < 0.0 || untilEnd < 0.0) return 0.0;
    if (sinceStart < pulse.riseTime) return pulse.peak * std::sqrt(sinceStart / pulse.riseTime);
    if (untilEnd < pulse.fallTime) return pulse.peak * std::sqrt(untilEnd / pulse.fallTime);
    return pulse.peak;
}

struct PulseShape {
    std::string_view type;
    void (*setScale)(Pulse& pulse);                   // fills T and what else the shape needs
    double (*field)(const Pulse& pulse, double tau);  // sqrt(W) at the time tau from the center
};
constexpr PulseShape pulseShapes[] = {
    {"gaussian", [](Pulse& pulse) { pulse.T = pulse.width / gaussianWidth; }, Gaussian},
    {"supGaussian", SetSuperGaussianScale, SuperGaussian},
    {"sech", [](Pulse& pulse) { pulse.T = pulse.width / sechWidth; }, HyperbolicSecant},
    {"raisedCosAmp", SetRaisedCosineScale,
     [](const Pulse& pulse, double tau) { return pulse.peak * RaisedCosine(pulse, tau); }},
    {"raisedCosPow", [](Pulse& pulse) { pulse.T = pulse.width; },
     [](const Pulse& pulse, double tau) {
         return pulse.peak * std::sqrt(RaisedCosine(pulse, tau));
     }},
    {"on_off", [](Pulse& pulse) { pulse.T = pulse.width; }, OnOff},
};

Status FindShape(const std::string& type, const PulseShape*& shape, const ModelReport& report) {
    shape = std::find_if(std::begin(pulseShapes), std::end(pulseShapes),
                         [&](const PulseShape& row) { return row.type == type; });
    if (shape != std::end(pulseShapes)) return Status::Success;
    return report.Fail(
        FillIn("Incorrect mode-locked laser pulse type: %s.\n\nAllowed types are: \n"
               "gaussian, supGaussian, sech, raisedCosAmp, raisedCosPow and on_off.\n",
               {type}));
}

Status CheckRamps(const ModeLockedLaserParams& params, const ModelReport& report) {
    if (!(params.width < (params.riseTime + params.fallTime) / 2.0)) return Status::Success;
    constexpr double picoseconds = 1e12;
    return report.Fail("Error: on_off type mode-locked laser pulseWidth<(riseTime+fallTime)/2.\n",
                       "Pulse width=", params.width * picoseconds,
                       " ps, rise time=", params.riseTime * picoseconds,
                       " ps, fall time=", params.fallTime * picoseconds, " ps\n");
}

/// Values that the samples depend on; the exponents also together, since they make one array.
Status CheckPulses(const ModeLockedLaserParams& params, const ModelReport& report) {
    Status status = CheckParams(pulseRows, params, report);
    if (status == Status::Success && params.type == "on_off") {
        status = CheckParams(rampRows, params, report);
    }
    if (status == Status::Success) {
        status = CheckExponent("patternLength", params.patternLength, report);
    }
    if (status == Status::Success) {
        status = CheckExponent("pointsPerBit", params.pointsPerBit, report);
    }
    if (status != Status::Success) return status;
    if (params.pointsPerBit + params.patternLength <= maxLaserExponent) return Status::Success;
    return report.RefuseValue("pointsPerBit", params.pointsPerBit,
                              Concat("at most ", maxLaserExponent - params.patternLength,
                                     " with 'patternLength' ", params.patternLength));
}

Status SetTiming(const ModeLockedLaserParams& params, OpSig& channel, const ModelReport& report) {
    const double pointsPerBit = std::exp2(params.pointsPerBit);
    channel.wavelength = params.wavelength;
    channel.RIN = params.RIN;
    channel.bitRate = params.repRate;
    // Drive signals are compared with this exactly: the expression has to stay as it is.
    channel.tStep = 1.0 / (pointsPerBit * params.repRate);
    channel.patternLength = std::int32_t{1} << params.patternLength;
    if (std::isfinite(1.0 / channel.tStep) && std::isfinite(channel.tStep)) return Status::Success;
    return report.RefuseValue("repRate", params.repRate, "within the range of a time step");
}

/// Only the pulse of the present slot counts: tails of neighbors are not added.
void FillPulses(const ModeLockedLaserParams& params, const PulseShape& shape, const Pulse& pulse,
                OpSig& channel) {
    const bool single = params.pattern == "Single";
    const double period = 1.0 / params.repRate;
    const std::int32_t middle = channel.noPoints / 2;
    double center = single ? middle * channel.tStep : 0.5 * period;
    double slotEnd = center + 0.5 * period;
    double phase = single ? 0.0 : 0.5 * params.phaseShift;
    double t = 0.0;
    std::int32_t slot = 1;
    for (std::int32_t i = 1; i <= channel.noPoints; ++i, t += channel.tStep) {
        // By design: the train never moves on into its last slot, which only sees the tail
        // of the pulse before it.
        if (!single && t > slotEnd && slot < channel.patternLength - 1) {
            center += period;
            slotEnd += period;
            phase = -phase;
            ++slot;
        }
        LookForStop(i);
        const double tau = t - center;
        const double field = shape.field(pulse, tau);
        if (field == 0.0) continue;
        const double x = tau / pulse.T;
        const double angle = phase - 0.5 * params.ChirpFactor * x * x;
        channel.Ex_samples[i] = {field * std::cos(angle), field * std::sin(angle)};
    }
}

}  // namespace

std::vector<ParamSpec> CwLaserParamSpecs() {
    return SpecsOf(cwRows);
}

std::vector<ParamSpec> ModeLockedLaserParamSpecs() {
    return SpecsOf(pulseRows, rampRows);
}

CwLaserParams ReadCwLaserParams(Parameter* parameters) {
    CwLaserParams params;
    ReadParams(cwRows, parameters, params);
    return params;
}

ModeLockedLaserParams ReadModeLockedLaserParams(Parameter* parameters) {
    ModeLockedLaserParams params;
    ReadParams(pulseRows, parameters, params);
    ReadParams(rampRows, parameters, params);
    return params;
}

Status LaserCW(const CwLaserParams& params, Nodelist* output, const ModelReport& report) {
    std::int32_t n = 0;
    Owned<OpSignal> signal;
    if (CheckOutput(output, report) != Status::Success ||
        CheckParams(cwRows, params, report) != Status::Success ||
        CountSamples(params, n, report) != Status::Success ||
        MakeSignal(signal, n, report) != Status::Success) {
        return Status::Error;
    }
    OpSig& channel = *signal->channels;
    channel.wavelength = params.wavelength;
    channel.RIN = params.RIN;
    // A step of 0 marks the level that later blocks stretch to whatever grid they work on.
    if (n > 1) channel.tStep = params.timeStep;
    const double field = std::sqrt(params.peakPower), angle = params.phase;
    std::fill_n(channel.Ex_samples + 1, n,
                MakeComplex(field * std::cos(angle), field * std::sin(angle)));
    Store(std::move(signal), output);
    return Status::Success;
}

Status LaserModeLocked(const ModeLockedLaserParams& params, Nodelist* output,
                       const ModelReport& report) {
    const PulseShape* shape = nullptr;
    Owned<OpSignal> signal;
    if (CheckOutput(output, report) != Status::Success ||
        FindShape(params.type, shape, report) != Status::Success ||
        CheckPulses(params, report) != Status::Success ||
        MakeSignal(signal, std::int32_t{1} << (params.pointsPerBit + params.patternLength),
                   report) != Status::Success) {
        return Status::Error;
    }
    OpSig& channel = *signal->channels;
    if (SetTiming(params, channel, report) != Status::Success) return Status::Error;
    if (params.type == "on_off" && CheckRamps(params, report) != Status::Success) {
        // By design: what was made so far stays in the port.
        Store(std::move(signal), output);
        return Status::Error;
    }
    Pulse pulse{std::sqrt(params.peakPower), params.width, params.riseTime, params.fallTime};
    shape->setScale(pulse);
    FillPulses(params, *shape, pulse, channel);
    Store(std::move(signal), output);
    return Status::Success;
}

Status RunCwLaser(const ModelCall& call) {
    return LaserCW(ReadCwLaserParams(call.component.parameters), call.outputs, call);
}

Status RunModeLockedLaser(const ModelCall& call) {
    return LaserModeLocked(ReadModeLockedLaserParams(call.component.parameters), call.outputs,
                           call);
}

}  // namespace photrak
