// Gathers channels of one wavelength across the inputs, weights and adds them per output. The wide
// form does so on spectra: exponent sign +1 forward, so that bin m stands at m df above the
// carrier.
#include "models/optical/multiport.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "base/text.h"
#include "kernel/external_commands.h"
#include "kernel/sample_arrays.h"
#include "models/common/spectrum_grid.h"
#include "numeric/fft.h"
#include "platform/file_system.h"
#include "platform/workers.h"

namespace photrak {
namespace {

constexpr double beyondAllWavelengths = 1e30;  // m

void StoreBandwidth(MultiportParams& params, std::string_view word) {
    params.bandwidth = word == "Narrow" ? SignalBandwidth::Narrow : SignalBandwidth::Wide;
}
constexpr ParamRow<MultiportParams> rows[] = {
    {"CommandLine", &MultiportParams::commandLine, ""},
    {"FileName", &MultiportParams::fileName, "transfer.txt"},
    {"SignalBandwidth", StoreBandwidth, "Narrow", Words{"Narrow Wide"}}};

// --- Ports ---

struct InputPort {
    const OpSig* next = nullptr;  // channel at the head of what is left
    const OpSigASE* noise = nullptr;
};

struct OutputPort {
    Owned<OpSignal> signal;
    OpSig* last = nullptr;  // end of the channels

