// Constants and conversions between what users type and what formulas use. Each formula stands here
// once, so that equal quantities are equal in every digit.
#pragma once

#include <cmath>
#include <numbers>

namespace photrak {

inline constexpr double pi = std::numbers::pi, twoPi = 2.0 * pi;
inline constexpr double lightSpeed = 299792458.0;  // in vacuum, m/s
inline constexpr double radiansPerDegree = 0.017453292519943295;
inline constexpr double milliwattsPerWatt = 1000.0;
inline constexpr double wattsPerMilliwatt = 0.001;
inline constexpr double nanometersPerMeter = 1e9;
inline constexpr double hertzPerGigahertz = 1e9;

/// Factor of a power from decibels.
inline double PowerRatio(double decibels) {
    return std::pow(10.0, 0.1 * decibels);
}
/// Factor of a field or a voltage from decibels.
inline double FieldRatio(double decibels) {
    return std::pow(10.0, 0.05 * decibels);
}
/// Decibels of a power ratio; minus infinity for 0.
inline double PowerDecibels(double ratio) {
    return 10.0 * std::log10(ratio);
}
/// Decibels of a ratio of fields or voltages.
inline double FieldDecibels(double ratio) {
    return 20.0 * std::log10(ratio);
}
/// W from dBm.
inline double WattsFromDbm(double dbm) {
    return PowerRatio(dbm) * wattsPerMilliwatt;
}
/// dBm from W; minus infinity for 0.
inline double DbmFromWatts(double watts) {
    return PowerDecibels(milliwattsPerWatt * watts);
}
/// The width in Hz of a band of `width` m around the wavelength `center` in m, to first order.
inline double FrequencyWidth(double width, double center) {
    return lightSpeed * width / (center * center);
}

}  // namespace photrak
