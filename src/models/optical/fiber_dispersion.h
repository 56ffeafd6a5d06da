// The dispersion of a single-mode fiber as a function of wavelength: given constants, or one of two
// curves around a zero-dispersion wavelength, and the group delay that goes with it.
#pragma once

#include <optional>
#include <string_view>

#include "base/units.h"

namespace photrak {

inline constexpr double inverseSpeed = 3.3356409519815204e-09;  // s/m
inline constexpr double twoPiC = 1883651567.3088531;            // m/s

enum class DispersionKind {
    Custom,   // beta2 and beta3 as given, the same at every wavelength
    Defined,  // the curve of standard fiber, D ~ lambda - lambda0^4 / lambda^3
    Defined2  // a straight line through the zero-dispersion wavelength
};

/// "custom", "defined", "defined2"; nothing for another word.
std::optional<DispersionKind> DispersionKindOf(std::string_view word);

struct DispersionCurve {
    DispersionKind kind = DispersionKind::Custom;
    double beta2 = 0;    // s^2/m, Custom
    double beta3 = 0;    // s^3/m, Custom
    double n1 = 0;       // group index at the reference wavelength
    double lambda0 = 0;  // zero-dispersion and reference wavelength, m
    double S0 = 0;       // slope at lambda0, s/m^3
    double D0 = 0;       // offset, s/m^2

    /// Dispersion of the two curves, s/m^2. (1e-6 s/m^2 is 1 ps/(nm km).)
    double D(double lambda) const;
    double Beta2(double lambda) const;
    double Beta3(double lambda) const;
    /// 1/vg, s/m.
    double GroupDelay(double lambda) const;
};

}  // namespace photrak
