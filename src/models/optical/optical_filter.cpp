// Channels are filtered in the frequency domain: exponent sign +1 forward, so that bin m stands at
// m df above the carrier. Doubled windows have flat ends, which keep a circular transform from
// folding the end of a pattern onto its beginning.
#include "models/optical/optical_filter.h"

#include <algorithm>
#include <cmath>

#include "base/units.h"
#include "kernel/sample_arrays.h"
#include "models/common/spectrum_grid.h"
#include "numeric/transfer.h"
#include "platform/stop_point.h"
#include "platform/workers.h"

namespace photrak {
namespace {

// --- One channel ---

/// The window in which a channel is filtered.
struct Window {
    SpectrumGrid grid;          // of the window; with shiftCarrier about the filter's frequency
    std::int32_t first = 0;     // of the channel's samples in the window, less 1
    std::int32_t rotation = 0;  // bins toward higher frequencies, 0..n-1
};

/// Bins, modulo the window, from the channel's carrier to its place on the filter's scale.
std::int32_t CarrierRotation(const SpectrumGrid& grid, double filterFrequency) {
    const double bins = std::fmod(std::round((grid.carrier - filterFrequency) / grid.df), grid.n);
    if (!std::isfinite(bins)) return 0;  // too far to be counted
    const auto rotation = static_cast<std::int32_t>(bins);
    return rotation < 0 ? rotation + grid.n : rotation;
}

Window WindowOf(const OpticalFilterRecord& record, const OpSig& channel) {
    Window window = {SpectrumGrid(channel, (record.usePadding ? 2 : 1) * channel.noPoints)};
    if (record.usePadding) window.first = window.grid.n / 4;
    if (!record.shiftCarrier) return window;
    const double filterFrequency = lightSpeed / record.wavelength;
    window.rotation = CarrierRotation(window.grid, filterFrequency);
    window.grid.carrier = filterFrequency;
    return window;
}

/// Rotates the field's spectrum toward higher bins, which in time turns sample j by -2 pi j bins/n.
/// Sines are worked out once for each run of samples and for the places within a run.
void RotateSpectrum(SplitField& field, std::int64_t bins) {
    constexpr std::int64_t longestRun = 64;
    const std::int64_t n = field.Size(), run = std::min(n, longestRun);
    const auto turn = [&](std::int64_t j) {
        const double turns = static_cast<double>(bins * j % n) / static_cast<double>(n);
        return Complex{std::cos(twoPi * turns), -std::sin(twoPi * turns)};
    };
    double withinRe[longestRun], withinIm[longestRun];
    for (std::int64_t q = 0; q < run; ++q) {
        const Complex within = turn(q);
        withinRe[q] = within.re;
        withinIm[q] = within.im;
    }
    for (std::int64_t start = 0; start < n; start += run) {
        LookForStop(start);
        const Complex first = turn(start);
        double *re = field.Re() + start, *im = field.Im() + start;
        for (std::int64_t q = 0; q < run; ++q) {
            const double c = first.re * withinRe[q] - first.im * withinIm[q];
            const double s = first.re * withinIm[q] + first.im * withinRe[q];
            const double x = re[q], y = im[q];
            re[q] = c * x - s * y;
            im[q] = c * y + s * x;
        }
    }
}

void FilterField(const Window& window, const TransferArray& factors, SplitField& work,
                 const Complex* in, Complex* out, std::int32_t noPoints) {
    StopPoint();
    const std::int32_t behind = window.first + noPoints;
    work.CopyFrom(in, window.first, noPoints);
    std::fill_n(work.Re(), window.first, in[1].re);
    std::fill_n(work.Im(), window.first, in[1].im);
    std::fill(work.Re() + behind, work.Re() + work.Size(), in[noPoints].re);
    std::fill(work.Im() + behind, work.Im() + work.Size(), in[noPoints].im);
    if (window.rotation != 0) RotateSpectrum(work, window.rotation);
    ApplyTransfer(work, factors);
    work.CopyTo(out, window.first, noPoints);
}

using Polarization = Complex* OpSig::*;
constexpr Polarization polarizations[] = {&OpSig::Ex_samples, &OpSig::Ey_samples};

/// A channel to filter and where it goes: itself, or a frame like it.
struct FilterTask {
    const OpSig* source;
    OpSig* target;
};

void FilterLevel(const FilterResponse& response, const FilterTask& level) {
    const Complex H = response(lightSpeed / level.source->wavelength);
    for (const Polarization field : polarizations) {
        if (level.source->*field) (level.target->*field)[1] = H * (level.source->*field)[1];
    }
}

/// What a thread needs to filter channels in windows of n samples.
struct FilterWork {
    explicit FilterWork(long n) : factors(n, +1), field(n) {}
    TransferArray factors;
    SplitField field;
};

void FilterChannel(const FilterResponse& response, const FilterTask& task, FilterWork& work) {
    const Window window = WindowOf(response.record, *task.source);
    work.factors.Fill([&](long bin) {
        return response(static_cast<double>(bin) * window.grid.df + window.grid.carrier);
    });
    for (const Polarization field : polarizations) {
        if (!(task.source->*field)) continue;
        FilterField(window, work.factors, work.field, task.source->*field, task.target->*field,
                    task.source->noPoints);
    }
    if (response.record.shiftCarrier) task.target->wavelength = response.record.wavelength;
}

/// Channels of one length, shared out among threads.
void FilterAlike(const FilterResponse& response, const std::vector<FilterTask>& tasks) {
    const std::int32_t n = WindowOf(response.record, *tasks.front().source).grid.n;
    Workers workers(ThreadsFor(tasks.size(), n));
    std::vector<FilterWork> work;
    work.reserve(static_cast<std::size_t>(workers.Count()));
    for (int worker = 0; worker < workers.Count(); ++worker) work.emplace_back(n);
    workers.Share(static_cast<long>(tasks.size()), [&](long task, int worker) {
        FilterChannel(response, tasks[static_cast<std::size_t>(task)],
                      work[static_cast<std::size_t>(worker)]);
    });
}

/// From a list of channels into one of the same sizes, or into itself.
Status FilterChannels(const FilterResponse& response, const OpSig* source, OpSig* target,
                      const ModelReport& report) {
    std::vector<FilterTask> alike;  // waiting, all of one length
    const auto finish = [&] {
        if (!alike.empty()) FilterAlike(response, alike);
        alike.clear();
    };
    for (OpSig& to : Items(target)) {
        const FilterTask task{source, &to};
        source = source->next;
        if (CheckSpectrumGrid(*task.source, report) != Status::Success) return Status::Error;
        if (to.noPoints == 1) FilterLevel(response, task);
        if (to.noPoints <= 1) continue;
        if (!alike.empty() && alike.front().source->noPoints != to.noPoints) finish();
        alike.push_back(task);
    }
    finish();
    return Status::Success;
}

/// Noise is not bound to a carrier: it is neither padded nor moved.
void FilterNoise(const FilterResponse& response, OpSigASE* noise) {
    for (OpSigASE& spectrum : Items(noise)) {
        for (std::int32_t i = 1; i <= spectrum.noPoints; ++i) {
            const double f = spectrum.fstart + (i - 1) * spectrum.fstep;
            spectrum.powerSamples[i] *= SquaredMagnitude(response(f));
        }
    }
}

void StoreInversion(OpticalFilterRecord& record, std::string_view word) {
    record.inversion = word == "Power"       ? Inversion::Power
                       : word == "Amplitude" ? Inversion::Amplitude
                                             : Inversion::None;
}
void StorePadding(OpticalFilterRecord& record, std::string_view word) {
    record.usePadding = word == "Yes";
}
void StoreShift(OpticalFilterRecord& record, std::string_view word) {
    record.shiftCarrier = word == "Yes";
}

// What a type does not use is not judged: the response checks what it needs.
using Record = OpticalFilterRecord;
using Row = ParamRow<Record>;
constexpr Row rows[] = {{"type", &Record::type, "Gaussian",
                         Words{"Gaussian FabryPerot Ideal Trapezoidal Custom1 Custom2 Custom3"}},
                        {"order", &Record::order, 1},
                        {"usepadding", StorePadding, "Yes", Words{"Yes No"}},
                        {"shiftcarrier", StoreShift, "No", Words{"Yes No"}},
                        Row{"wavelength", &Record::wavelength, 1.55e-6}.WhenAbsent(1.0),
                        Row{"BW", &Record::BW, 1e-9, Range::Positive}.WhenAbsent(1.0),
                        {"inversion", StoreInversion, "None", Words{"None Power Amplitude"}},
                        {"loss", &Record::loss, 0.0},
                        Row{"BW0dB", &Record::BW0dB, 0.5e-9, Range::NotNegative}.WhenAbsent(1e-9),
                        {"FSR", &Record::FSR, 1.21e-07, Range::Positive},
                        {"reflectivity", &Record::reflectivity, 0.0, Range::NotNegative},
                        {"filename", &Record::filename, "none"}};

struct DropParams {
    double dropThreshold = 0.0;  // W
};
constexpr ParamRow<DropParams> dropRows[] = {{"dropThreshold", &DropParams::dropThreshold, 0.0}};

Status FilterPorts(const ModelCall& call, const FilterResponse& response) {
    Nodelist* output = call.outputs;
    for (const Nodelist& input : Items(call.inputs)) {
        if (!output) break;
        if (input.sigType != OpSigType) {
            return call.Fail("Invalid signal in user model.");
        }
        if (const auto* source = static_cast<const OpSignal*>(input.sig)) {
            Owned<OpSignal> signal;
            if (!MakeFilterCopy(response, *source, signal)) {
                return call.Fail("Can't copy optical signal.");
            }
            const Status status = FilterInto(response, *source, signal, call);
            if (status != Status::Success) return status;
            output->sig = signal.release();
            output->sigType = OpSigType;
        }
        output = output->next;
    }
    return Status::Success;
}

constexpr std::int32_t testBins = 1000, testCenter = 499;

/// Decibels of amplitudes, with a floor for what is 0.
void ToDecibels(std::vector<double>& values) {
    double peak = *std::max_element(values.begin(), values.end());
    if (peak == 0.0) peak = 1.0;
    for (double& value : values) {
        value = value == 0.0 ? FieldDecibels(peak) - 100.0 : FieldDecibels(value);
    }
}

}  // namespace

Status ApplyOpticalFilter(const FilterResponse& response, OpSig* channels, OpSigASE* noise,
                          const ModelReport& report) {
    if (response.PassesAll()) return Status::Success;
    const Status status = FilterChannels(response, channels, channels, report);
    if (status == Status::Success) FilterNoise(response, noise);
    return status;
}

bool MakeFilterCopy(const FilterResponse& response, const OpSignal& source, Owned<OpSignal>& copy) {
    const auto copyChannel = response.PassesAll() ? CopyOpSig : CopyOpSigFrame;
    return !Make(copy, CreateOpSignal) &&
           !CopyList(&copy->channels, source.channels, copyChannel) &&
           !CopyOpSigASEList(&copy->noise, source.noise);
}

Status FilterInto(const FilterResponse& response, const OpSignal& source, Owned<OpSignal>& copy,
                  const ModelReport& report) {
    if (response.PassesAll()) return Status::Success;
    const Status status = FilterChannels(response, source.channels, copy->channels, report);
    if (status == Status::Success) FilterNoise(response, copy->noise);
    if (status != Status::Success) copy.reset();
    return status;
}

Status ApplyOpticalFilter(const OpticalFilterRecord& record, OpSig* channels, OpSigASE* noise,
                          const ModelReport& report) {
    FilterResponse response;
    const Status status = PrepareFilterResponse(record, response, report);
    if (status != Status::Success) return status;
    return ApplyOpticalFilter(response, channels, noise, report);
}

std::vector<ParamSpec> OpticalFilterParamSpecs() {
    return SpecsOf(rows, dropRows);
}

OpticalFilterRecord ReadOpticalFilterRecord(Parameter* parameters) {
    OpticalFilterRecord record;
    ReadParams(rows, parameters, record);
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

Status TestOpticalFilter(const Component& component, FilterTest& test, const ModelReport& report) {
    const OpticalFilterRecord record = ReadOpticalFilterRecord(component.parameters);
    FilterResponse response;
    Status status = CheckRange(report, "wavelength", record.wavelength, Range::Positive);
    if (status == Status::Success) status = CheckRange(report, "BW", record.BW, Range::Positive);
    if (status == Status::Success) status = PrepareFilterResponse(record, response, report);
    if (status != Status::Success) return status;
    const double step = OppositeWidth(record.wavelength, record.BW) * 0.01;
    if (!std::isfinite(step)) {
        return report.RefuseValue("BW", record.BW, "other than twice the wavelength");
    }
    test = {};
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
    const OpticalFilterRecord record = ReadOpticalFilterRecord(call.component.parameters);
    DropParams drop;
    ReadParams(dropRows, call.component.parameters, drop);
    FilterResponse response;
    Status status = CheckParams(dropRows, drop, call);
    if (status == Status::Success) {
        status = PrepareFilterResponse(record, response, call);
    }
    if (status == Status::Success) status = FilterPorts(call, response);
    if (status != Status::Success) return status;
    for (Nodelist* output = call.outputs; output; output = output->next) {
        if (output->sig) DropWeakChannels(*static_cast<OpSignal*>(output->sig), drop.dropThreshold);
    }
    return Status::Success;
}

}  // namespace photrak
