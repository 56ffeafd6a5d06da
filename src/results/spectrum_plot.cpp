// The block in its order: signals, axis, filter, levels, files. Numerics are in power_spectrum,
// osa_filter and levels.
#include "results/spectrum_plot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include "base/text.h"
#include "base/units.h"
#include "numeric/fft.h"
#include "numeric/sliding_sum.h"
#include "platform/stop_point.h"
#include "platform/workers.h"
#include "results/curve_file.h"
#include "results/levels.h"
#include "results/osa_filter.h"
#include "results/power_spectrum.h"
#include "results/spectrum_file.h"
#include "results/spectrum_params.h"
#include "results/trace_plot.h"

namespace photrak {
namespace {

// --- The signals ---

struct Spectra {
    const SpectrumParams& params;
    const PlotStart& plot;
    const ModelReport& report;
    TraceSet traces{};
    SpectrumAxis axis = SpectrumAxis::Baseband;
    double df = 0.0;                       // Hz; 0 for levels in one sample
    double shortest = 0.0, longest = 0.0;  // wavelengths, m

    bool IsDensity() const {
        return axis != SpectrumAxis::Baseband && traces.noPoints > 1 &&
               params.PowerUnits == "dBm/Hz";
    }
};

/// Every noise record of the inputs that has points, in their order.
template <class Visit>
void ForEachNoise(const PlotStart& plot, Visit visit) {
    for (const Nodelist& cell : Items<const Nodelist>(plot.signals.get())) {
        if (!cell.sig || cell.sigType != OpSigType) continue;
        for (const OpSigASE& record : Items(static_cast<const OpSignal*>(cell.sig)->noise)) {
            if (record.noPoints > 0) visit(record);
        }
    }
}

Status CheckWavelengths(Spectra& spectra) {
    spectra.shortest = spectra.longest = spectra.traces.main.front().channel->wavelength;
    for (const Trace& trace : spectra.traces.main) {
        const double wavelength = trace.channel->wavelength;
        if (!(wavelength > 0.0) || !std::isfinite(lightSpeed / wavelength)) {
            return spectra.report.Refuse("a channel has the wavelength ", wavelength, " m");
        }
        spectra.shortest = std::min(spectra.shortest, wavelength);
        spectra.longest = std::max(spectra.longest, wavelength);
    }
    return Status::Success;
}

Status Collect(Spectra& spectra) {
    TraceSet& traces = spectra.traces;
    const ModelReport& report = spectra.report;
    if (CollectTraces(spectra.plot.signals.get(), TraceChoice::Waveforms, "spectrum plot", traces,
                      report) != Status::Success) {
        return Status::Error;
    }
    if (traces.main.empty()) return report.Fail("ERROR plotting signals: no signal data\n");
    if (!IsPowerOfTwo(traces.noPoints)) {
        return report.Refuse("a signal has ", traces.noPoints,
                             " samples; its spectrum needs a power of two");
    }
    if (traces.noPoints > 1) spectra.df = 1.0 / (traces.noPoints * traces.tStep);
    if (!std::isfinite(spectra.df / traces.noPoints)) {
        return report.Refuse("a signal has the time step ", traces.tStep, " s");
    }
    if (traces.kind == TraceKind::Electrical) return Status::Success;
    spectra.axis = spectra.params.Type;
    return CheckWavelengths(spectra);
}

// --- The filter ---

/// The width in Hz of `width` m about the middle of the wavelengths.
double InHertz(double width, const Spectra& spectra) {
    const double center = 0.5 * (spectra.shortest + spectra.longest);
    return (1.0 / (center - 0.5 * width) - 1.0 / (center + 0.5 * width)) * lightSpeed;
}

/// Shape None when there is none, as for levels in one sample.
Status ReadFilter(const Spectra& spectra, OsaFilter& filter) {
    const SpectrumParams& params = spectra.params;
    if (spectra.traces.noPoints == 1) return Status::Success;
    if (params.filterType == "Gaussian") filter.shape = OsaShape::Gaussian;
    if (params.filterType == "Trapezoidal") filter.shape = OsaShape::Trapezoidal;
    if (filter.shape == OsaShape::None) return Status::Success;

    filter.order = params.filterOrder;
    filter.threshold = params.filterThreshold;
    filter.BW = params.filterBW;
    filter.BW0 = params.filterBW0dB;
    if (params.filterSpecMode == "Wavelength") {
        if (spectra.traces.kind == TraceKind::Electrical) {
            return spectra.report.RefuseValue("filterSpecMode", params.filterSpecMode,
                                              "Frequency for electrical signals");
        }
        filter.BW = InHertz(params.filterBW, spectra);
        // A top that is wider than the wavelength itself has no width in Hz.
        filter.BW0 =
            params.filterBW0dB < params.filterBW ? InHertz(params.filterBW0dB, spectra) : filter.BW;
    }
    if (params.filterBW > 0.0 && filter.BW > 0.0 && std::isfinite(filter.BW)) {
        return Status::Success;
    }
    return spectra.report.RefuseValue("filterBW", params.filterBW,
                                      "above 0 and below twice the wavelength");
}

void ApplyFilter(const OsaFilter& filter, double step, std::vector<double>& powers) {
    if (filter.shape == OsaShape::None || powers.empty()) return;
    const auto length = static_cast<std::int64_t>(powers.size());
    powers = SlidingSum(powers, OsaKernel(filter, step, length));
}

// --- Curves ---

double GreatestOf(const std::vector<std::vector<double>>& curves) {
    double greatest = 0.0;
    for (const std::vector<double>& curve : curves) {
        greatest = std::max(greatest, RangeOf(curve).greatest);
    }
    return greatest;
}

/// `reference` is the power at 0 dB where levels are normalized; darkness alone has none.
void ToLevels(const SpectrumParams& params, double reference, std::vector<double>& curve) {
    if (params.Normalize != "Yes") return ToDbm(curve);
    constexpr double weakest = 1e-300;
    ToDecibelsOf(curve, reference > 0.0 ? reference : weakest);
}

void LimitSensitivity(const SpectrumParams& params, std::vector<double>& curve) {
    const bool limited = params.OSAsensitivityMode != "Unlimited" && params.OSAsensitivity <= 0.0;
    if (!limited) return;
    for (double& level : curve) level = std::max(level, params.OSAsensitivity);
}

/// Every signal by itself over its own bins.
void FillBaseband(const Spectra& spectra, const OsaFilter& filter, SpectrumFile& file) {
    const TraceSet& traces = spectra.traces;
    const int polarization = spectra.params.Polarization;
    const std::string_view field = PolarizationViews(polarization).front().field;
    for (const Trace& trace : traces.main) {
        StopPoint();
        std::vector<double> powers = PowerSpectrum(trace, polarization, spectra.params.DCoffset);
        ApplyFilter(filter, spectra.df, powers);
        ToLevels(spectra.params, RangeOf(powers).greatest, powers);
        file.curves.push_back(std::move(powers));
        if (traces.main.size() > 1) file.legends.push_back(TraceLegend(trace, field));
    }
    for (std::int64_t k = 0; k < traces.noPoints; ++k) {
        file.x.push_back(static_cast<double>(FirstBin(traces.noPoints) + k) * spectra.df);
    }
}

/// Lasers straight into the plot have no width: one point for each carrier.
std::map<double, double> PowersByCarrier(const Spectra& spectra) {
    std::map<double, double> powers;
    for (const Trace& trace : spectra.traces.main) {
        powers[lightSpeed / trace.channel->wavelength] +=
            PowerOf(*trace.channel, spectra.params.Polarization, 1);
    }
    return powers;
}

/// Powers, or densities, of the channels and of the noise on one axis; no noise without records.
struct OpticalSpectrum {
    std::vector<double> frequencies;  // Hz, ascending
    std::vector<double> signal, noise;
};

Status CheckAxis(const Spectra& spectra, const OpticalAxis& axis) {
    const double last = axis.Frequency(axis.count - 1);
    if (!std::isfinite(last) || !(axis.step > 0.0)) {
        return spectra.report.Refuse("the channels and the time step ", spectra.traces.tStep,
                                     " s span no finite band");
    }
    if (spectra.axis == SpectrumAxis::Frequency || axis.Frequency(0) > 0.0) return Status::Success;
    return spectra.report.Refuse(
        "the band about the carrier reaches down to the frequency 0, which "
        "has no wavelength; choose the Frequency axis");
}

void Scale(double factor, std::vector<double>& values) {
    for (double& value : values) value *= factor;
}

/// The spectra of several channels at a time, added up in their order.
void AddTraces(const Spectra& spectra, const OpticalAxis& axis, std::vector<double>& sums) {
    const std::vector<Trace>& traces = spectra.traces.main;
    Workers workers(ThreadsFor(traces.size(), static_cast<long>(spectra.traces.noPoints)));
    std::vector<std::vector<double>> powers(static_cast<std::size_t>(workers.Count()));
    workers.ShareInOrder(
        static_cast<long>(traces.size()),
        [&](long trace, int slot) {
            powers[static_cast<std::size_t>(slot)] =
                PowerSpectrum(traces[static_cast<std::size_t>(trace)], spectra.params.Polarization,
                              spectra.params.DCoffset);
        },
        [&](long trace, int slot) {
            AddBins(axis, lightSpeed / traces[static_cast<std::size_t>(trace)].channel->wavelength,
                    spectra.df, powers[static_cast<std::size_t>(slot)], sums);
        });
}

Status FillSpectrum(const Spectra& spectra, const OsaFilter& filter, OpticalSpectrum& spectrum) {
    const SpectrumParams& params = spectra.params;
    const std::int64_t asked =
        params.Resolution == "Limited" ? std::max(params.ResolutionLimit, 2) : 0;
    const OpticalAxis axis =
        PlanOpticalAxis(lightSpeed / spectra.longest, lightSpeed / spectra.shortest,
                        spectra.traces.noPoints, spectra.df, asked);
    if (CheckAxis(spectra, axis) != Status::Success) return Status::Error;

    const auto count = static_cast<std::size_t>(axis.count);
    spectrum.signal.assign(count, 0.0);
    AddTraces(spectra, axis, spectrum.signal);
    if (spectra.IsDensity()) {
        Scale(1.0 / (axis.isCoarse ? axis.step : spectra.df), spectrum.signal);
    }
    ForEachNoise(spectra.plot, [&](const OpSigASE& record) {
        spectrum.noise.resize(count, 0.0);
        AddNoise(axis, record, spectrum.noise);
    });
    if (!spectra.IsDensity()) Scale(axis.step, spectrum.noise);
    ApplyFilter(filter, axis.step, spectrum.signal);
    ApplyFilter(filter, axis.step, spectrum.noise);
    for (std::int64_t i = 0; i < axis.count; ++i) {
        spectrum.frequencies.push_back(axis.Frequency(i));
    }
    return Status::Success;
}

void Choose(const SpectrumParams& params, OpticalSpectrum& spectrum, SpectrumFile& file) {
    std::vector<double>& signal = spectrum.signal;
    std::vector<double>& noise = spectrum.noise;
    if (noise.empty()) {
        file.curves = {std::move(signal)};
        return;
    }
    const bool separately = params.ShowNoise == "Separately";
    if (!separately) {
        for (std::size_t i = 0; i < signal.size(); ++i) signal[i] += noise[i];
    }
    file.curves = {std::move(signal)};
    if (!separately && params.ShowNoise != "Both") return;
    file.curves.push_back(std::move(noise));
    file.legends = {separately ? "Signal" : "Signal + noise", "Noise"};
}

Status FillOptical(const Spectra& spectra, const OsaFilter& filter, SpectrumFile& file) {
    OpticalSpectrum spectrum;
    if (spectra.traces.noPoints == 1) {
        for (const auto& [carrier, power] : PowersByCarrier(spectra)) {
            spectrum.frequencies.push_back(carrier);
            spectrum.signal.push_back(power);
        }
    } else if (FillSpectrum(spectra, filter, spectrum) != Status::Success) {
        return Status::Error;
    }
    Choose(spectra.params, spectrum, file);
    const double reference = GreatestOf(file.curves);
    for (std::vector<double>& curve : file.curves) {
        ToLevels(spectra.params, reference, curve);
        LimitSensitivity(spectra.params, curve);
    }
    file.x = std::move(spectrum.frequencies);
    if (spectra.axis == SpectrumAxis::Frequency) return Status::Success;
    for (double& x : file.x) x = lightSpeed / x;
    std::reverse(file.x.begin(), file.x.end());
    for (std::vector<double>& curve : file.curves) std::reverse(curve.begin(), curve.end());
    return Status::Success;
}

// --- Files ---

std::string_view UnitOf(const Spectra& spectra) {
    if (spectra.params.Normalize == "Yes") return "dB";
    return spectra.IsDensity() ? "dBm/Hz" : "dBm";
}

Status WriteSignals(const Spectra& spectra) {
    OsaFilter filter;
    if (ReadFilter(spectra, filter) != Status::Success) return Status::Error;
    SpectrumFile file;
    file.name = spectra.plot.name;
    file.blockName = spectra.report.owner;
    file.axis = spectra.axis;
    file.mode = spectra.plot.mode;
    file.arePoints = spectra.traces.noPoints == 1;
    file.unit = UnitOf(spectra);
    if (spectra.traces.kind == TraceKind::Optical) {
        file.box = PolarizationBox(spectra.params.Polarization);
    }
    if (spectra.axis == SpectrumAxis::Baseband) {
        FillBaseband(spectra, filter, file);
    } else if (FillOptical(spectra, filter, file) != Status::Success) {
        return Status::Error;
    }
    return WriteSpectrum(file, spectra.report.errorText);
}

/// The records by themselves on their own grids, one after another.
Status WriteNoise(const Spectra& spectra) {
    static constexpr std::array<std::string_view, 4> yes = {"TRUE", "Yes", "YES", "ON"};
    if (std::find(yes.begin(), yes.end(), spectra.params.testASEnoiseMode) == yes.end()) {
        return Status::Success;
    }
    std::vector<double> frequencies, densities;
    ForEachNoise(spectra.plot, [&](const OpSigASE& record) {
        for (std::int32_t i = 1; i <= record.noPoints; ++i) {
            frequencies.push_back(record.fstart + (i - 1) * record.fstep);
            densities.push_back(record.powerSamples[i]);
        }
    });
    ToDbm(densities);
    CurvePlot plot;
    plot.name = spectra.plot.name + "_ASE";
    plot.title = "ASE Noise Spectra";
    plot.xLabel = "Frequency (Hz)";
    plot.yLabel = "Noise Power (dBm/Hz)";
    plot.x = frequencies;
    plot.y = densities;
    plot.mode = spectra.plot.mode;
    return WriteCurve(plot, spectra.report.errorText);
}

}  // namespace

Status RunSignalSpectra(const ModelCall& call) {
    SpectrumParams params;
    ReadSpectrumParams(call.component.parameters, params);
    PlotStart plot;
    Status status = StartPlot(call, "spectrum plot", params.FilenameRoot, params.plot, plot);
    if (status == Status::Error || plot.mode == PlotMode::None) return status;
    if (CheckSpectrumParams(params, call) != Status::Success) return Status::Error;

    Spectra spectra{params, plot, call};
    if (Collect(spectra) != Status::Success) return Status::Error;
    MergeStatus(status, WriteSignals(spectra));
    if (status != Status::Error) MergeStatus(status, WriteNoise(spectra));
    return status;
}

}  // namespace photrak
