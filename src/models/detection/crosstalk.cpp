// Inputs of one time grid may start at different times: samples are added where they share the
// time, each signal being one period of a repeating pattern.
#include "models/detection/crosstalk.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/text.h"
#include "kernel/signals.h"
#include "numeric/messages.h"

namespace photrak {
namespace {

constexpr double beyondAllTimes = 1e32;  // s
constexpr std::string_view doNotMatch = "CrosstalkBlock error: incompatible input signals\n";
constexpr std::string_view wrongSize =
    "CrosstalkBlock error: crosstalk matrix incompatible with number of input signals\n";

enum class Addition { Complex, Magnitudes };

struct CrosstalkParams {
    Addition addition = Addition::Complex;
    bool takesMatrix = false;
    const ArrayRecord* matrix = nullptr;
    // Factors on the diagonal, beside it and two off it.
    double inChannel = 1.0, nearest = 1.0, nextNearest = 1.0;
};

/// The switch has two names; both must agree to complex addition.
void StoreAddition(CrosstalkParams& params, std::string_view word) {
    if (word != "Coherent" && word != "Complex") params.addition = Addition::Magnitudes;
}

constexpr ParamRow<CrosstalkParams> paramRows[] = {
    {"Mode", StoreAddition, "Coherent", Words{"Coherent Magnitude"}},
    {"coherency", StoreAddition, "Complex", Words{"Complex Magnitude"}},
    {"ParameterType",
     [](CrosstalkParams& params, std::string_view word) { params.takesMatrix = word == "Array"; },
     "Neighbors", Words{"Neighbors Array"}},
    {"crosstalkMatrix", &CrosstalkParams::matrix},
    {"InChannelTransmission", &CrosstalkParams::inChannel, 0.0, Range::Finite,
     ParamUnit::PowerDecibels},
    {"NearestNeighborXtlk", &CrosstalkParams::nearest, -20.0, Range::Finite,
     ParamUnit::PowerDecibels},
    {"NextNearestNeighborXtlk", &CrosstalkParams::nextNearest, -40.0, Range::Finite,
     ParamUnit::PowerDecibels}};

// --- Ports ---

struct Ports {
    std::vector<const ElecSig*> inputs;  // null where a cell holds no electrical signal
    std::vector<std::int32_t> offsets;   // sample (from 0) of each at the earliest start
    const ElecSig* first = nullptr;
    double startTime = beyondAllTimes;  // s, the earliest
};

bool HaveOneGrid(const ElecSig& a, const ElecSig& b) {
    return a.UnitType == b.UnitType && a.domain == b.domain && a.bitRate == b.bitRate &&
           a.tStep == b.tStep && a.noPoints == b.noPoints && a.patternLength == b.patternLength;
}

Status OpenPorts(const ModelCall& call, Ports& ports) {
    for (const Nodelist& cell : Items(call.inputs)) {
        const bool electrical = cell.sig && cell.sigType == ElecSigType;
        const auto* input = electrical ? static_cast<const ElecSig*>(cell.sig) : nullptr;
        ports.inputs.push_back(input);
        if (!input) continue;
        if (!ports.first) ports.first = input;
        if (!HaveOneGrid(*ports.first, *input)) return call.Fail(doNotMatch);
        ports.startTime = std::min(ports.startTime, input->startTime);
    }
    std::size_t outputs = 0;
    for ([[maybe_unused]] const Nodelist& cell : Items(call.outputs)) ++outputs;
    return outputs == ports.inputs.size() ? Status::Success : call.Fail(doNotMatch);
}

Status FindOffsets(const ModelCall& call, Ports& ports) {
    for (const ElecSig* input : ports.inputs) {
        double samples = 0.0;
        if (input && input->startTime != ports.startTime) {
            samples = std::round((ports.startTime - input->startTime) / input->tStep);
            if (!std::isfinite(samples)) return call.Fail(doNotMatch);
        }
        const std::int32_t n = input ? std::max(input->noPoints, 1) : 1;
        const auto offset = static_cast<std::int32_t>(std::fmod(samples, n));
        ports.offsets.push_back(offset < 0 ? offset + n : offset);
    }
    return Status::Success;
}

// --- The matrix ---

/// n by n factors, row by row.
struct CrosstalkMatrix {
    std::size_t n = 0;
    std::vector<double> factors;

