// A 2 x 2 matrix of complex field factors, and the parameters from which two devices read one:
// between the polarizations of a port or between the ports of a coupler.
#pragma once

#include <string>

#include "base/complex.h"
#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// Rows are what comes out, columns what goes in.
struct JonesMatrix {
    Complex m11, m12, m21, m22;
};

JonesMatrix operator*(double factor, const JonesMatrix& m);

/// The parameters coef11r, coef11i, ... coef22i; ones on the diagonal and zeros beside it where
/// they are absent.
Status ReadCustomMatrix(const Component& component, JonesMatrix& matrix, std::string& errorText);

}  // namespace photrak
