// The stages in physical order: package, bias point, rate equations along the drive.
#include "models/sources/direct_laser.h"

#include <algorithm>
#include <cmath>

#include "base/log.h"
#include "base/text.h"
#include "base/units.h"
#include "kernel/sample_arrays.h"
#include "models/common/sampling.h"
#include "models/sources/laser_bias.h"
#include "models/sources/laser_package.h"
#include "numeric/derivative.h"
#include "numeric/messages.h"
#include "platform/progress.h"

namespace photrak {
namespace {

constexpr std::int32_t fewestSamples = 8;

Status CheckInput(const Nodelist* input, const ModelReport& report) {
    if (input && input->sigType == ElecSigType) return Status::Success;
    return report.Fail(
        "Input signal type incorrect for the laser.\n"
        "Input signal type must be ElecSigType.\n");
}

Status MakeField(const LaserParams& params, const ElecSig& drive, Owned<OpSignal>& signal,
                 const ModelReport& report) {
    if (Make(signal, CreateOpSignalFromElec, &drive)) {
        return report.Fail("Error in creating OpSig in LaserDirectMod().\n");
    }
    signal->channels->wavelength = params.wavelength;
    signal->channels->RIN = params.RIN;
    signal->channels->domain = TimeDomain;
    return Status::Success;
}

/// The drive as the equations see it.
struct LaserDrive {
    OwnedBlock<double> data, slope;  // A, A/s; one-based
    bool folded = false;             // a current below 0 counts by its modulus
};

Status MakeDrive(const ElecSig& filtered, LaserDrive& drive, const ModelReport& report) {
    const std::int32_t n = filtered.noPoints;
    drive.data.reset(NewUnclearedSamples<double>(n));
    drive.slope.reset(NewUnclearedSamples<double>(n));
    if (!drive.data || !drive.slope) {
        ReportNoMemory(report.errorText,
                       drive.data ? "LDDirectMod() - slope" : "LDDirectMod() - data");
        return Status::Error;
    }
    double peak = 0.0, lowest = 0.0;
    for (std::int32_t i = 1; i <= n; ++i) {
        const double current = drive.data.get()[i] = Magnitude(filtered.elecSamples[i]);
        if (!std::isfinite(current)) return report.Refuse("the drive is not a finite number");
        peak = std::max(peak, current);
        lowest = std::min(lowest, filtered.elecSamples[i].re);
    }
    drive.folded = lowest < -1e-9 * peak;
    if (Derivative(drive.slope.get(), drive.data.get(), filtered.tStep, n) != 0) {
        ReportNoMemory(report.errorText, "LDDirectMod() - deriv");
        return Status::Error;
    }
    return Status::Success;
}

/// Steps the equations through all samples. The phase is taken against the steady state's frequency
/// at the bias, f0.
Status FillField(const LaserParams& params, const LaserDrive& drive, LaserState state,
                 OpSig& channel, const std::atomic<std::int16_t>& stop, bool& lifted,
                 const ModelReport& report, const OdeLimits& limits, OdeCount* count) {
    constexpr double overFourPi = 0.07957747154594767;
    const double f0 = params.a / params.taup * state.S * params.e * overFourPi;
    constexpr std::int32_t samplesPerLook = 64;
    LaserRates rates(params);
    double t = 0.0;
    for (std::int32_t i = 1; i <= channel.noPoints; ++i, t += channel.tStep) {
        if (stop.load(std::memory_order_relaxed) != 0) return Status::Warning;
        if (i % samplesPerLook == 0) NoteProgress(static_cast<double>(i) / channel.noPoints);
        rates.SetDrive(drive.data.get()[i] + params.Io, drive.slope.get()[i]);
        const Status status = Integrate(rates, params, state, t, channel.tStep, lifted,
                                        report.errorText, limits, count);
        if (status != Status::Success) return status;
        const double field = std::sqrt(state.S * params.conv);
        const double phase = state.phi - i * channel.tStep * f0 * twoPi;
        channel.Ex_samples[i] = {field * std::cos(phase), field * std::sin(phase)};
        if (!std::isfinite(channel.Ex_samples[i].re) || !std::isfinite(channel.Ex_samples[i].im)) {
            return report.Refuse("the light is not a finite number from sample ", i, " on");
        }
    }
    return Status::Success;
}

/// Tells once, at the end of an execution, that carriers had to be lifted above the gain's offset.
class LiftNote {
  public:
    LiftNote() = default;
    ~LiftNote() {
        if (lifted) LogText("Start carrier density smaller than -Ns\n");
    }
    LiftNote(const LiftNote&) = delete;
    LiftNote& operator=(const LiftNote&) = delete;

    bool lifted = false;
};

}  // namespace

Status LaserDirectMod(LaserParams params, const Nodelist* input, Nodelist* output,
                      const std::atomic<std::int16_t>& stop, const ModelReport& report,
                      const OdeLimits& limits, OdeCount* count) {
    Status status = CheckInput(input, report);
    if (status != Status::Success || !input->sig) return status;
    if (!output) return report.Refuse("no output port");
    const auto* drive = static_cast<const ElecSig*>(input->sig);
    status = CheckLaser(params, report);
    if (status == Status::Success) {
        status = CheckSampling(drive->noPoints, drive->tStep, fewestSamples, report);
    }
    if (status != Status::Success) return status;
    DeriveLaser(params);
    Owned<ElecSig> filtered;
    if (Make(filtered, CopyElecSig, drive)) {
        return report.Fail("Error in copying ElecSig in LaserDirectMod().\n");
    }
    Owned<OpSignal> signal;
    status = MakeField(params, *drive, signal, report);
    if (status != Status::Success) return status;
    ApplyPackage(params, *filtered);
    LaserDrive current;
    LaserState bias;
    LiftNote note;
    status = MakeDrive(*filtered, current, report);
    if (status == Status::Success) status = FindBias(params, stop, bias, note.lifted, report);
    if (status != Status::Success) return status;
    status = FillField(params, current, {bias.N, bias.S, 0.0}, *signal->channels, stop, note.lifted,
                       report, limits, count);
    output->sig = signal.release();
    output->sigType = OpSigType;
    if (status == Status::Success && current.folded) {
        return report.Warn("WARNING: component '", report.owner,
                           "': the drive current goes below 0 and counts by its modulus\n");
    }
    return status;
}

Status RunDirectLaser(const ModelCall& call) {
    return LaserDirectMod(ReadLaserParams(call.component.parameters), call.inputs, call.outputs,
                          call.options.stop, call);
}

}  // namespace photrak