    explicit CrosstalkMatrix(std::size_t size) : n(size), factors(size * size, 0.0) {}
    double& At(std::size_t row, std::size_t column) { return factors[row * n + column]; }
};

Status FillBands(const ModelCall& call, const CrosstalkParams& params, CrosstalkMatrix& matrix) {
    const Status status = CheckParams(paramRows, params, call);
    if (status != Status::Success) return status;
    const double factors[] = {params.inChannel, params.nearest, params.nextNearest};
    for (std::size_t k = 0; k < std::size(factors); ++k) {
        for (std::size_t r = 0; r + k < matrix.n; ++r) {
            matrix.At(r, r + k) = matrix.At(r + k, r) = factors[k];
        }
    }
    return Status::Success;
}

/// A matrix whose diagonals are each constant, which tells how it goes on beyond its own size.
bool HasConstantDiagonals(const double* values, std::size_t rows, std::size_t columns) {
    for (std::size_t r = 1; r < rows; ++r) {
        for (std::size_t c = 1; c < columns; ++c) {
            if (values[r * columns + c] != values[(r - 1) * columns + c - 1]) return false;
        }
    }
    return true;
}

Status FillFromArray(const ModelCall& call, const ArrayRecord* array, CrosstalkMatrix& matrix) {
    if (!array) return call.Fail(wrongSize);
    const auto* values = static_cast<const double*>(array->data);
    const auto rows = static_cast<std::size_t>(array->rows);
    const auto columns = static_cast<std::size_t>(array->cols);
    const std::size_t n = matrix.n;
    if (rows == n && columns >= n) {
        for (std::size_t r = 0; r < n; ++r) std::copy_n(values + r * columns, n, &matrix.At(r, 0));
    } else if (HasConstantDiagonals(values, rows, columns)) {
        for (std::size_t k = 0; k < n; ++k) {
            for (std::size_t r = 0; r + k < n; ++r) {
                if (k < columns) matrix.At(r, r + k) = values[k];
                if (k < rows) matrix.At(r + k, r) = values[k * columns];
            }
        }
    } else {
        return call.Fail(wrongSize);
    }
    for (const double factor : matrix.factors) {
        const Status status = CheckRange(call, "crosstalkMatrix", factor, Range::Finite);
        if (status != Status::Success) return status;
    }
    return Status::Success;
}

// --- The sum ---

struct Samples {
    const Complex* samples;
    std::int32_t offset;
};

/// Adds the weighted input to the output, both counted from the sample at the earliest start.
void AddSamples(Complex* out, std::int32_t outOffset, const Samples& in, double factor,
                std::int32_t n, Addition addition) {
    std::int32_t j = outOffset, m = in.offset;
    for (std::int32_t s = 0; s < n; ++s) {
        const Complex value = in.samples[m + 1];
        const Complex added = addition == Addition::Complex ? value : MakeComplex(Magnitude(value));
        out[j + 1] = out[j + 1] + factor * added;
        if (++j == n) j = 0;
        if (++m == n) m = 0;
    }
}

/// Output i: the matrix is read column by column.
void AddInputs(const Ports& ports, CrosstalkMatrix& matrix, std::size_t i, Addition addition,
               ElecSig& output) {
    const std::int32_t n = output.noPoints;
    for (std::size_t k = 0; k < matrix.n; ++k) {
        const ElecSig* input = ports.inputs[k];
        const double factor = matrix.At(k, i);
        if (!input || factor == 0.0) continue;
        const std::int32_t offset = ports.offsets[k];
        AddSamples(output.elecSamples, ports.offsets[i], {input->elecSamples, offset}, factor, n,
                   addition);
        // By design: deviations add like values, not as squares, so that the noise of
        // receivers that leak into each other counts as fully correlated.
        AddSamples(output.sigmaSamples, ports.offsets[i], {input->sigmaSamples, offset}, factor, n,
                   addition);
    }
}

Status MakeOutput(const ModelCall& call, const Ports& ports, std::size_t i,
                  Owned<ElecSig>& output) {
    const ElecSig& first = *ports.first;
    if (Make(output, CreateElecSig, first.noPoints)) {
        ReportNoMemory(call.errorText, Concat("an output of '", call.owner, "'"));
        return Status::Error;
    }
    output->UnitType = first.UnitType;
    output->domain = first.domain;
    output->bitRate = first.bitRate;
    output->tStep = first.tStep;
    output->patternLength = first.patternLength;
    const ElecSig* input = ports.inputs[i];
    output->startTime = input ? input->startTime : ports.startTime;
    output->spareCount = input ? input->spareCount : 1;
    return Status::Success;
}

}  // namespace

std::vector<ParamSpec> CrosstalkParamSpecs() {
    return SpecsOf(paramRows);
}

Status RunCrosstalkBlock(const ModelCall& call) {
    Ports ports;
    Status status = OpenPorts(call, ports);
    if (status != Status::Success || !ports.first) return status;
    CrosstalkMatrix matrix(ports.inputs.size());
    CrosstalkParams params;
    ReadParams(paramRows, call.component.parameters, params);
    status = params.takesMatrix ? FillFromArray(call, params.matrix, matrix)
                                : FillBands(call, params, matrix);
    if (status == Status::Success) status = FindOffsets(call, ports);
    if (status != Status::Success) return status;
    std::size_t i = 0;
    for (Nodelist& cell : Items(call.outputs)) {
        Owned<ElecSig> output;
        status = MakeOutput(call, ports, i, output);
        if (status != Status::Success) return status;
        AddInputs(ports, matrix, i++, params.addition, *output);
        cell.sig = output.release();
        cell.sigType = ElecSigType;
    }
    return Status::Success;
}

}  // namespace photrak
