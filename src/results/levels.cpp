// The logarithm and its floor.
#include "results/levels.h"

#include "base/units.h"

namespace photrak {
namespace {

constexpr double darkDecibels = 100.0;  // below the weakest
constexpr double weakestOfDarkness = 1e-300;

template <class Level>
void ToLevels(std::span<double> powers, Level level) {
    double weakest = 0.0;
    for (const double power : powers) {
        if (power > 0.0 && (weakest == 0.0 || power < weakest)) weakest = power;
    }
    const double dark = level(weakest == 0.0 ? weakestOfDarkness : weakest) - darkDecibels;
    for (double& power : powers) power = power == 0.0 ? dark : level(power);
}

}  // namespace

void ToDbm(std::span<double> powers) {
    ToLevels(powers, [](double power) { return DbmFromWatts(power); });
}

void ToDecibelsOf(std::span<double> powers, double reference) {
    ToLevels(powers, [=](double power) { return PowerDecibels(power / reference); });
}

}  // namespace photrak
