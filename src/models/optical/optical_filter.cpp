// Channels are filtered in the frequency domain: exponent sign +1 forward, so that bin m stands at
// m df above the carrier. Doubled windows have flat ends, which keep a circular transform from
// folding the end of a pattern onto its beginning.
#include "models/optical/optical_filter.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "kernel/parameters.h"
#include "kernel/sample_arrays.h"
#include "models/optical/spectrum_grid.h"
#include "models/parameter_limits.h"
#include "numeric/messages.h"

namespace photrak {
namespace {

// --- One channel ---

/// The window in which a channel is filtered and what its bins are multiplied by.
struct Window {
    std::int32_t n = 0;         // samples of the window
    std::int32_t first = 0;     // of the channel's samples in the window, less 1
    std::int32_t rotation = 0;  // bins toward higher frequencies
    OwnedBlock<Complex> factors, work;
};

/// Bins, modulo the window, from the channel's carrier to its place on the filter's scale.
std::int32_t CarrierRotation(const SpectrumGrid& grid, double filterFrequency) {
    const double bins = std::round((grid.carrier - filterFrequency) / grid.df);
    const auto rotation = static_cast<std::int32_t>(std::fmod(bins, grid.n));
    return rotation < 0 ? rotation + grid.n : rotation;
}

bool OpenWindow(const FilterResponse& response, const OpSig& channel, Window& window) {
    const OpticalFilterRecord& record = response.record;
    window.n = record.usePadding ? 2 * channel.noPoints : channel.noPoints;
    window.first = record.usePadding ? window.n / 4 : 0;
    window.factors.reset(NewUnclearedSamples<Complex>(window.n));
    window.work.reset(NewUnclearedSamples<Complex>(window.n));
    if (!window.factors || !window.work) return false;
    SpectrumGrid grid(channel, window.n);
    if (record.shiftCarrier) {
        const double filterFrequency = lightSpeed / record.wavelength;
        window.rotation = CarrierRotation(grid, filterFrequency);
        grid.carrier = filterFrequency;
    }
    for (std::int32_t k = 1; k <= window.n; ++k)
        window.factors.get()[k] = response(grid.Frequency(k));
    return true;
}

void FilterField(const Window& window, Complex* field, std::int32_t noPoints) {
    Complex* work = window.work.get();
    const Complex* factors = window.factors.get();
    std::fill_n(work + 1, window.first, field[1]);
    std::copy_n(field + 1, noPoints, work + 1 + window.first);
    std::fill(work + 1 + window.first + noPoints, work + 1 + window.n, field[noPoints]);
    DoFFTFlagged(work, window.n, 1, 0);
    std::rotate(work + 1, work + 1 + (window.n - window.rotation), work + 1 + window.n);
    for (std::int32_t k = 1; k <= window.n; ++k) work[k] = factors[k] * work[k];
    DoFFTFlagged(work, window.n, -1, fftDivideByN);
    std::copy_n(work + 1 + window.first, noPoints, field + 1);
}

void FilterLevel(const FilterResponse& response, OpSig& level) {
    const Complex H = response(lightSpeed / level.wavelength);
    for (Complex* field : {level.Ex_samples, level.Ey_samples}) {
        if (field) field[1] = H * field[1];
    }
}

Status FilterChannel(const FilterResponse& response, OpSig& channel, std::string& errorText) {
    const OpticalFilterRecord& record = response.record;
    if (CheckSpectrumGrid(channel, record.owner, errorText) != Status::Success) {
        return Status::Error;
    }
    if (channel.noPoints < 1) return Status::Success;
    if (channel.noPoints == 1) {
        FilterLevel(response, channel);
        return Status::Success;
    }
    Window window;
    if (!OpenWindow(response, channel, window)) {
        ReportNoMemory(errorText, Concat("the spectrum of a channel in '", record.owner, "'"));
        return Status::Error;
    }
    for (Complex* field : {channel.Ex_samples, channel.Ey_samples}) {
        if (field) FilterField(window, field, channel.noPoints);
    }
    if (record.shiftCarrier) channel.wavelength = record.wavelength;
    return Status::Success;
}

Inversion InversionOf(std::string_view word) {
    if (word == "Power") return Inversion::Power;
    return word == "Amplitude" ? Inversion::Amplitude : Inversion::None;
}

Status FilterPorts(const ModelCall& call, const FilterResponse& response) {
    Nodelist* output = call.outputs;
    for (const Nodelist& input : Items(call.inputs)) {
        if (!output) break;
        if (input.sigType != OpSigType) {
            call.errorText += "Invalid signal in user model.";
            return Status::Error;
        }
        Owned<OpSignal> signal;
        if (input.sig && Make(signal, CopyOpSignal, static_cast<const OpSignal*>(input.sig))) {
            call.errorText += "Can't copy optical signal.";
            return Status::Error;
        }
        if (signal) {
            const Status status =
                ApplyOpticalFilter(response, signal->channels, signal->noise, call.errorText);
            if (status != Status::Success) return status;
            output->sig = signal.release();
            output->sigType = OpSigType;
        }
        output = output->next;
    }
    return Status::Success;
}

constexpr std::int32_t testBins = 1000, testCenter = 499;

constexpr ParameterLimit<OpticalFilterRecord> testLimits[] = {
    {"wavelength", &OpticalFilterRecord::wavelength, Range::Positive},
    {"BW", &OpticalFilterRecord::BW, Range::Positive}};

/// Decibels of amplitudes, with a floor for what is 0.
void ToDecibels(std::vector<double>& values) {
    double peak = *std::max_element(values.begin(), values.end());
    if (peak == 0.0) peak = 1.0;
    for (double& value : values) {
        value = value == 0.0 ? 20.0 * std::log10(peak) - 100.0 : 20.0 * std::log10(value);
    }
}

}  // namespace

Status ApplyOpticalFilter(const FilterResponse& response, OpSig* channels, OpSigASE* noise,
                          std::string& errorText) {
    if (response.PassesAll()) return Status::Success;
    for (OpSig& channel : Items(channels)) {
        const Status status = FilterChannel(response, channel, errorText);
        if (status != Status::Success) return status;
    }
    // Noise is not bound to a carrier: it is neither padded nor moved.
    for (OpSigASE& spectrum : Items(noise)) {
        for (std::int32_t i = 1; i <= spectrum.noPoints; ++i) {
            const double f = spectrum.fstart + (i - 1) * spectrum.fstep;
            spectrum.powerSamples[i] *= SquaredMagnitude(response(f));
        }
    }
    return Status::Success;
}

Status ApplyOpticalFilter(const OpticalFilterRecord& record, OpSig* channels, OpSigASE* noise,
                          std::string& errorText) {
    FilterResponse response;
    const Status status = PrepareFilterResponse(record, response, errorText);
    if (status != Status::Success) return status;
    return ApplyOpticalFilter(response, channels, noise, errorText);
}

OpticalFilterRecord ReadOpticalFilterRecord(const Component& component) {
    OpticalFilterRecord record;
    const auto number = [&](std::string_view name, double fallback) {
        return GetParamDouble(component.parameters, name, fallback);
    };
    const auto word = [&](std::string_view name, std::string_view fallback) {
        return GetParamText(component.parameters, name, fallback);
    };
    record.owner = component.name;
    record.type = word("type", "Gaussian");
    record.order = GetParamInt(component.parameters, "order", 1);
    record.usePadding = word("usepadding", "Yes") == "Yes";
    record.shiftCarrier = word("shiftcarrier", "No") == "Yes";
    record.wavelength = number("wavelength", 1.0);
    record.BW = number("BW", 1.0);
    record.inversion = InversionOf(word("inversion", "None"));
    record.L = LossFactor(number("loss", 0.0));
    record.BW0dB = number("BW0dB", 1e-09);
    record.FSR = number("FSR", 1.21e-07);
    record.reflectivity = number("reflectivity", 0.0);
    record.filename = word("filename", "none");
    return record;
}

double PeakPower(const OpSig& channel) {
    double peak = 0.0;
    for (std::int32_t i = 1; i <= channel.noPoints; ++i) {
        double power = SquaredMagnitude(channel.Ex_samples[i]);
        if (channel.Ey_samples) power += SquaredMagnitude(channel.Ey_samples[i]);
        peak = std::max(peak, power);
    }
    return peak;
}

void DropWeakChannels(OpSignal& signal, double threshold) {
    OpSig** link = &signal.channels;
    OpSig* former = nullptr;
    while (OpSig* channel = *link) {
        if (PeakPower(*channel) < threshold) {
            *link = channel->next;
            FreeOpSig(&channel);
        } else {
            channel->prev = former;
            former = channel;
            link = &channel->next;
        }
    }
}

Status TestOpticalFilter(const Component& component, FilterTest& test, std::string& errorText) {
    const OpticalFilterRecord record = ReadOpticalFilterRecord(component);
    FilterResponse response;
    Status status = CheckLimits<OpticalFilterRecord>(record, testLimits, errorText);
    if (status == Status::Success) status = PrepareFilterResponse(record, response, errorText);
    if (status != Status::Success) return status;
    test = {};
    const double step = OppositeWidth(record.wavelength, record.BW) * 0.01;
    for (std::int32_t i = 0; i < testBins; ++i) {
        const double f = (i - testCenter) * step + lightSpeed / record.wavelength;
        test.frequency.push_back(f);
        test.wavelength.push_back(lightSpeed / f);
        test.power.push_back(Magnitude(response(f)));
    }
    ToDecibels(test.power);
    return Status::Success;
}

Status RunOpticalFilter(const ModelCall& call) {
    const OpticalFilterRecord record = ReadOpticalFilterRecord(call.component);
    const double dropThreshold = GetParamDouble(call.component.parameters, "dropThreshold", 0.0);
    FilterResponse response;
    Status status =
        CheckRange(record.owner, "dropThreshold", dropThreshold, Range::Finite, call.errorText);
    if (status == Status::Success) {
        status = PrepareFilterResponse(record, response, call.errorText);
    }
    if (status == Status::Success) status = FilterPorts(call, response);
    if (status != Status::Success) return status;
    for (Nodelist* output = call.outputs; output; output = output->next) {
        if (output->sig) DropWeakChannels(*static_cast<OpSignal*>(output->sig), dropThreshold);
    }
    return Status::Success;
}

}  // namespace photrak
