// Saturation curves of an amplifier: gain in dB or noise density in dBm/Hz over the wavelength in
// nm, one curve for each input power. Reader of their text form, choice and value of a curve.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "base/memory.h"
#include "kernel/model_report.h"

namespace photrak {

struct SCurve {
    double inputPower = 0.0;  // as the file has it, dBm
    std::int32_t count = 0;
    OwnedBlock<double> wavelength;  // one-based, nm, ascending
    OwnedBlock<double> value;       // one-based, dB or dBm/Hz
};
using SCurves = std::vector<SCurve>;  // in the order of the file

inline constexpr std::int32_t maxCurvePoints = 10000;
inline constexpr std::size_t maxCurves = 1000;

/// Two numbers to a line; what follows them is skipped up to the line end or an asterisk. "0 P"
/// begins the curve of the input power P, a first number below 0 ends the file, every other pair is
/// a point of the curve. Messages name file and line; a text that does not begin with 0 gets
/// `notStarted`, with the file for its %s. On failure `curves` is as it was.
[[nodiscard]] Status ReadSCurves(std::string_view text, std::string_view fileName,
                                 std::string_view notStarted, SCurves& curves,
                                 const ModelReport& report);

/// The curves between which an input power lies; both may be the same one. They are borrowed.
struct SCurvePair {
    const SCurve *lo = nullptr, *hi = nullptr;
    double toHi = 0.0;  // part of the way from lo to hi
};
/// `inputPower` in W, finite; `curves` not empty.
SCurvePair ChooseSCurves(const SCurves& curves, double inputPower);
SCurvePair ChooseSCurves(SCurves&& temporary, double inputPower) = delete;

/// Value at a wavelength in nm: a cubic through the four points around it, the end values outside;
/// linear in dBm between the two curves.
double SCurveValue(const SCurvePair& pair, double wavelength);

}  // namespace photrak
