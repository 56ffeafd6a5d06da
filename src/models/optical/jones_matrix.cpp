// The parameters' names are one table with the members they fill.
#include "models/optical/jones_matrix.h"

#include "kernel/parameters.h"
#include "models/common/parameter_limits.h"

namespace photrak {
namespace {

struct Coefficient {
    std::string_view name;
    Complex JonesMatrix::*element;
    double Complex::*part;
    double fallback;
};
// clang-format off
constexpr Coefficient coefficients[] = {
    {"coef11r", &JonesMatrix::m11, &Complex::re, 1.0}, {"coef11i", &JonesMatrix::m11, &Complex::im, 0.0},
    {"coef12r", &JonesMatrix::m12, &Complex::re, 0.0}, {"coef12i", &JonesMatrix::m12, &Complex::im, 0.0},
    {"coef21r", &JonesMatrix::m21, &Complex::re, 0.0}, {"coef21i", &JonesMatrix::m21, &Complex::im, 0.0},
    {"coef22r", &JonesMatrix::m22, &Complex::re, 1.0}, {"coef22i", &JonesMatrix::m22, &Complex::im, 0.0},
};
// clang-format on

}  // namespace

JonesMatrix operator*(double factor, const JonesMatrix& m) {
    return {factor * m.m11, factor * m.m12, factor * m.m21, factor * m.m22};
}

Status ReadCustomMatrix(const Component& component, JonesMatrix& matrix, std::string& errorText) {
    for (const Coefficient& row : coefficients) {
        const double value = GetParamDouble(component.parameters, row.name, row.fallback);
        const Status status = CheckRange(component.name, row.name, value, Range::Finite, errorText);
        if (status != Status::Success) return status;
        matrix.*row.element.*row.part = value;
    }
    return Status::Success;
}

}  // namespace photrak
