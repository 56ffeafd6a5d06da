// Jones calculus: (Ex, Ey) is multiplied by a 2 x 2 matrix that the mode sets.
// Source: R. C. Jones, J. Opt. Soc. Am. 31, 488 (1941).
#include "models/optical/polarization_transformer.h"

#include <algorithm>
#include <cmath>

#include "base/units.h"
#include "kernel/parameters.h"
#include "models/common/ase_spectra.h"
#include "models/common/parameter_limits.h"
#include "models/common/port_copies.h"
#include "models/common/refusals.h"
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

Status ReadMatrix(const ModelCall& call, JonesMatrix& matrix) {
    const Component& component = call.component;
    const std::string_view word = GetParamText(component.parameters, "mode", "Rotation");
    if (word == "Custom") return ReadCustomMatrix(component, matrix, call.errorText);
    const auto* mode = std::find_if(std::begin(modes), std::end(modes),
                                    [&](const Mode& row) { return row.word == word; });
    if (mode == std::end(modes)) {
        return RefuseComponent(component.name, Concat("mode '", word, "' is not known"),
                               call.errorText);
    }
    const double angle = GetParamDouble(component.parameters, "angle", 0.0);
    matrix = mode->matrix(angle * radiansPerDegree);
    return CheckRange(component.name, "angle", angle, Range::Finite, call.errorText);
}

void Transform(const JonesMatrix& m, OpSig& channel) {
    for (std::int32_t i = 1; i <= channel.noPoints; ++i) {
        const Complex x = channel.Ex_samples[i], y = channel.Ey_samples[i];
        channel.Ex_samples[i] = m.m11 * x + m.m12 * y;
        channel.Ey_samples[i] = m.m21 * x + m.m22 * y;
    }
}

}  // namespace

Status RunPolarizationTransformer(const ModelCall& call) {
    constexpr PortTexts texts = {"ERROR in Polarization Transformer: invalid input signals\n",
                                 "Error in copying OpSig in Polarizarion Transformer.\n"};
    const Component& component = call.component;
    const double loss = GetParamDouble(component.parameters, "loss", 0.0);
    JonesMatrix matrix;
    Status status = CheckRange(component.name, "loss", loss, Range::Finite, call.errorText);
    if (status == Status::Success) status = ReadMatrix(call, matrix);
    if (status != Status::Success) return status;
    const double L = LossFactor(loss);
    matrix = L * matrix;
    return ChangeCopies(call, texts, [&](OpSignal& signal) {
        for (OpSig& channel : Items(signal.channels)) {
            if (channel.noPoints >= 1 && !channel.Ey_samples && AddEySamples(&channel)) {
                AppendPiece(call.errorText, "insufficient memory in Polarization Transformer\n");
                return Status::Error;
            }
            Transform(matrix, channel);
        }
        // Noise is unpolarized on the way in and taken as such on the way out.
        ScaleSpectra(signal.noise, L * L);
        return Status::Success;
    });
}

}  // namespace photrak
