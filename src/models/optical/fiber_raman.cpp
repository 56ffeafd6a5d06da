// The gain curves of fused silica and the rows made from them.
#include "models/optical/fiber_raman.h"

#include <cmath>

#include "numeric/interpolation.h"

namespace photrak {

namespace {

constexpr int tableSize = 280;
constexpr double tableStep = 5.0;       // 1/cm
constexpr double ramanScale = 4.9e-20;  // peak gain times pump wavelength, m^2/W: 1 in the tables

// Relative Raman gain of fused silica for the signal polarized along the pump and across it, at
// shifts of 0, 5, 10, ... 1395 1/cm.
// clang-format off
constexpr double parallelGain[tableSize + 1] = {
    0,  // not a point: the arrays are one-based
    0.004, 0.009, 0.016, 0.026, 0.04, 0.059, 0.079, 0.097, 0.113, 0.129, 0.142, 0.154, 0.165, 0.176,
    0.185, 0.193, 0.202, 0.21, 0.217, 0.223, 0.229, 0.235, 0.242, 0.248, 0.254, 0.258, 0.261, 0.265,
    0.268, 0.272, 0.278, 0.284, 0.291, 0.297, 0.303, 0.312, 0.32, 0.329, 0.337, 0.346, 0.355, 0.365,
    0.374, 0.384, 0.393, 0.407, 0.421, 0.434, 0.448, 0.462, 0.475, 0.488, 0.5, 0.513, 0.526, 0.546,
    0.565, 0.585, 0.604, 0.624, 0.64, 0.656, 0.672, 0.688, 0.704, 0.721, 0.738, 0.756, 0.773, 0.79,
    0.805, 0.819, 0.834, 0.848, 0.863, 0.876, 0.889, 0.903, 0.917, 0.932, 0.946, 0.96, 0.971, 0.98,
    0.986, 0.991, 0.997, 1.0, 0.998, 0.99, 0.973, 0.969, 0.954, 0.935, 0.92, 0.94, 0.972, 0.994,
    0.962, 0.82, 0.72, 0.55, 0.45, 0.395, 0.35, 0.319, 0.294, 0.276, 0.26, 0.25, 0.241, 0.233,
    0.225, 0.218, 0.216, 0.219, 0.23, 0.245, 0.27, 0.315, 0.339, 0.32, 0.284, 0.25, 0.207, 0.184,
    0.16, 0.143, 0.127, 0.109, 0.098, 0.095, 0.091, 0.088, 0.084, 0.082, 0.08, 0.077, 0.075, 0.073,
    0.073, 0.073, 0.073, 0.073, 0.073, 0.073, 0.074, 0.075, 0.076, 0.077, 0.08, 0.082, 0.092, 0.101,
    0.129, 0.156, 0.165, 0.174, 0.175, 0.176, 0.175, 0.174, 0.169, 0.164, 0.157, 0.15, 0.141, 0.132,
    0.124, 0.116, 0.106, 0.096, 0.083, 0.07, 0.062, 0.054, 0.05, 0.045, 0.043, 0.041, 0.04, 0.039,
    0.039, 0.038, 0.037, 0.036, 0.035, 0.035, 0.034, 0.033, 0.032, 0.032, 0.031, 0.031, 0.03, 0.029,
    0.029, 0.028, 0.028, 0.027, 0.028, 0.029, 0.032, 0.036, 0.039, 0.041, 0.044, 0.046, 0.049,
    0.051, 0.055, 0.058, 0.062, 0.063, 0.063, 0.063, 0.062, 0.059, 0.056, 0.053, 0.051, 0.048,
    0.045, 0.041, 0.038, 0.036, 0.034, 0.032, 0.031, 0.03, 0.029, 0.028, 0.028, 0.029, 0.03, 0.031,
    0.031, 0.032, 0.032, 0.033, 0.034, 0.035, 0.035, 0.035, 0.034, 0.034, 0.033, 0.032, 0.03, 0.029,
    0.027, 0.025, 0.022, 0.02, 0.018, 0.017, 0.016, 0.014, 0.013, 0.012, 0.011, 0.011, 0.01, 0.01,
    0.009, 0.008, 0.008, 0.007, 0.007, 0.006, 0.006, 0.005, 0.005, 0.004, 0.004, 0.004, 0.003,
    0.003, 0.002, 0.001,
};
constexpr double orthogonalGain[tableSize + 1] = {
    0,  // not a point
    0.001, 0.003, 0.006, 0.009, 0.014, 0.021, 0.028, 0.035, 0.041, 0.046, 0.051, 0.055, 0.058, 0.06,
    0.061, 0.063, 0.064, 0.065, 0.066, 0.067, 0.067, 0.068, 0.068, 0.068, 0.067, 0.067, 0.066,
    0.064, 0.063, 0.061, 0.06, 0.059, 0.058, 0.057, 0.057, 0.056, 0.056, 0.055, 0.055, 0.055, 0.054,
    0.054, 0.054, 0.053, 0.053, 0.053, 0.052, 0.052, 0.052, 0.052, 0.051, 0.051, 0.051, 0.051,
    0.051, 0.05, 0.05, 0.05, 0.05, 0.05, 0.05, 0.05, 0.05, 0.05, 0.05, 0.05, 0.05, 0.05, 0.05, 0.05,
    0.05, 0.05, 0.05, 0.05, 0.049, 0.049, 0.049, 0.049, 0.048, 0.048, 0.048, 0.048, 0.047, 0.047,
    0.047, 0.046, 0.046, 0.046, 0.045, 0.045, 0.044, 0.044, 0.043, 0.042, 0.041, 0.04, 0.039, 0.037,
    0.035, 0.032, 0.028, 0.024, 0.02, 0.018, 0.016, 0.015, 0.014, 0.013, 0.013, 0.012, 0.012, 0.012,
    0.012, 0.012, 0.012, 0.013, 0.013, 0.013, 0.014, 0.014, 0.014, 0.014, 0.014, 0.013, 0.013,
    0.013, 0.012, 0.012, 0.012, 0.011, 0.011, 0.011, 0.011, 0.01, 0.01, 0.01, 0.009, 0.009, 0.008,
    0.008, 0.009, 0.009, 0.01, 0.01, 0.011, 0.012, 0.013, 0.014, 0.016, 0.019, 0.022, 0.026, 0.031,
    0.037, 0.044, 0.052, 0.058, 0.062, 0.065, 0.067, 0.067, 0.064, 0.062, 0.058, 0.053, 0.048,
    0.043, 0.037, 0.031, 0.024, 0.018, 0.014, 0.012, 0.01, 0.009, 0.008, 0.007, 0.006, 0.006, 0.006,
    0.006, 0.005, 0.005, 0.005, 0.005, 0.005, 0.005, 0.005, 0.005, 0.005, 0.005, 0.005, 0.005,
    0.005, 0.005, 0.005, 0.004, 0.004, 0.004, 0.004, 0.005, 0.006, 0.007, 0.009, 0.012, 0.015,
    0.019, 0.024, 0.028, 0.031, 0.032, 0.034, 0.035, 0.037, 0.037, 0.037, 0.036, 0.034, 0.033,
    0.031, 0.03, 0.028, 0.026, 0.024, 0.022, 0.021, 0.019, 0.018, 0.018, 0.017, 0.016, 0.016, 0.015,
    0.015, 0.016, 0.016, 0.017, 0.017, 0.018, 0.019, 0.019, 0.02, 0.02, 0.02, 0.019, 0.019, 0.019,
    0.018, 0.017, 0.016, 0.015, 0.014, 0.013, 0.012, 0.011, 0.01, 0.009, 0.008, 0.007, 0.006, 0.006,
    0.006, 0.005, 0.005, 0.004, 0.004, 0.004, 0.003, 0.003, 0.003, 0.003, 0.002, 0.002, 0.002,
    0.001, 0.001, 0.001, 0.001, 0.0, 0.0,
};
// clang-format on

struct ShiftAxis {
    double at[tableSize + 1];
};
constexpr ShiftAxis MakeShiftAxis() {
    ShiftAxis axis{};
    for (int i = 1; i <= tableSize; ++i) axis.at[i] = tableStep * (i - 1);
    return axis;
}
constexpr ShiftAxis shiftAxis = MakeShiftAxis();

/// A cubic through the four entries around `shift`.
double Interpolate(const double (&gain)[tableSize + 1], double shift) {
    double value = 0, correction = 0;
    PolyInt4(shift, shiftAxis.at, gain, tableSize, &value, &correction);
    return value;
}

}  // namespace

double RamanGain(double shift) {
    if (!(shift <= shiftAxis.at[tableSize])) return 0.0;
    return Interpolate(parallelGain, shift) + Interpolate(orthogonalGain, shift);
}

double RamanCoefficient(double lambda, double otherLambda, bool isEarlier, double effectiveArea) {
    constexpr double perCentimeter = 0.01;
    // Of a pair in the order of the list; the shift of the earlier against the later.
    const double first = isEarlier ? lambda : otherLambda,
                 second = isEarlier ? otherLambda : lambda;
    const double delta = (1.0 / first - 1.0 / second) * perCentimeter;
    const double gain = RamanGain(std::fabs(delta));
    // Not above 0: the earlier of the pair has the longer wavelength and gains. By design:
    // so does the earlier of two channels of equal wavelength, by the curve's small value at 0.
    const bool earlierGains = !(delta > 0.0);
    const double pump = earlierGains ? second : first;
    const double gained = gain / pump * ramanScale;
    const double lost = earlierGains ? -gained / second * first : -gained / first * second;
    // From power to field: half.
    return (isEarlier == earlierGains ? gained : lost) / effectiveArea * 0.5;
}

}  // namespace photrak