    void Append(Owned<OpSig> channel) {
        channel->prev = last;
        OpSig* added = channel.release();
        (last ? last->next : signal->channels) = added;
        last = added;
    }
};

/// What one call works on.
struct Device {
    const TransferMatrix& matrix;
    SignalBandwidth bandwidth;
    const ModelReport& report;
    std::vector<InputPort> inputs;
    std::vector<OutputPort> outputs;
    OwnedBlock<Complex> spectrum;  // work array of the wide form
    std::int32_t spectrumSize = 0;
};

Status OpenPorts(Device& device, const Nodelist* inputs, const Nodelist* outputs) {
    for (const Nodelist& cell : Items(inputs)) {
        InputPort port;
        if (cell.sig) {
            if (cell.sigType != OpSigType) {
                return device.report.Refuse("an input is not optical");
            }
            const auto* signal = static_cast<const OpSignal*>(cell.sig);
            port = {signal->channels, signal->noise};
        }
        device.inputs.push_back(port);
    }
    for (const Nodelist* cell = outputs; cell; cell = cell->next) device.outputs.emplace_back();
    if (device.inputs.size() == static_cast<std::size_t>(device.matrix.rows) &&
        device.outputs.size() == static_cast<std::size_t>(device.matrix.columns)) {
        return Status::Success;
    }
    return device.report.Fail("mismatch in number of input/output nodes.");
}

/// Channels of one wavelength, by input; null where an input has none.
using Gathered = std::vector<const OpSig*>;

/// Takes the channels of the shortest wavelength off the heads; false when all lists are empty.
bool Gather(std::vector<InputPort>& inputs, Gathered& gathered) {
    double shortest = beyondAllWavelengths;
    for (const InputPort& input : inputs) {
        if (input.next) shortest = std::min(shortest, input.next->wavelength);
    }
    gathered.assign(inputs.size(), nullptr);
    bool any = false;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        const OpSig* channel = inputs[i].next;
        if (!channel || channel->wavelength != shortest) continue;
        gathered[i] = channel;
        inputs[i].next = channel->next;
        any = true;
    }
    return any;
}

/// No wavelength that Gather cannot meet, or it would leave channels behind.
Status CheckWavelengths(const Device& device) {
    for (const InputPort& input : device.inputs) {
        for (const OpSig& channel : Items(input.next)) {
            if (channel.wavelength > 0.0 && channel.wavelength < beyondAllWavelengths) continue;
            return device.report.Refuse("a channel has the wavelength ", channel.wavelength, " m");
        }
    }
    return Status::Success;
}

// --- Fields ---

const OpSig& FirstOf(const Gathered& gathered) {
    return **std::find_if(gathered.begin(), gathered.end(), [](const OpSig* c) { return c; });
}

/// The channels that are to be added must lie on one time grid, fit for the transform in use.
Status CheckGrid(const Device& device, const Gathered& gathered) {
    const OpSig& first = FirstOf(gathered);
    for (const OpSig* channel : gathered) {
        if (!channel) continue;
        if (channel->noPoints != first.noPoints || channel->tStep != first.tStep) {
            return device.report.Refuse("channels of the wavelength ", first.wavelength,
                                        " m differ in number of samples or time step");
        }
    }
    if (device.bandwidth == SignalBandwidth::Narrow) return Status::Success;
    return CheckSpectrumGrid(first, device.report);
}

/// A channel with the settings of the first gathered one and no light.
bool AppendDark(OutputPort& output, const Gathered& gathered) {
    Owned<OpSig> channel;
    if (Make(channel, CopyOpSig, &FirstOf(gathered))) return false;
    const bool polarized = std::any_of(gathered.begin(), gathered.end(),
                                       [](const OpSig* c) { return c && c->Ey_samples; });
    if (polarized && !channel->Ey_samples && AddEySamples(channel.get())) return false;
    for (Complex* field : {channel->Ex_samples, channel->Ey_samples}) {
        if (field) std::fill_n(field + 1, channel->noPoints, Complex{});
    }
    output.Append(std::move(channel));
    return true;
}

using Polarization = Complex* OpSig::*;
constexpr Polarization polarizations[] = {&OpSig::Ex_samples, &OpSig::Ey_samples};

void AddNarrow(Device& device, std::int32_t row, const OpSig& channel) {
    for (std::int32_t column = 1; column <= device.matrix.columns; ++column) {
        const Complex element = device.matrix.At(row, column, channel.wavelength);
        OpSig& sum = *device.outputs[static_cast<std::size_t>(column - 1)].last;
        for (const Polarization field : polarizations) {
            const Complex* in = channel.*field;
            if (!in) continue;
            Complex* out = sum.*field;
            for (std::int32_t k = 1; k <= channel.noPoints; ++k) out[k] = out[k] + element * in[k];
        }
    }
}

/// Adds the weighted spectrum to one output.
void AddToColumn(const Device& device, std::int32_t row, std::int32_t column,
                 const SpectrumGrid& grid, Polarization field) {
    const Complex* spectrum = device.spectrum.get();
    Complex* out = device.outputs[static_cast<std::size_t>(column - 1)].last->*field;
    for (std::int32_t k = 1; k <= grid.n; ++k) {
        const double wavelength = lightSpeed / grid.Frequency(k);
        out[k] = out[k] + device.matrix.At(row, column, wavelength) * spectrum[k];
    }
}

/// Adds the input's weighted spectrum to the outputs, which hold spectra until all are added.
void AddWide(Device& device, std::int32_t row, const OpSig& channel, Workers& workers) {
    const SpectrumGrid grid(channel, channel.noPoints);
    Complex* spectrum = device.spectrum.get();
    for (const Polarization field : polarizations) {
        if (!(channel.*field)) continue;
        std::copy_n(channel.*field + 1, grid.n, spectrum + 1);
        DoFFTFlagged(spectrum, grid.n, 1, 0);
        workers.Share(device.matrix.columns, [&](long column, int) {
            AddToColumn(device, row, static_cast<std::int32_t>(column) + 1, grid, field);
        });
    }
}

void ReturnToTime(OpSig& channel) {
    for (const Polarization field : polarizations) {
        if (channel.*field) DoFFTFlagged(channel.*field, channel.noPoints, -1, fftDivideByN);
    }
}

bool SizeSpectrum(Device& device, std::int32_t n) {
    if (n <= device.spectrumSize) return true;
    device.spectrum.reset(NewUnclearedSamples<Complex>(n));
    device.spectrumSize = device.spectrum ? n : 0;
    return device.spectrum != nullptr;
}

Status AddChannels(Device& device, const Gathered& gathered) {
    const bool wide = device.bandwidth == SignalBandwidth::Wide;
    if (CheckGrid(device, gathered) != Status::Success) return Status::Error;
    bool made = !wide || SizeSpectrum(device, FirstOf(gathered).noPoints);
    for (OutputPort& output : device.outputs) made = made && AppendDark(output, gathered);
    if (!made) return device.report.Fail("can't allocate output signal.");
    Workers workers(wide ? ThreadsFor(device.outputs.size(), FirstOf(gathered).noPoints) : 1);
    for (std::size_t i = 0; i < gathered.size(); ++i) {
        if (!gathered[i] || gathered[i]->noPoints < 1) continue;
        const auto row = static_cast<std::int32_t>(i) + 1;
        wide ? AddWide(device, row, *gathered[i], workers) : AddNarrow(device, row, *gathered[i]);
    }
    if (!wide || FirstOf(gathered).noPoints < 1) return Status::Success;
    workers.Share(static_cast<long>(device.outputs.size()), [&](long output, int) {
        ReturnToTime(*device.outputs[static_cast<std::size_t>(output)].last);
    });
    return Status::Success;
}

// --- Noise ---

/// The first noise record, or null; a mismatch is told in the status.
Status CommonNoiseGrid(const Device& device, const OpSigASE*& common) {
    common = nullptr;
    for (const InputPort& input : device.inputs) {
        if (!input.noise) continue;
        if (!common) common = input.noise;
        if (input.noise->noPoints != common->noPoints || input.noise->fstep != common->fstep ||
            input.noise->fstart != common->fstart) {
            return device.report.Fail("mismatch in ASE noise signal info");
        }
    }
    return Status::Success;
}

bool AddNoise(Device& device, const OpSigASE& common) {
    for (std::size_t column = 0; column < device.outputs.size(); ++column) {
        OpSignal& signal = *device.outputs[column].signal;
        if (CreateOpSigASE(&signal.noise, common.noPoints)) return false;
        signal.noise->fstep = common.fstep;
        signal.noise->fstart = common.fstart;
        for (std::size_t row = 0; row < device.inputs.size(); ++row) {
            const OpSigASE* input = device.inputs[row].noise;
            if (!input) continue;
            for (std::int32_t k = 1; k <= common.noPoints; ++k) {
                const double wavelength = lightSpeed / (common.fstart + (k - 1) * common.fstep);
                const Complex element =
                    device.matrix.At(static_cast<std::int32_t>(row) + 1,
                                     static_cast<std::int32_t>(column) + 1, wavelength);
                signal.noise->powerSamples[k] += SquaredMagnitude(element) * input->powerSamples[k];
            }
        }
    }
    return true;
}

Status FillOutputs(Device& device) {
    const OpSigASE* noise = nullptr;
    if (CommonNoiseGrid(device, noise) != Status::Success ||
        CheckWavelengths(device) != Status::Success) {
        return Status::Error;
    }
    bool made = true;
    for (OutputPort& output : device.outputs) made = made && !Make(output.signal, CreateOpSignal);
    if (!made) return device.report.Fail("can't allocate output signal.");
    Gathered gathered;
    while (Gather(device.inputs, gathered)) {
        if (AddChannels(device, gathered) != Status::Success) return Status::Error;
    }
    if (noise && !AddNoise(device, *noise)) {
        return device.report.Fail("can't allocate output signal.");
    }
    return Status::Success;
}

// --- The table's file ---

Status RunCommand(const MultiportParams& params, const StopWord& stop, const ModelReport& report) {
    if (params.commandLine.find_first_not_of(" \t") == std::string::npos) return Status::Success;
    if (!ExternalCommandsAllowed()) {
        return report.Refuse("its command line is refused: external commands are off");
    }
    // What a failed or stopped command left in the file is not to be read.
    CurrentHost().messages->ShowNote(Concat("component '", report.path, report.owner,
                                            "' runs its command line: ", params.commandLine));
    const int exitStatus = RunCommandLine(params.commandLine, stop);
    if (exitStatus == 0 || stop != 0) return Status::Success;
    return report.Refuse("its command line '", params.commandLine, "' ",
                         exitStatus < 0 ? std::string("cannot be started")
                                        : Concat("ended with status ", exitStatus));
}

Status ReadTable(const MultiportParams& params, const ModelReport& report) {
    std::string text, reason;
    if (!ReadWholeFile(params.fileName, text, reason, maxMatrixFileBytes)) {
        static_cast<void>(report.Fail("can't open transfer matrix file.\n"));
        return report.Refuse("file '", params.fileName, "': ", reason);
    }
    const Status status = ReadTransferMatrix(text, params.fileName, TransferTable(), reason);
    return status == Status::Success ? status : report.Refuse(reason);
}

}  // namespace

