// The test of a laser diode: its static curve, the figures read off it, and the bandwidth of its
// small-signal response.
#include <algorithm>
#include <array>
#include <cmath>

#include "base/text.h"
#include "base/units.h"
#include "kernel/result_names.h"
#include "models/sources/direct_laser.h"
#include "models/sources/laser_bias.h"
#include "models/sources/laser_package.h"
#include "numeric/derivative.h"
#include "results/curve_file.h"

namespace photrak {
namespace {

constexpr std::size_t points = 200;
constexpr std::size_t firstOfLine = 132,
                      lastOfLine = 198;  // the part that tells the threshold, from 1

/// Element 0 is not used.
struct LaserCurve {
    std::array<double, points + 1> Icw{}, Lcw{}, slope{};  // A, W, W/A
};

struct LaserFigures {
    double bandwidth = 0.0;  // Hz; 0: none found
    double Ith = 0.0;        // A
    bool hasThreshold = false;
    double differential = 0.0;  // quantum efficiency
    double power = 0.0;         // W/A
    double Io = 0.0, Po = 0.0;  // A, W
};

/// Threshold current by the recombination that is told, A.
double EstimateThreshold(const LaserParams& p) {
    const double Nth = std::exp(p.vg / (p.K * p.G) * (p.Amir + p.Aint)) * (p.Ns + p.Ntr) - p.Ns;
    return Nth / p.effint * p.B * p.V * elementaryCharge * Nth;
}

double CurrentStep(const LaserParams& p, double Ith) {
    return 3.0 * Ith <= 2.0 * p.Io ? p.Io * 0.01 : Ith * 0.015;
}

/// From I = 0 upward, each point settled from where the last one left off.
Status WalkCurve(const LaserParams& params, double step, LaserCurve& curve,
                 const ModelReport& report) {
    LaserState state = DarkState(params);
    bool lifted = false;
    for (std::size_t k = 1; k <= points; ++k) {
        curve.Icw[k] = static_cast<double>(k) * step;
        const std::size_t before = report.errorText.size();
        if (Settle(params, curve.Icw[k], state, lifted, report.errorText) != Status::Success) {
            if (report.errorText.size() > before) return Status::Error;
            return report.Refuse("the equations do not settle at ", curve.Icw[k], " A");
        }
        curve.Lcw[k] = state.S * params.conv;
    }
    if (Derivative(curve.slope.data(), curve.Lcw.data(), step, points) == 0) return Status::Success;
    return report.Fail("Error in finding the slope of the L-I curve\n");
}

/// Where a straight line through two points of the curve meets no power.
void Extrapolate(const LaserCurve& curve, LaserFigures& figures) {
    const double rise = curve.Lcw[lastOfLine] - curve.Lcw[firstOfLine];
    figures.hasThreshold = rise != 0.0;
    if (!figures.hasThreshold) return;
    const double run = curve.Icw[lastOfLine] - curve.Icw[firstOfLine];
    figures.Ith = curve.Icw[firstOfLine] - curve.Lcw[firstOfLine] * run / rise;
}

using Values = std::array<double, points + 1>;

/// y where the rising x reaches `at`, along straight lines from the origin on; false beyond the
/// end.
bool Along(const Values& x, const Values& y, double at, double& result) {
    for (std::size_t k = 1; k <= points; ++k) {
        if (x[k] < at) continue;
        const double span = x[k] - x[k - 1];
        result = span > 0.0 ? y[k - 1] + (y[k] - y[k - 1]) * (at - x[k - 1]) / span : y[k];
        return true;
    }
    return false;
}

/// Photon density per drive volt at f, squared, from the equations linearized at the bias.
double SmallSignal(const LaserParams& params, const LaserState& bias, double f) {
    const LaserRates rates(params);
    const double y[stiffVariables] = {bias.N, bias.S, 0.0};
    double dfdx[stiffVariables], J[stiffVariables][stiffVariables];
    rates.Jacobian(y, dfdx, J);
    const double w = twoPi * f, drive = params.effint / (params.V * elementaryCharge);
    const Complex determinant =
        Complex{-J[0][0], w} * Complex{-J[1][1], w} - MakeComplex(J[0][1] * J[1][0]);
    const Complex S = MakeComplex(J[1][0] * drive) / determinant;
    return SquaredMagnitude(S * PackageResponse(params, w));
}

/// The frequency at which the response has lost half of its electrical power; 0 without one below
/// 1 THz.
double Bandwidth(const LaserParams& params, const LaserState& bias) {
    constexpr double highest = 1e12, factor = 1.02;
    const double half = SmallSignal(params, bias, 0.0) / 2.0;
    double low = 0.0, high = 1e6;
    while (SmallSignal(params, bias, high) > half) {
        low = high;
        high *= factor;
        if (high > highest) return 0.0;
    }
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2.0;
        (SmallSignal(params, bias, middle) > half ? low : high) = middle;
    }
    return (low + high) / 2.0;
}

std::string Text(const LaserFigures& figures) {
    std::string text;
    if (figures.bandwidth > 0.0) {
        text += Concat("3dBe bandwidth = ", figures.bandwidth / hertzPerGigahertz, " GHz\n");
    }
    if (figures.hasThreshold) {
        text += Concat("Threshold current = ", figures.Ith * 1e3, " mA\n");
    }
    text +=
        Concat("Differential quantum efficiency = ", figures.differential * 100.0, " percent\n");
    text += Concat("Power efficiency = ", figures.power, " mW/mA\n");
    text += Concat("Bias current = ", figures.Io * 1e3, " mA\n");
    text += Concat("Bias power = ", figures.Po * 1e3, " mW\n");
    return text;
}

Status DrawCurve(const LaserCurve& curve, const BlockTestCall& call) {
    CurvePlot plot;
    plot.name = "licurve";
    plot.title = "Laser L-I Curve";
    plot.xLabel = "Current (A)";
    plot.yLabel = "Optical Power (W)";
    plot.x = std::span(curve.Icw).subspan(1);
    plot.y = std::span(curve.Lcw).subspan(1);
    plot.mode = call.plotMode;
    if (WriteCurveFiles(plot, call.errorText) == FileResult::Written) return Status::Success;
    return call.Fail("ERROR: cannot write 'licurve.lic'\n");
}

/// A current that the curve reaches is taken from it; otherwise the search is left to it.
Status ReadBias(const LaserCurve& curve, LaserParams params, LaserFigures& figures,
                LaserState& state, const ModelReport& report) {
    double onCurve = 0.0;
    if (params.Io == 0.0 && Along(curve.Lcw, curve.Icw, params.Po, onCurve)) params.Io = onCurve;
    const std::atomic<std::int16_t> goOn{0};
    bool lifted = false;
    const Status status = FindBias(params, goOn, state, lifted, report);
    figures.Io = params.Io;
    figures.Po = params.Po;
    return status;
}

}  // namespace

