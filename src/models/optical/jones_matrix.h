// A 2 x 2 matrix of complex field factors, and the parameters from which two devices read one:
// between the polarizations of a port or between the ports of a coupler.
#pragma once

#include <vector>

#include "base/complex.h"
#include "kernel/param_table.h"

namespace photrak {

/// Rows are what comes out, columns what goes in.
struct JonesMatrix {
    Complex m11, m12, m21, m22;
};

JonesMatrix operator*(double factor, const JonesMatrix& m);

/// The rows coef11r, coef11i, ... coef22i, and the matrix read from them.
std::vector<ParamSpec> CustomMatrixParamSpecs();
Status ReadCustomMatrix(Parameter* parameters, JonesMatrix& matrix, const ModelReport& report);

}  // namespace photrak
