// Jones calculus: (Ex, Ey) is multiplied by a 2 x 2 matrix that the mode sets.
// Source: R. C. Jones, J. Opt. Soc. Am. 31, 488 (1941).
#include "models/optical/polarization_transformer.h"

#include <algorithm>
#include <cmath>

#include "models/common/ase_spectra.h"
#include "models/common/port_copies.h"
#include "models/optical/filter_response.h"
#include "models/optical/jones_matrix.h"

namespace photrak {
namespace {

// --- Modes, with the angle in radians ---

JonesMatrix Rotation(double a) {
    const Complex c = {std::cos(a), 0.0}, s = {std::sin(a), 0.0};
    return {c, s, -1.0 * s, c};
}

JonesMatrix LinearPolarizer(double a) {
    const double c = std::cos(a), s = std::sin(a);
    return {{c * c, 0.0}, {s * c, 0.0}, {s * c, 0.0}, {s * s, 0.0}};
}

// By design: m22 of the circular polarizers is 0, not 0.5. What enters on y alone leaves on
// x alone; links were designed with these figures.
JonesMatrix CircularLeft(double) {
    return {{0.5, 0.0}, {0.0, 0.5}, {0.0, -0.5}, {}};
}
JonesMatrix CircularRight(double) {
    return {{0.5, 0.0}, {0.0, -0.5}, {0.0, 0.5}, {}};
}

struct Mode {
    std::string_view word;
    JonesMatrix (*matrix)(double angle);
};
constexpr Mode modes[] = {{"Rotation", Rotation},
                          {"LinearPolarizer", LinearPolarizer},
                          {"CircularLeft", CircularLeft},
                          {"CircularRight", CircularRight}};

struct TransformerParams {
    double loss = 0.0;   // dB
    double angle = 0.0;  // rad
    std::string mode;
};
constexpr ParamRow<TransformerParams> rows[] = {
    {"loss", &TransformerParams::loss, 0.0},
    {"angle", &TransformerParams::angle, 0.0, Range::Finite, ParamUnit::Degrees},
    {"mode", &TransformerParams::mode, "Rotation",
     Words{"Rotation LinearPolarizer CircularLeft CircularRight Custom"}}};

Status ReadMatrix(const ModelCall& call, const TransformerParams& params, JonesMatrix& matrix) {
    if (params.mode == "Custom") return ReadCustomMatrix(call.component.parameters, matrix, call);
    const auto* mode = std::find_if(std::begin(modes), std::end(modes),
                                    [&](const Mode& row) { return row.word == params.mode; });
    if (mode == std::end(modes)) return call.Refuse("mode '", params.mode, "' is not known");
    matrix = mode->matrix(params.angle);
    return Status::Success;
}

void Transform(const JonesMatrix& m, OpSig& channel) {
    for (std::int32_t i = 1; i <= channel.noPoints; ++i) {
        const Complex x = channel.Ex_samples[i], y = channel.Ey_samples[i];
        channel.Ex_samples[i] = m.m11 * x + m.m12 * y;
        channel.Ey_samples[i] = m.m21 * x + m.m22 * y;
    }
}

}  // namespace

std::vector<ParamSpec> PolarizationTransformerParamSpecs() {
    std::vector<ParamSpec> specs = SpecsOf(rows);
    for (const ParamSpec& spec : CustomMatrixParamSpecs()) specs.push_back(spec);
    return specs;
}

Status RunPolarizationTransformer(const ModelCall& call) {
    constexpr PortTexts texts = {"ERROR in Polarization Transformer: invalid input signals\n",
                                 "Error in copying OpSig in Polarizarion Transformer.\n"};
    TransformerParams params;
    ReadParams(rows, call.component.parameters, params);
    JonesMatrix matrix;
    Status status = CheckParams(rows, params, call);
    if (status == Status::Success) status = ReadMatrix(call, params, matrix);
    if (status != Status::Success) return status;
    const double L = LossFactor(params.loss);
    matrix = L * matrix;
    return ChangeCopies(call, texts, [&](OpSignal& signal) {
        for (OpSig& channel : Items(signal.channels)) {
            if (channel.noPoints >= 1 && !channel.Ey_samples && AddEySamples(&channel)) {
                return call.Fail("insufficient memory in Polarization Transformer\n");
            }
            Transform(matrix, channel);
        }
        // Noise is unpolarized on the way in and taken as such on the way out.
        ScaleSpectra(signal.noise, L * L);
        return Status::Success;
    });
}

}  // namespace photrak
