// The directly modulated laser against closed forms of its rate equations: the static curve, the
// small-signal resonance, the chirp of a small sine; and its integrator against a linear system.
#include "models/sources/direct_laser.h"

#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <limits>

#include "base/units.h"
#include "models/sources/laser_bias.h"
#include "support/model_parameters.h"
#include "support/signals.h"

namespace photrak {
namespace {

const std::atomic<std::int16_t> goOn{0};

/// A laser without a package: one volt drives one ampere.
LaserParams Bare() {
    LaserParams params = ReadLaserParams(nullptr);
    params.Lb = params.Cp = params.Rd = 0.0;
    params.Rs = 1.0;
    params.wavelength = 1.55e-6;
    return params;
}

double Gain(const LaserParams& p, double N, double S) {
    return p.Go * p.vg * std::log((N + p.Ns) / (p.Ntr + p.Ns)) / (1.0 + p.e * S);
}

/// Carriers and current of the steady state with S photons, by bisection of dS/dt = 0.
struct Steady {
    double N = 0.0, I = 0.0;
    Steady(const LaserParams& p, double S) {
        double low = p.Ntr, high = 10.0 * p.Ntr;
        for (int i = 0; i < 200; ++i) {
            N = 0.5 * (low + high);
            const double growth =
                p.b * p.B * N * N * p.K + (p.K * Gain(p, N, S) - 1.0 / p.taup) * S;
            (growth > 0.0 ? high : low) = N;
        }
        const double loss = (p.A + p.B * N + p.C * N * N) * N + S * Gain(p, N, S);
        I = 1.60218e-19 * p.Lact * p.Lcav * p.Lstp / p.effint * loss;
    }
};

TEST(DirectLaser, StaticCurveIsTheSteadyStateOfTheEquations) {
    LaserParams params = Bare();
    params.To = 50e-9;  // near threshold it settles slowly
    DeriveLaser(params);
    for (const double Po : {1e-4, 1e-3, 5e-3, 2e-2}) {
        LaserParams biased = params;
        const double S = Po / params.conv;
        biased.Io = Steady(params, S).I;
        LaserState state;
        std::string text;
        bool lifted = false;
        ASSERT_EQ(FindBias(biased, goOn, state, lifted, {"laser", text}), Status::Success) << text;
        EXPECT_NEAR(biased.Po, Po, 1e-6 * Po);
        EXPECT_NEAR(state.N, Steady(params, S).N, 1e-6 * state.N);

        // The search finds the current to 0.1 mA.
        LaserParams searched = params;
        searched.Po = Po;
        ASSERT_EQ(FindBias(searched, goOn, state, lifted, {"laser", text}), Status::Success)
            << text;
        EXPECT_NEAR(searched.Io, biased.Io, 1e-4);
    }
}

struct Modulated : Outcome {
    Modulated(const LaserParams& params, const ElecSig* drive, const OdeLimits& limits = {})
        : Outcome(OpSigType) {
        const Nodelist input{nullptr, ElecSigType, const_cast<ElecSig*>(drive)};
        status = LaserDirectMod(params, &input, &output, goOn, {"laser", text}, limits);
    }
    const OpSig& Channel() const { return *Made<OpSignal>().channels; }
};

/// Samples of volts, every `tStep`.
template <class Value>
Owned<ElecSig> Drive(std::int32_t n, double tStep, Value value) {
    Owned<ElecSig> drive;
    EXPECT_EQ(Make(drive, CreateElecSig, n), 0);
    drive->tStep = tStep;
    for (std::int32_t i = 1; i <= n; ++i) drive->elecSamples[i].re = value(i);
    return drive;
}

double Power(const OpSig& channel, std::int32_t i) {
    return SquaredMagnitude(channel.Ex_samples[i]);
}

TEST(DirectLaser, StaysAtItsBiasWithoutADrive) {
    LaserParams params = Bare();
    params.Io = 0.03;
    const Modulated laser(params, Drive(64, 1e-11, [](int) { return 0.0; }).get());
    const OpSig& channel = laser.Channel();
    for (std::int32_t i = 1; i <= 64; ++i) {
        EXPECT_NEAR(Power(channel, i), Power(channel, 1), 1e-6 * Power(channel, 1));
        EXPECT_NEAR(std::arg(std::complex(channel.Ex_samples[i].re, channel.Ex_samples[i].im)), 0.0,
                    0.02);  // spontaneous emission detunes it a little
    }
}

/// The eigenvalues of the two densities' equations, from the derivatives written out.
std::complex<double> Resonance(const LaserParams& p, double N, double S) {
    const double g = Gain(p, N, S), c = 1.0 + p.e * S;
    const double gN = p.Go * p.vg / ((N + p.Ns) * c), gS = -g * p.e / c;
    const double a = -(p.A + 2 * p.B * N + 3 * p.C * N * N) - S * gN, b = -g - S * gS;
    const double d = 2 * p.b * p.B * N * p.K + p.K * S * gN;
    const double e = p.K * g - 1.0 / p.taup + p.K * S * gS;
    return (a + e) / 2.0 + std::sqrt(std::complex((a - e) * (a - e) / 4.0 + b * d));
}

TEST(DirectLaser, ASmallStepRingsAtTheRelaxationFrequency) {
    LaserParams params = Bare();
    DeriveLaser(params);
    const double S = 2e-3 / params.conv;
    const Steady steady(params, S);
    params.Io = steady.I;
    const std::complex<double> s = Resonance(params, steady.N, S);
    constexpr std::int32_t n = 4096;
    constexpr double tStep = 1e-12;
    const Modulated laser(params,
                          Drive(n, tStep, [](int i) { return i > n / 4 ? 2e-5 : 0.0; }).get());
    const OpSig& channel = laser.Channel();
    // Extremes of the ringing about where it settles, half a period apart.
    const double settled = Power(channel, n - 64);
    std::vector<double> times, heights;
    for (std::int32_t i = n / 4 + 30; i < n - 64 && times.size() < 5; ++i) {
        const double before = Power(channel, i - 1), at = Power(channel, i),
                     after = Power(channel, i + 1);
        if ((at - before) * (after - at) > 0.0) continue;
        const double shift = 0.5 * (before - after) / (before - 2.0 * at + after);
        times.push_back((i + shift) * tStep);
        heights.push_back(std::fabs(at - settled));
    }
    ASSERT_EQ(times.size(), 5u);
    const double half = (times[4] - times[0]) / 4.0;
    EXPECT_NEAR(pi / half, s.imag(), 0.01 * s.imag());
    EXPECT_NEAR(std::log(heights[0] / heights[4]) / (4.0 * half), -s.real(), -0.01 * s.real());
}

TEST(DirectLaser, ChirpFollowsThePowerAndItsSlope) {
    LaserParams params = Bare();
    params.Io = 0.03;
    DeriveLaser(params);
    constexpr std::int32_t n = 1024;
    constexpr double tStep = 1e-12;
    const Modulated laser(params, Drive(n, tStep, [](int i) {
                                      return 5e-4 * (1.0 - std::cos(twoPi * 4.0 * i / n));
                                  }).get());
    const OpSig& channel = laser.Channel();
    const double kappa = params.e / (params.taup * params.conv);  // 1/(W s)
    double deviation = 0.0, peak = 0.0;
    for (std::int32_t i = 2; i < n; ++i) {
        const std::complex<double> later(channel.Ex_samples[i + 1].re,
                                         channel.Ex_samples[i + 1].im);
        const std::complex<double> before(channel.Ex_samples[i - 1].re,
                                          channel.Ex_samples[i - 1].im);
        const double measured = std::arg(later / before) / (2.0 * tStep) / twoPi;
        const double slope =
            std::log(Power(channel, i + 1) / Power(channel, i - 1)) / (2.0 * tStep);
        const double told =
            params.a / (4.0 * pi) * (slope + kappa * (Power(channel, i) - Power(channel, 1)));
        deviation = std::max(deviation, std::fabs(measured - told));
        peak = std::max(peak, std::fabs(told));
    }
    EXPECT_GT(peak, 1e8);
    EXPECT_LT(deviation, 0.02 * peak);
}

TEST(DirectLaser, HalfTheToleranceChangesTheFieldBelowIt) {
    LaserParams params = Bare();
    params.Io = 0.03;
    OdeLimits finer;
    finer.eps *= 0.5;
    constexpr std::int32_t n = 1024;
    const struct {
        double (*volts)(int i);
        double most;
    } rows[] = {{[](int i) { return 2e-3 * (1.0 - std::cos(twoPi * 4.0 * i / n)); }, 1e-5},
                {[](int i) { return i / 128 % 2 == 0 ? 0.0 : 1e-2; }, 1e-4}};
    for (const auto& row : rows) {
        const Owned<ElecSig> drive = Drive(n, 2e-12, row.volts);
        const Modulated coarse(params, drive.get()), fine(params, drive.get(), finer);
        double most = 0.0, peak = 0.0;
        for (std::int32_t i = 1; i <= n; ++i) {
            const Complex difference =
                coarse.Channel().Ex_samples[i] - fine.Channel().Ex_samples[i];
            most = std::max(most, Magnitude(difference));
            peak = std::max(peak, Magnitude(fine.Channel().Ex_samples[i]));
        }
        EXPECT_LT(most, row.most * peak);
    }
}

TEST(DirectLaser, RefusesByName) {
    const auto refusal = [](void (*change)(LaserParams&), std::int32_t n = 64) {
        LaserParams params = Bare();
        change(params);
        const Modulated laser(params, Drive(n, 1e-11, [](int) { return 0.0; }).get());
        EXPECT_EQ(laser.status, Status::Error);
        EXPECT_EQ(laser.output.sig, nullptr);
        return laser.text;
    };
    const auto keep = [](LaserParams&) {};
    EXPECT_NE(refusal(keep, 12).find("12 samples"), std::string::npos);
    EXPECT_NE(refusal(keep, 4).find("4 samples"), std::string::npos);
    const double broken = std::numeric_limits<double>::quiet_NaN();
    const Modulated laser(Bare(),
                          Drive(64, 1e-11, [=](int i) { return i == 9 ? broken : 0.0; }).get());
    EXPECT_EQ(laser.text, "ERROR: component 'laser': the drive is not a finite number\n");
    const struct {
        void (*change)(LaserParams&);
        const char* name;
    } rows[] = {{[](LaserParams& p) { p.Rs = 0.0; }, "'Rd + Rs'"},
                {[](LaserParams& p) { p.Amir = p.Aint = 0.0; }, "'Amir + Aint'"},
                {[](LaserParams& p) { p.Lact = 0.0; }, "'Lact * Lcav * Lstp'"},
                {[](LaserParams& p) { p.Ns = -p.Ntr; }, "'Ntr + Ns'"},
                {[](LaserParams& p) { p.Po = 0.0; }, "'Po'"},
                {[](LaserParams& p) { p.C = -1.0; }, "'C'"}};
    for (const auto& row : rows) {
        EXPECT_NE(refusal(row.change).find(row.name), std::string::npos) << row.name;
    }
    EXPECT_EQ(refusal([](LaserParams& p) { p.Po = 1e99; }),
              "Laser bias point cannot be Bracketted in 50 iterations\n");
}

/// y0' = -1000 y0 + 999 y1, y1' = -y1, y2' = y1; solved by exponentials.
struct Linear : StiffSystem {
    void Rates(const double* y, double* dydx) const override {
        dydx[0] = -1000.0 * y[0] + 999.0 * y[1];
        dydx[1] = -y[1];
        dydx[2] = y[1];
    }
    void Jacobian(const double*, double* dfdx, double (*dfdy)[stiffVariables]) const override {
        for (int i = 0; i < stiffVariables; ++i) {
            dfdx[i] = 0.0;
            for (int j = 0; j < stiffVariables; ++j) dfdy[i][j] = 0.0;
        }
        dfdy[0][0] = -1000.0;
        dfdy[0][1] = 999.0;
        dfdy[1][1] = -1.0;
        dfdy[2][1] = 1.0;
    }
};

TEST(Stiff, KeepsItsToleranceOverStiffnessInFewSteps) {
    double y[stiffVariables] = {2.0, 1.0, 0.0};
    OdeCount count;
    std::string text;
    ASSERT_EQ(odeint(Linear(), y, 0.0, 3.0, OdeLimits{1e-8, 1e-6, 0.0}, text, &count),
              Status::Success);
    EXPECT_NEAR(y[0], std::exp(-3.0), 1e-6);  // e^-t + e^-1000t
    EXPECT_NEAR(y[1], std::exp(-3.0), 1e-6);
    EXPECT_NEAR(y[2], 1.0 - std::exp(-3.0), 1e-6);
    EXPECT_LT(count.steps, 400);
}

}  // namespace
}  // namespace photrak