Status LDDirectModTest(const BlockTestCall& call) {
    LaserParams params = ReadLaserParams(call.component.parameters);
    Status status = CheckLaser(params, call);
    if (status == Status::Success && params.Io == 0.0) {
        status = CheckRange(call, "B", params.B, Range::Positive);
    }
    if (status != Status::Success) return status;
    DeriveLaser(params);
    LaserCurve curve;
    LaserFigures figures;
    LaserState bias;
    const double step = CurrentStep(params, EstimateThreshold(params));
    if (!(step > 0.0 && std::isfinite(step))) {
        return call.Refuse("the curve has a current step of ", step, " A");
    }
    status = WalkCurve(params, step, curve, call);
    if (status == Status::Success) status = ReadBias(curve, params, figures, bias, call);
    if (status != Status::Success) return status;
    figures.power = *std::max_element(curve.slope.begin() + 1, curve.slope.end());
    figures.differential = params.wavelength * figures.power * 806543.9341951311;
    figures.bandwidth = Bandwidth(params, bias);
    Extrapolate(curve, figures);
    if (params.PlotLI == "TRUE") status = DrawCurve(curve, call);
    if (!WriteResultFile("lasertest.dat", Text(figures), call.errorText)) {
        return call.Fail("ERROR: cannot write 'lasertest.dat'\n");
    }
    return status;
}

}  // namespace photrak
