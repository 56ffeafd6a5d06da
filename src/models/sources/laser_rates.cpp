// Table, checks and derived values; then the equations with their analytic Jacobian.
#include "models/sources/laser_rates.h"

#include <algorithm>
#include <cmath>

#include "base/units.h"

namespace photrak {
namespace {

using P = LaserParams;
constexpr ParamRow<P> rows[] = {
    {"PlotLI", &P::PlotLI, "TRUE", Words{"TRUE FALSE"}},
    {"Io", &P::Io, 0.0},
    {"Po", &P::Po, 5e-3},
    {"To", &P::To, 5e-9, Range::Positive},
    {"A", &P::A, 1e8, Range::NotNegative},
    {"B", &P::B, 1e-10, Range::NotNegative},
    {"C", &P::C, 4e-29, Range::NotNegative},
    {"effint", &P::effint, 0.9, Range::Positive},
    {"Ns", &P::Ns, 0.0},
    {"tn", NoEffect{}, 3e-9},
    {"indx", &P::indx, 4.0, Range::Positive},
    {"Go", &P::Go, 1500.0, Range::Positive},
    {"Ntr", &P::Ntr, 1e18},
    {"e", &P::e, 2e-17, Range::NotNegative},
    {"K", &P::K, 0.2, Range::Positive},
    {"a", &P::a, 4.0},
    {"b", &P::b, 1e-4, Range::NotNegative},
    {"Lcav", &P::Lcav, 0.03},
    {"Lstp", &P::Lstp, 2e-4},
    {"Lact", &P::Lact, 2e-5},
    {"Aint", &P::Aint, 20.0},
    {"Amir", &P::Amir, 38.0},
    {"Lb", &P::Lb, 0.2e-9, Range::NotNegative},
    {"Cp", &P::Cp, 0.5e-12, Range::NotNegative},
    {"Rd", &P::Rd, 4.0},
    {"Rs", &P::Rs, 46.0},
    {"RIN", &P::RIN, -150.0, Range::NotNegative, ParamUnit::PowerDecibels},
    {"F", &P::F, 0.5},
    {"wavelength", &P::wavelength, 1.55e-6, Range::Positive},
    {"k", NoEffect{}, 0.0},
    {"delta", NoEffect{}, 0.0}};

constexpr double lightSpeedCm = 29979245800.0;             // cm/s
constexpr double planckTimesLight = 1.98647579142586e-25;  // h c, J m

}  // namespace

std::vector<ParamSpec> LaserParamSpecs() {
    return SpecsOf(rows);
}

LaserParams ReadLaserParams(Parameter* parameters) {
    LaserParams params;
    ReadParams(rows, parameters, params);
    return params;
}

Status CheckLaser(const LaserParams& params, const ModelReport& report) {
    Status status = CheckParams(rows, params, report);
    const struct {
        std::string_view name;
        double value;
    } positive[] = {{"Rd + Rs", params.Rd + params.Rs},
                    {"Amir + Aint", params.Amir + params.Aint},
                    {"Lact * Lcav * Lstp", params.Lact * params.Lcav * params.Lstp},
                    {"Ntr + Ns", params.Ntr + params.Ns}};
    for (const auto& [name, value] : positive) {
        if (status == Status::Success) status = CheckRange(report, name, value, Range::Positive);
    }
    if (status != Status::Success || params.Io != 0.0) return status;
    return CheckRange(report, "Po", params.Po, Range::Positive);
}

void DeriveLaser(LaserParams& params) {
    params.vg = lightSpeedCm / params.indx;
    params.G = params.Go * params.vg;
    params.V = params.Lact * params.Lcav * params.Lstp;
    params.taup = 1.0 / ((params.Amir + params.Aint) * params.vg);
    params.conv = params.Amir / (params.wavelength * params.K) * params.vg * params.F * params.V *
                  planckTimesLight;
}

/// Far below transparency the gain is an absorption that no light meets: one carrier stands for
/// fewer.
double LaserRates::Gain(double N, double S) const {
    const P& p = params_;
    return std::log(std::max(N + p.Ns, 1.0) / (p.Ntr + p.Ns)) / (1.0 + p.e * S) * p.G;
}

void LaserRates::Rates(const double* y, double* dydx) const {
    const P& p = params_;
    const double N = y[0], S = y[1], g = Gain(N, S);
    dydx[0] =
        p.effint / (p.V * elementaryCharge) * current_ - (p.A + p.B * N + p.C * N * N) * N - S * g;
    dydx[1] = p.b * p.B * N * N * p.K + (p.K * g - 1.0 / p.taup) * S;
    dydx[2] = ((p.e * S - 1.0) / p.taup + p.K * g) * p.a * 0.5;
}

void LaserRates::Jacobian(const double* y, double* dfdx, double (*dfdy)[stiffVariables]) const {
    const P& p = params_;
    const double N = y[0], S = y[1], g = Gain(N, S);
    const double compression = 1.0 + p.e * S;
    const double gN = N + p.Ns > 1.0 ? p.G / ((N + p.Ns) * compression) : 0.0;
    const double gS = -g * p.e / compression;
    dfdx[0] = p.effint / (p.V * elementaryCharge) * slope_;
    dfdx[1] = dfdx[2] = 0.0;
    dfdy[0][0] = -(p.A + 2.0 * p.B * N + 3.0 * p.C * N * N) - S * gN;
    dfdy[0][1] = -g - S * gS;
    dfdy[1][0] = 2.0 * p.b * p.B * N * p.K + p.K * gN * S;
    dfdy[1][1] = p.K * g - 1.0 / p.taup + p.K * gS * S;
    dfdy[2][0] = p.K * gN * p.a * 0.5;
    dfdy[2][1] = (p.e / p.taup + p.K * gS) * p.a * 0.5;
    dfdy[0][2] = dfdy[1][2] = dfdy[2][2] = 0.0;
}

LaserState DarkState(const LaserParams& params) {
    constexpr double fewCarriers = 1e10;
    return {params.Ns < 0.0 ? fewCarriers - params.Ns : fewCarriers, 1.0, 0.0};
}

Status Integrate(LaserRates& rates, const LaserParams& params, LaserState& state, double t,
                 double time, bool& lifted, std::string& errorText, const OdeLimits& limits,
                 OdeCount* count) {
    if (state.N < -params.Ns && params.Ns < 0.0) {
        state.N = std::fabs(params.Ns) + 10000000000.0;
        lifted = true;
    }
    double y[stiffVariables] = {state.N, state.S, state.phi};
    const Status status = odeint(rates, y, t, t + time, limits, errorText, count);
    state = {y[0], y[1], y[2]};
    return status;
}

}  // namespace photrak
