// The real and imaginary parts as rows of one table.
#include "models/optical/jones_matrix.h"

namespace photrak {
namespace {

struct Coefficients {
    double r11 = 0.0, i11 = 0.0, r12 = 0.0, i12 = 0.0, r21 = 0.0, i21 = 0.0, r22 = 0.0, i22 = 0.0;
};
constexpr ParamRow<Coefficients> rows[] = {
    {"coef11r", &Coefficients::r11, 1.0}, {"coef11i", &Coefficients::i11, 0.0},
    {"coef12r", &Coefficients::r12, 0.0}, {"coef12i", &Coefficients::i12, 0.0},
    {"coef21r", &Coefficients::r21, 0.0}, {"coef21i", &Coefficients::i21, 0.0},
    {"coef22r", &Coefficients::r22, 1.0}, {"coef22i", &Coefficients::i22, 0.0}};

}  // namespace

JonesMatrix operator*(double factor, const JonesMatrix& m) {
    return {factor * m.m11, factor * m.m12, factor * m.m21, factor * m.m22};
}

std::vector<ParamSpec> CustomMatrixParamSpecs() {
    return SpecsOf(rows);
}

Status ReadCustomMatrix(Parameter* parameters, JonesMatrix& matrix, const ModelReport& report) {
    Coefficients c;
    ReadParams(rows, parameters, c);
    matrix = {{c.r11, c.i11}, {c.r12, c.i12}, {c.r21, c.i21}, {c.r22, c.i22}};
    return CheckParams(rows, c, report);
}

}  // namespace photrak
