// Each model is its paths: which signal goes through which filter to which port.
#include "models/optical/multiplexers.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "models/common/spectrum_grid.h"
#include "models/optical/optical_filter.h"
#include "models/optical/signal_join.h"

namespace photrak {
namespace {

struct MuxParams {
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

void StoreRepresentation(MuxParams& params, std::string_view word) {
    params.singleChannel = word == "SingleChannel";
}
void StoreMode(MuxParams& params, std::string_view word) {
    params.inFrequency = word == "Frequency";
}

constexpr Words filterTypes = {
    "None Gaussian FabryPerot Ideal Trapezoidal Custom1 Custom2 Custom3"};
constexpr Words shiftWords = {"No Yes Auto"};

// The tables of the five models are put together from these. A multiplexer makes no filter by
// default, all others a Gaussian one.
constexpr ParamRow<MuxParams> representationRows[] = {
    {"Representation", StoreRepresentation, "ChannelList", Words{"ChannelList SingleChannel"}}};
constexpr ParamRow<MuxParams> noFilterRows[] = {
    {"filterType", &MuxParams::filterType, "None", filterTypes}};
constexpr ParamRow<MuxParams> gaussianRows[] = {
    {"filterType", &MuxParams::filterType, "Gaussian", filterTypes}};
constexpr ParamRow<MuxParams> bankRows[] = {
    {"filterSpecMode", StoreMode, "Frequency", Words{"Frequency Wavelength"}},
    {"firstFilterCenter", &MuxParams::center, 193.1e12},
    {"filterSpacing", &MuxParams::spacing, 100e9},
    {"filterBW", &MuxParams::BW, 50e9},
    {"filterBW0dB", &MuxParams::BW0dB, 25e9},
    {"filterFSR", &MuxParams::FSR, 15e12}};
constexpr ParamRow<MuxParams> singleRows[] = {{"filterCenter", &MuxParams::center, 1.55e-6},
                                              {"filterBW", &MuxParams::BW, 0.4e-9},
                                              {"filterBW0dB", &MuxParams::BW0dB, 0.2e-9},
                                              {"filterFSR", &MuxParams::FSR, 121e-9}};
constexpr ParamRow<MuxParams> filterRows[] = {{"filterOrder", &MuxParams::order, 1},
                                              {"filename", &MuxParams::filename, ""},
                                              {"loss", &MuxParams::loss, 0.0}};
constexpr ParamRow<MuxParams> shiftRows[] = {
    {"shiftcarrier", &MuxParams::shiftCarrier, "No", shiftWords}};

template <class... Tables>
MuxParams ReadTables(Parameter* parameters, const Tables&... tables) {
    MuxParams params;
    (ReadParams(tables, parameters, params), ...);
    return params;
}

/// A filter's center must be above 0 and, where the type has a band of its own, above half of it.
Status CheckCenter(const MuxParams& params, double center, bool hasBand,
                   const ModelReport& report) {
    const std::string_view unit = params.inFrequency ? " Hz" : " m";
    if (!(center > 0.0 && std::isfinite(center))) {
        return report.Refuse("a filter has its center at ", center, unit);
    }
    if (!hasBand || params.BW < 2.0 * center) return Status::Success;
    return report.Refuse("parameter 'filterBW' is ", params.BW, unit, ", too wide for a filter at ",
                         center, unit);
}

/// What the filter type needs, under the names that the block has for it.
Status CheckFilter(const MuxParams& params, const Nodelist* filteredPorts,
                   const ModelReport& report) {
    const std::string& type = params.filterType;
    const bool isGaussian = type == "Gaussian", isTrapezoid = type == "Trapezoidal";
    const bool isResonator = type == "FabryPerot";
    const bool hasBand = isGaussian || isTrapezoid || isResonator || type == "Ideal";
    const bool hasWidth = hasBand || type == "Custom2" || type == "Custom3";
    if (!hasWidth && type != "Custom1") return Status::Success;
    Status status = Status::Success;
    if (hasWidth) status = CheckRange(report, "filterBW", params.BW, Range::Positive);
    if (status == Status::Success && isTrapezoid) {
        status = CheckRange(report, "filterBW0dB", params.BW0dB, Range::NotNegative);
    }
    if (status == Status::Success && isResonator) {
        status = CheckRange(report, "filterFSR", params.FSR, Range::Positive);
    }
    if (status == Status::Success && isGaussian && params.order < 1) {
        return report.RefuseValue("filterOrder", params.order, "at least 1");
    }
    double center = params.center;
    for ([[maybe_unused]] const Nodelist& port : Items(filteredPorts)) {
        if (status == Status::Success) status = CheckCenter(params, center, hasBand, report);
        center += params.spacing;
    }
    return status;
}

/// The same where one filter serves all ports.
Status CheckSingleFilter(const MuxParams& params, const ModelReport& report) {
    const Nodelist one{};
    return CheckFilter(params, &one, report);
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
    record.type = params.filterType;
    record.filename = params.filename;
    record.order = params.order;
    record.loss = params.loss;
    record.wavelength = center;
    record.BW = params.BW;
    record.BW0dB = params.BW0dB;
    record.FSR = params.FSR;
    if (!params.inFrequency) return record;
    record.wavelength = lightSpeed / center;
    record.BW = WidthInMeters(center, params.BW);
    record.BW0dB = WidthInMeters(center, std::min(params.BW0dB, params.BW));
    record.FSR = FsrInMeters(center, params.FSR);
    return record;
}

OpticalFilterRecord NotchAt(const MuxParams& params, double center) {
    OpticalFilterRecord record = FilterAt(params, center);
    record.inversion = Inversion::Power;
    return record;
}

/// Filters in place. The response is made anew, but for the file of a custom type, which it keeps
/// from filter to filter.
Status Filter(const OpticalFilterRecord& record, FilterResponse& response, OpSignal* signal,
              const ModelReport& report) {
    if (!signal || record.type == "None") return Status::Success;
    const Status status = PrepareFilterResponse(record, response, report);
    if (status != Status::Success) return status;
    return ApplyOpticalFilter(response, signal->channels, signal->noise, report);
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
Status CopyThrough(const OpticalFilterRecord& record, FilterResponse& response,
                   const OpSignal* source, Owned<OpSignal>& copy, const ModelReport& report) {
    if (!source) return Status::Success;
    const bool filters = record.type != "None";
    if (filters) {
        const Status status = PrepareFilterResponse(record, response, report);
        if (status != Status::Success) return status;
    }
    if (filters ? !MakeFilterCopy(response, *source, copy)
                : Make(copy, CopyOpSignal, source) != 0) {
        return report.Refuse("could not copy the input signal");
    }
    return filters ? FilterInto(response, *source, copy, report) : Status::Success;
}

/// Joins what stands in the parts; nothing where no part holds a signal.
Status JoinToOne(std::string_view device, const MuxParams& params, OpSignals& parts,
                 Owned<OpSignal>& joined, const ModelReport& report) {
    bool empty = true;
    for (const Owned<OpSignal>& part : parts) empty = empty && !part;
    if (empty) return Status::Success;
    const Status status = JoinSignals(device, parts, joined, report);
    if (status != Status::Success || !params.singleChannel) return status;
    return MergeToOneChannel(*joined, report);
}

Status ReadSingleInput(const ModelCall& call, const OpSignal*& signal) {
    if (!call.inputs || call.inputs->sigType != OpSigType) {
        return call.Refuse("the input signal is not optical");
    }
    signal = static_cast<const OpSignal*>(call.inputs->sig);
    return Status::Success;
}

// --- Add and drop ---

/// The notch in the line and the filter of the added signal, joined.
Status AddToLine(std::string_view device, const MuxParams& params, FilterResponse& response,
                 OpSignals& parts, Owned<OpSignal>& joined, const ModelReport& report) {
    if (parts.size() != 2) return report.Refuse("two inputs are needed");
    Status status = Filter(NotchAt(params, params.center), response, parts[0].get(), report);
    if (status != Status::Success) return status;
    OpticalFilterRecord added = FilterAt(params, params.center);
    added.row = 2;
    added.shiftCarrier = ShiftsCarrier(params, parts[1].get());
    status = Filter(added, response, parts[1].get(), report);
    if (status != Status::Success) return status;
    return JoinToOne(device, params, parts, joined, report);
}

/// The channels that leave the line.
Status Drop(const MuxParams& params, FilterResponse& response, const OpSignal* line,
            Owned<OpSignal>& dropped, const ModelReport& report) {
    OpticalFilterRecord record = FilterAt(params, params.center);
    record.column = 2;
    record.shiftCarrier = ShiftsCarrier(params, line);
    return CopyThrough(record, response, line, dropped, report);
}

}  // namespace

std::vector<ParamSpec> IdealOpticalMuxParamSpecs() {
    return SpecsOf(representationRows, noFilterRows, bankRows, filterRows);
}
std::vector<ParamSpec> OpticalDemuxParamSpecs() {
    return SpecsOf(gaussianRows, bankRows, filterRows, shiftRows);
}
std::vector<ParamSpec> OpticalAddMuxParamSpecs() {
    return SpecsOf(representationRows, gaussianRows, singleRows, filterRows, shiftRows);
}
std::vector<ParamSpec> OpticalDropMuxParamSpecs() {
    return SpecsOf(gaussianRows, singleRows, filterRows, shiftRows);
}
std::vector<ParamSpec> OpticalAddDropMuxParamSpecs() {
    return SpecsOf(representationRows, gaussianRows, singleRows, filterRows, shiftRows);
}

Status RunIdealOpticalMux(const ModelCall& call) {
    const MuxParams params = ReadTables(call.component.parameters, representationRows, noFilterRows,
                                        bankRows, filterRows);
    FilterResponse response;
    OpSignals parts;
    Status status = CheckFilter(params, call.inputs, call);
    if (status == Status::Success) status = CopyInputs("MUX", call.inputs, parts, call);
    double center = params.center;
    std::int32_t port = 0;
    for (const Owned<OpSignal>& part : parts) {
        if (status != Status::Success) return status;
        OpticalFilterRecord record = FilterAt(params, center);
        record.column = ++port;
        status = Filter(record, response, part.get(), call);
        center += params.spacing;
    }
    Owned<OpSignal> joined;
    if (status == Status::Success) {
        status = JoinToOne("MUX", params, parts, joined, call);
    }
    if (status == Status::Success) Store(std::move(joined), *call.outputs);
    return status;
}

Status RunOpticalDemux(const ModelCall& call) {
    const MuxParams params =
        ReadTables(call.component.parameters, gaussianRows, bankRows, filterRows, shiftRows);
    FilterResponse response;
    const OpSignal* line = nullptr;
    Status status = CheckFilter(params, call.outputs, call);
    if (status == Status::Success) status = ReadSingleInput(call, line);
    OpSignals separated;
    double center = params.center;
    std::int32_t port = 0;
    for ([[maybe_unused]] const Nodelist& output : Items(call.outputs)) {
        if (status != Status::Success) return status;
        OpticalFilterRecord record = FilterAt(params, center);
        record.column = ++port;
        record.shiftCarrier = ShiftsCarrier(params, line);
        separated.emplace_back();
        status = CopyThrough(record, response, line, separated.back(), call);
        center += params.spacing;
    }
    if (status != Status::Success) return status;
    auto next = separated.begin();
    for (Nodelist& output : Items(call.outputs)) Store(std::move(*next++), output);
    return Status::Success;
}

Status RunOpticalAddMux(const ModelCall& call) {
    const MuxParams params = ReadTables(call.component.parameters, representationRows, gaussianRows,
                                        singleRows, filterRows, shiftRows);
    FilterResponse response;
    OpSignals parts;
    Owned<OpSignal> joined;
    Status status = CheckSingleFilter(params, call);
    if (status == Status::Success) status = CopyInputs("AddMux", call.inputs, parts, call);
    if (status == Status::Success) {
        status = AddToLine("AddMux", params, response, parts, joined, call);
    }
    if (status == Status::Success) Store(std::move(joined), *call.outputs);
    return status;
}

Status RunOpticalDropMux(const ModelCall& call) {
    const MuxParams params =
        ReadTables(call.component.parameters, gaussianRows, singleRows, filterRows, shiftRows);
    FilterResponse response;
    if (!call.outputs || !call.outputs->next) {
        return call.Refuse("two outputs are needed");
    }
    const OpSignal* line = nullptr;
    Owned<OpSignal> through, dropped;
    Status status = CheckSingleFilter(params, call);
    if (status == Status::Success) status = ReadSingleInput(call, line);
    if (status == Status::Success) {
        status = CopyThrough(NotchAt(params, params.center), response, line, through, call);
    }
    if (status == Status::Success) status = Drop(params, response, line, dropped, call);
    if (status != Status::Success) return status;
    Store(std::move(through), *call.outputs);
    Store(std::move(dropped), *call.outputs->next);
    return Status::Success;
}

Status RunOpticalAddDropMux(const ModelCall& call) {
    const MuxParams params = ReadTables(call.component.parameters, representationRows, gaussianRows,
                                        singleRows, filterRows, shiftRows);
    FilterResponse response;
    if (!call.outputs || !call.outputs->next) {
        return call.Refuse("two outputs are needed");
    }
    OpSignals parts;
    Owned<OpSignal> joined, dropped;
    Status status = CheckSingleFilter(params, call);
    if (status == Status::Success) status = CopyInputs("AddDrop", call.inputs, parts, call);
    if (status == Status::Success) {
        status = AddToLine("AddDrop", params, response, parts, joined, call);
    }
    if (status != Status::Success) return status;
    const auto* line = static_cast<const OpSignal*>(call.inputs->sig);
    status = Drop(params, response, line, dropped, call);
    if (status != Status::Success) return status;
    Store(std::move(joined), *call.outputs);
    Store(std::move(dropped), *call.outputs->next);
    return Status::Success;
}

}  // namespace photrak