std::vector<ParamSpec> MultiportParamSpecs() {
    return SpecsOf(rows);
}

MultiportParams ReadMultiportParams(Parameter* parameters) {
    MultiportParams params;
    ReadParams(rows, parameters, params);
    return params;
}

TransferMatrix& TransferTable() {
    static TransferMatrix table;
    return table;
}

void ResetTransferTable() {
    TransferTable() = {};
}

Status ApplyTransferTable(const Nodelist* inputs, Nodelist* outputs, SignalBandwidth bandwidth,
                          const ModelReport& report) {
    const TransferMatrix& matrix = TransferTable();
    if (matrix.points == 0) {
        return report.Refuse("there is no transfer matrix yet");
    }
    Device device{matrix, bandwidth, report, {}, {}, nullptr, 0};
    if (OpenPorts(device, inputs, outputs) != Status::Success) return Status::Error;
    const auto isOpen = [](const InputPort& input) { return !input.next && !input.noise; };
    if (std::all_of(device.inputs.begin(), device.inputs.end(), isOpen)) return Status::Success;
    if (FillOutputs(device) != Status::Success) return Status::Error;
    for (OutputPort& output : device.outputs) {
        outputs->sig = output.signal.release();
        outputs->sigType = OpSigType;
        outputs = outputs->next;
    }
    return Status::Success;
}

Status RunMultiportOpticalDevice(const ModelCall& call) {
    const MultiportParams params = ReadMultiportParams(call.component.parameters);
    const StopWord& stop = call.options.stop;
    if (RunCommand(params, stop, call) != Status::Success) return Status::Error;
    if (stop != 0) return Status::Success;  // the run ends here, without the table
    if (ReadTable(params, call) != Status::Success) return Status::Error;
    return ApplyTransferTable(call.inputs, call.outputs, params.bandwidth, call);
}

}  // namespace photrak
