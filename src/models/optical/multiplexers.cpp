// Each model is its paths: which signal goes through which filter to which port.
#include "models/optical/multiplexers.h"

#include <string>
#include <utility>

#include "kernel/parameters.h"
#include "models/common/refusals.h"
#include "models/common/spectrum_grid.h"
#include "models/optical/optical_filter.h"
#include "models/optical/signal_join.h"

namespace photrak {
namespace {

struct MuxParams {
    std::string owner;  // the component's name, for messages
    bool singleChannel = false;
    bool inFrequency = false;  // center, spacing and widths in Hz, otherwise in m
    double center = 0.0;       // of the first filter
    double spacing = 0.0;      // from port to port
    double BW = 0.0, BW0dB = 0.0, FSR = 0.0;
    double loss = 0.0;       // dB
    std::string filterType;  // "None": no filter
    std::string filename;    // of the custom types
    std::int32_t order = 1;
    std::string shiftCarrier;  // "Yes", "No", "Auto"
};

enum class FilterUse { Bank, Single };  // a filter for each port, or one of add and drop

MuxParams ReadMuxParams(const Component& component, FilterUse use) {
    const bool bank = use == FilterUse::Bank;
    Parameter* list = component.parameters;
    MuxParams params;
    params.owner = component.name;
    params.singleChannel = GetParamText(list, "Representation", "") == "SingleChannel";
    params.inFrequency = bank && GetParamText(list, "filterSpecMode", "") == "Frequency";
    params.center = GetParamDouble(list, bank ? "firstFilterCenter" : "filterCenter", 1.55e-6);
    params.spacing = GetParamDouble(list, "filterSpacing", 0.0);
    params.BW = GetParamDouble(list, "filterBW", 0.4e-9);
    params.BW0dB = GetParamDouble(list, "filterBW0dB", 0.2e-9);
    params.FSR = GetParamDouble(list, "filterFSR", 121e-9);
    params.loss = GetParamDouble(list, "loss", 0.0);
    params.filterType = GetParamText(list, "filterType", "None");
    params.filename = GetParamText(list, "filename", "none");
    params.order = GetParamInt(list, "filterOrder", 1);
    params.shiftCarrier = GetParamText(list, "shiftcarrier", "No");
    return params;
}

// --- Filters ---

/// Width in m of a band of w Hz around f Hz.
double WidthInMeters(double f, double w) {
    return (1.0 / (f - w / 2.0) - 1.0 / (f + w / 2.0)) * lightSpeed;
}

/// A free spectral range may reach beyond frequency 0; then it is counted upward from the center.
double FsrInMeters(double f, double w) {
    return f <= w / 2.0 ? (1.0 / f - 1.0 / (f + w)) * lightSpeed : WidthInMeters(f, w);
}

/// The filter with its center there, at row 1, column 1 of a custom file.
OpticalFilterRecord FilterAt(const MuxParams& params, double center) {
    OpticalFilterRecord record;
    record.owner = params.owner;
    record.type = params.filterType;
    record.filename = params.filename;
    record.order = params.order;
    record.L = LossFactor(params.loss);
    record.wavelength = center;
    record.BW = params.BW;
    record.BW0dB = params.BW0dB;
    record.FSR = params.FSR;
    if (!params.inFrequency) return record;
    record.wavelength = lightSpeed / center;
    record.BW = WidthInMeters(center, params.BW);
    record.BW0dB = WidthInMeters(center, params.BW0dB);
    record.FSR = FsrInMeters(center, params.FSR);
    return record;
}

OpticalFilterRecord NotchAt(const MuxParams& params, double center) {
    OpticalFilterRecord record = FilterAt(params, center);
    record.inversion = Inversion::Power;
    return record;
}

Status Filter(const OpticalFilterRecord& record, OpSignal* signal, std::string& errorText) {
    if (!signal || record.type == "None") return Status::Success;
    return ApplyOpticalFilter(record, signal->channels, signal->noise, errorText);
}

/// Whether a filter moves the channels of the signal onto its center.
bool ShiftsCarrier(const MuxParams& params, const OpSignal* signal) {
    if (params.shiftCarrier != "Auto") return params.shiftCarrier == "Yes";
    return signal && signal->channels && !signal->channels->next;
}

// --- Ports ---

void Store(Owned<OpSignal> signal, Nodelist& output) {
    output.sig = signal.release();
    output.sigType = OpSigType;
}

/// A filtered copy of a signal, which may be null.
Status CopyThrough(const OpticalFilterRecord& record, const MuxParams& params,
                   const OpSignal* source, Owned<OpSignal>& copy, std::string& errorText) {
    if (Make(copy, CopyOpSignal, source)) {
        return RefuseComponent(params.owner, "could not copy the input signal", errorText);
    }
    return Filter(record, copy.get(), errorText);
}

/// Joins what stands in the parts; nothing where no part holds a signal.
Status JoinToOne(std::string_view device, const MuxParams& params, OpSignals& parts,
                 Owned<OpSignal>& joined, std::string& errorText) {
    bool empty = true;
    for (const Owned<OpSignal>& part : parts) empty = empty && !part;
    if (empty) return Status::Success;
    const Status status = JoinSignals(device, parts, joined, errorText);
    if (status != Status::Success || !params.singleChannel) return status;
    return MergeToOneChannel(*joined, errorText);
}

Status ReadSingleInput(const MuxParams& params, const ModelCall& call, const OpSignal*& signal) {
    if (!call.inputs || call.inputs->sigType != OpSigType) {
        return RefuseComponent(params.owner, "the input signal is not optical", call.errorText);
    }
    signal = static_cast<const OpSignal*>(call.inputs->sig);
    return Status::Success;
}

// --- Add and drop ---

/// The notch in the line and the filter of the added signal, joined.
Status AddToLine(std::string_view device, const MuxParams& params, OpSignals& parts,
                 Owned<OpSignal>& joined, std::string& errorText) {
    if (parts.size() != 2) return RefuseComponent(params.owner, "two inputs are needed", errorText);
    Status status = Filter(NotchAt(params, params.center), parts[0].get(), errorText);
    if (status != Status::Success) return status;
    OpticalFilterRecord added = FilterAt(params, params.center);
    added.row = 2;
    added.shiftCarrier = ShiftsCarrier(params, parts[1].get());
    status = Filter(added, parts[1].get(), errorText);
    if (status != Status::Success) return status;
    return JoinToOne(device, params, parts, joined, errorText);
}

/// The channels that leave the line.
Status Drop(const MuxParams& params, const OpSignal* line, Owned<OpSignal>& dropped,
            std::string& errorText) {
    OpticalFilterRecord record = FilterAt(params, params.center);
    record.column = 2;
    record.shiftCarrier = ShiftsCarrier(params, line);
    return CopyThrough(record, params, line, dropped, errorText);
}

}  // namespace

Status RunIdealOpticalMux(const ModelCall& call) {
    const MuxParams params = ReadMuxParams(call.component, FilterUse::Bank);
    OpSignals parts;
    Status status = CopyInputs("MUX", call.inputs, parts, call.errorText);
    double center = params.center;
    std::int32_t port = 0;
    for (const Owned<OpSignal>& part : parts) {
        if (status != Status::Success) return status;
        OpticalFilterRecord record = FilterAt(params, center);
        record.column = ++port;
        status = Filter(record, part.get(), call.errorText);
        center += params.spacing;
    }
    Owned<OpSignal> joined;
    if (status == Status::Success) {
        status = JoinToOne("MUX", params, parts, joined, call.errorText);
    }
    if (status == Status::Success) Store(std::move(joined), *call.outputs);
    return status;
}

Status RunOpticalDemux(const ModelCall& call) {
    const MuxParams params = ReadMuxParams(call.component, FilterUse::Bank);
    const OpSignal* line = nullptr;
    Status status = ReadSingleInput(params, call, line);
    OpSignals separated;
    double center = params.center;
    std::int32_t port = 0;
    for ([[maybe_unused]] const Nodelist& output : Items(call.outputs)) {
        if (status != Status::Success) return status;
        OpticalFilterRecord record = FilterAt(params, center);
        record.column = ++port;
        record.shiftCarrier = ShiftsCarrier(params, line);
        separated.emplace_back();
        status = CopyThrough(record, params, line, separated.back(), call.errorText);
        center += params.spacing;
    }
    if (status != Status::Success) return status;
    auto next = separated.begin();
    for (Nodelist& output : Items(call.outputs)) Store(std::move(*next++), output);
    return Status::Success;
}

Status RunOpticalAddMux(const ModelCall& call) {
    const MuxParams params = ReadMuxParams(call.component, FilterUse::Single);
    OpSignals parts;
    Owned<OpSignal> joined;
    Status status = CopyInputs("AddMux", call.inputs, parts, call.errorText);
    if (status == Status::Success) {
        status = AddToLine("AddMux", params, parts, joined, call.errorText);
    }
    if (status == Status::Success) Store(std::move(joined), *call.outputs);
    return status;
}

Status RunOpticalDropMux(const ModelCall& call) {
    const MuxParams params = ReadMuxParams(call.component, FilterUse::Single);
    if (!call.outputs || !call.outputs->next) {
        return RefuseComponent(params.owner, "two outputs are needed", call.errorText);
    }
    const OpSignal* line = nullptr;
    Owned<OpSignal> through, dropped;
    Status status = ReadSingleInput(params, call, line);
    if (status == Status::Success) {
        status = CopyThrough(NotchAt(params, params.center), params, line, through, call.errorText);
    }
    if (status == Status::Success) status = Drop(params, line, dropped, call.errorText);
    if (status != Status::Success) return status;
    Store(std::move(through), *call.outputs);
    Store(std::move(dropped), *call.outputs->next);
    return Status::Success;
}

Status RunOpticalAddDropMux(const ModelCall& call) {
    const MuxParams params = ReadMuxParams(call.component, FilterUse::Single);
    if (!call.outputs || !call.outputs->next) {
        return RefuseComponent(params.owner, "two outputs are needed", call.errorText);
    }
    OpSignals parts;
    Owned<OpSignal> joined, dropped;
    Status status = CopyInputs("AddDrop", call.inputs, parts, call.errorText);
    if (status == Status::Success) {
        status = AddToLine("AddDrop", params, parts, joined, call.errorText);
    }
    if (status != Status::Success) return status;
    const auto* line = static_cast<const OpSignal*>(call.inputs->sig);
    status = Drop(params, line, dropped, call.errorText);
    if (status != Status::Success) return status;
    Store(std::move(joined), *call.outputs);
    Store(std::move(dropped), *call.outputs->next);
    return Status::Success;
}

}  // namespace photrak
