#include "plotting/ticks.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "drawing/number_text.h"

namespace photrak {
namespace {

constexpr double hair = 1e-6;  // of a step: a limit on a tick has the tick

double PowerTimes(double value, int exponent) {
    return exponent >= 0 ? value * PowerOfTen(exponent) : value / PowerOfTen(-exponent);
}

std::vector<Tick> LinearTicks(const AxisScale& scale, double pixels, double spacing, int exponent) {
    const ValueRange& range = scale.Range();
    const double count = std::max(1.0, std::floor(pixels / spacing + hair));
    const TickStep step = StepAtLeast(range.Span() / count * (1.0 - hair));
    const double size = step.Value();
    const int parts = step.mantissa == 2 ? 4 : 5;
    const double first = std::ceil(range.least / size - 1.0),
                 last = std::floor(range.greatest / size + hair);
    std::vector<Tick> ticks;
    constexpr double mostTicks = 10'000.0, exactIndex = 1e15;
    if (last - first > mostTicks || std::fabs(first) > exactIndex) return ticks;
    for (double index = first; index <= last; index += 1.0) {
        const double shown = step.Multiple(index, exponent);
        const double value = step.Multiple(index, 0);
        if (index >= range.least / size - hair) {
            ticks.push_back(
                {value, true,
                 FixedText(shown, PowerTimes(step.mantissa, step.exponent - exponent))});
        }
        for (int part = 1; part < parts; ++part) {
            const double minor = value + size * part / parts;
            if (range.Contains(minor)) ticks.push_back({minor, false, {}});
        }
    }
    return ticks;
}

int DecadeStep(double pixelsPerDecade, double spacing) {
    for (const int step : {1, 2, 5, 10, 20, 50, 100, 200}) {
        if (step * pixelsPerDecade >= spacing) return step;
    }
    return 500;
}

/// The multiples 2 to 9 of a decade, or bare decades where labels skip some.
void AddMinors(std::vector<Tick>& ticks, const ValueRange& range, int decade, int step,
               double pixelsPerDecade, bool label25) {
    constexpr double roomForMultiples = 25.0, roomForDecades = 4.0;
    if (step > 1) {
        for (int k = 1; k < step && pixelsPerDecade > roomForDecades; ++k) {
            const double value = PowerOfTen(decade + k);
            if (range.Contains(value)) ticks.push_back({value, false, {}});
        }
        return;
    }
    for (int k = 2; k < 10 && pixelsPerDecade > roomForMultiples; ++k) {
        const double value = PowerTimes(k, decade);
        if (!range.Contains(value)) continue;
        const bool major = label25 && (k == 2 || k == 5);
        ticks.push_back({value, major, major ? ReadableText(value, 3) : std::string()});
    }
}

/// Under one decade: linear steps, thinned where the logarithm crowds them.
std::vector<Tick> ShortLogTicks(const AxisScale& scale, double pixels, double spacing) {
    const AxisScale even(ScaleKind::Linear, scale.Range());
    std::vector<Tick> kept;
    double before = -1e300;
    for (Tick& tick : LinearTicks(even, pixels, spacing, 0)) {
        if (tick.major && tick.value > 0.0) {
            const double place = scale.Place(tick.value) * pixels;
            tick.major = place - before >= 0.8 * spacing;
            if (tick.major) {
                before = place;
                tick.label = ReadableText(tick.value, 6);
            } else {
                tick.label.clear();
            }
        }
        kept.push_back(std::move(tick));
    }
    return kept;
}

std::vector<Tick> LogTicks(const AxisScale& scale, double pixels, double spacing) {
    const ValueRange& range = scale.Range();
    const double low = std::log10(range.least), high = std::log10(range.greatest);
    if (high - low < 1.0) return ShortLogTicks(scale, pixels, spacing);
    const double pixelsPerDecade = pixels / (high - low);
    const int step = DecadeStep(pixelsPerDecade, spacing);
    const bool label25 = high - low < 2.0 && 0.3 * pixelsPerDecade >= spacing;
    const int first = static_cast<int>(std::floor((low - hair) / step) - 1) * step;
    std::vector<Tick> ticks;
    for (int decade = first; decade <= high + hair; decade += step) {
        const double value = PowerOfTen(decade);
        if (decade >= low - hair) ticks.push_back({value, true, DecadeText(decade)});
        AddMinors(ticks, range, decade, step, pixelsPerDecade, label25);
    }
    return ticks;
}

/// Decades of the rate from the top, each where its label has room below the one before; under two
/// of them the multiples 2 and 5 too.
std::vector<Tick> ProbabilityTicks(const AxisScale& scale, double pixels, double spacing) {
    const ValueRange& range = scale.Range();
    const bool few = range.least > 0.01 * range.greatest;
    std::vector<Tick> ticks;
    double before = 1e300;
    const auto add = [&](double value, const std::string& label) {
        if (!range.Contains(value)) return;
        const double place = scale.Place(value) * pixels;
        const bool fits = before - place >= spacing;
        if (fits) before = place;
        ticks.push_back({value, fits, fits ? label : std::string()});
    };
    for (int decade = -1; decade >= -300; --decade) {
        for (const int multiple : {5, 2}) {
            if (few)
                add(PowerTimes(multiple, decade), ReadableText(PowerTimes(multiple, decade), 3));
        }
        add(PowerOfTen(decade), DecadeText(decade));
    }
    return ticks;
}

}  // namespace

double TickStep::Value() const {
    return PowerTimes(mantissa, exponent);
}

double TickStep::Multiple(double index, int shift) const {
    return PowerTimes(index * mantissa, exponent - shift);
}

TickStep StepAtLeast(double least) {
    TickStep step;
    step.exponent = std::clamp(static_cast<int>(std::floor(std::log10(least))), -300, 300);
    for (int tries = 0; tries < 2; ++tries, ++step.exponent) {
        for (const int mantissa : {1, 2, 5}) {
            step.mantissa = mantissa;
            if (step.Value() >= least * (1.0 - 1e-12)) return step;
        }
    }
    step.mantissa = 1;
    return step;
}

std::vector<Tick> MakeQTicks(const AxisScale& rates, double pixels, double spacing) {
    constexpr double greatestQ = 37.5;  // rates below it leave the range of doubles
    constexpr double leastGap = 20.0;   // pixels between labels, which crowd at high rates
    const double low = std::max(0.0, QOfRate(std::min(rates.Range().greatest, 0.5)));
    const double high = std::min(QOfRate(rates.Range().least), greatestQ);
    std::vector<Tick> ticks;
    if (!(high > low)) return ticks;
    const TickStep step =
        StepAtLeast(std::max(0.1, (high - low) * spacing / std::max(pixels, spacing)));
    double before = 1e300;
    for (double index = std::ceil(low / step.Value()); index * step.Value() <= high; index += 1.0) {
        const double Q = step.Multiple(index, 0), rate = RateOfQ(Q);
        if (!rates.Range().Contains(rate)) continue;
        const double place = rates.Place(rate) * pixels;
        const bool fits = before - place >= std::max(leastGap, 0.5 * spacing);
        if (fits) before = place;
        ticks.push_back({rate, fits, fits ? FixedText(Q, step.Value()) : std::string()});
    }
    return ticks;
}

std::vector<Tick> MakeTicks(const AxisScale& scale, double pixels, double spacing, int exponent) {
    switch (scale.Kind()) {
        case ScaleKind::Logarithmic:
            return LogTicks(scale, pixels, spacing);
        case ScaleKind::Probability:
            return ProbabilityTicks(scale, pixels, spacing);
        case ScaleKind::Linear:
            break;
    }
    return LinearTicks(scale, pixels, spacing, exponent);
}

}  // namespace photrak
