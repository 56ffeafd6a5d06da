// The fiber against closed forms: dispersion of Gaussian pulses, the soliton, cross-phase
// modulation along the walk-off, rates of Raman transfer.
#include "models/fiber_fixture.h"
#include "models/optical/fiber_raman.h"

namespace photrak {
namespace {

constexpr double ps = 1e-12;

// Agrawal, Nonlinear Fiber Optics, 3.2 and 3.3: the pulse exp(-(1 + iC) t^2 / 2 T0^2) gets the mean
// square width T0^2/2 ((1 + C b2 z / T0^2)^2 + (b2 z / T0^2)^2), and by b3 alone, without chirp,
// T0^2/2 (1 + (b3 z / T0^3)^2 / 4). The window is wide, so that sums over samples are exact to
// rounding.
TEST(FiberPhysics, BroadensGaussianPulses) {
    const double T0 = 10 * ps, z = 10000;
    const struct {
        double chirp, beta2, beta3;
    } rows[] = {
        {0, -2.17e-26, 0}, {2, -2.17e-26, 0}, {2, 2.17e-26, 0}, {0, 0, 2e-37}, {0, 0, -2e-37}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.beta2);
        FiberParams params = BareFiber();
        params.distance = z;
        params.zStepSize = 3000;
        params.curve.beta2 = row.beta2;
        params.curve.beta3 = row.beta3;
        const auto input = MakeSignal({{Gauss(1e-3, T0, row.chirp), {}}}, 2048, 0.5 * ps);
        const FiberResult out = RunThrough(input, params);
        const Moments moments = MomentsOf(out.Channel());
        const double a = row.beta2 * z / (T0 * T0), b = row.beta3 * z / (T0 * T0 * T0);
        const double ratio = (1 + row.chirp * a) * (1 + row.chirp * a) + a * a + b * b / 4;
        EXPECT_NEAR(moments.variance / (T0 * T0 / 2), ratio, 1e-9 * ratio);
        // The delay b3 w^2 z / 2 averages to b3 z / (4 T0^2) over the spectrum. Here it comes
        // early: the third-order phase has the sign opposite to that of the books.
        EXPECT_NEAR(moments.mean, -row.beta3 * z / (4 * T0 * T0), 1e-9 * T0);
        EXPECT_NEAR(moments.energy / MomentsOf(*input->channels).energy, 1, 1e-12);
    }
}

// The two curves at three wavelengths, against derivatives of the group delay that they belong to:
// tau(lambda) is 1/vg, D its slope, and beta2 = -D lambda^2 / (2 pi c).
TEST(FiberPhysics, DerivesDispersionFromTheGroupDelay) {
    DispersionCurve curve;
    curve.kind = DispersionKind::Defined;
    curve.lambda0 = 1.312e-6;
    curve.S0 = 90;
    curve.D0 = 2e-7;
    curve.n1 = 1.468;
    for (const double lambda : {1.28e-6, 1.312e-6, 1.55e-6}) {
        SCOPED_TRACE(lambda);
        const double h = 1e-10, w = 2 * M_PI * 299792458.0 / lambda, dw = w * 1e-4;
        const double slope =
            (curve.GroupDelay(lambda + h) - curve.GroupDelay(lambda - h)) / (2 * h);
        // Differences over h lose half of the digits of a delay of 5e-9 s/m.
        EXPECT_NEAR(curve.D(lambda), slope, 2e-9);
        EXPECT_NEAR(curve.Beta2(lambda), -slope * lambda * lambda / (2 * M_PI * 299792458.0),
                    3e-30);
        const double up = curve.Beta2(2 * M_PI * 299792458.0 / (w + dw));
        const double down = curve.Beta2(2 * M_PI * 299792458.0 / (w - dw));
        EXPECT_NEAR(curve.Beta3(lambda), (up - down) / (2 * dw), 1e-5 * curve.Beta3(lambda));
    }
    // The group index belongs to the reference wavelength.
    EXPECT_DOUBLE_EQ(curve.GroupDelay(curve.lambda0), 1.468 / 299792458.0);
    const double delay = curve.GroupDelay(1.55e-6);
    curve.kind = DispersionKind::Defined2;
    // By design: not the integral of the straight line, but that of the other curve.
    EXPECT_EQ(curve.GroupDelay(1.55e-6), delay);
    EXPECT_NEAR(curve.D(1.322e-6), 10e-9 * 90 + 2e-7, 1e-15);
}

// sech with gamma P T0^2 = |beta2| keeps its shape and turns by half a radian per dispersion
// length; the split step departs from it by its second order in the step.
TEST(FiberPhysics, KeepsTheFundamentalSoliton) {
    const double T0 = 10 * ps, beta2 = -2e-26, n2 = 2.6e-20;
    const double P = 2e-26 / (GammaOf(n2, 1.55e-6) * T0 * T0);
    const auto sech = [=](double t) { return Field(std::sqrt(P) / std::cosh(t / T0)); };
    const auto input = MakeSignal({{sech, {}}}, 512, ps);
    FiberParams params = BareFiber();
    params.curve.beta2 = beta2;
    params.n2 = n2;
    const double LD = T0 * T0 / 2e-26, periods = 5, L = periods * LD * M_PI / 2;
    params.distance = L;
    std::vector<double> errors;
    for (const double steps : {200.0, 400.0}) {
        params.zStepSize = L / steps;
        const FiberResult out = RunThrough(input, params);
        double worst = 0;
        for (int i = 1; i <= 512; ++i) {
            const Field exact = sech((i - 257) * ps) * std::polar(1.0, L / (2 * LD));
            worst = std::max(worst, std::abs(out.X(i) - exact) / std::sqrt(P));
        }
        errors.push_back(worst);
    }
    EXPECT_LT(errors[1], 1e-3);
    EXPECT_NEAR(errors[0] / errors[1], 4, 0.4);
}

// A pulse passes a weak, slower neighbor and paints on it, by cross-phase modulation, where both
// met: twice gamma times the pulse's energy over the walk-off per meter, spread between the delays
// 0 and the walk-off of the whole length.
TEST(FiberPhysics, PaintsAPassingPulseAlongTheWalkOff) {
    const double n2 = 2.6e-20, P = 0.01, T0 = 5 * ps, lambda2 = 1.56e-6, light = 299792458.0;
    FiberParams params = BareFiber();
    params.distance = 20000;
    params.zStepSize = 20;
    params.curve.beta2 = 5e-28;  // 50 km of dispersion length, -2 ps/km of walk-off
    params.n2 = n2;
    const auto input =
        MakeSignal({{Gauss(P, T0), {}}, {Constant(1e-4), {}, lambda2}}, 1024, 0.5 * ps);
    const FiberResult out = RunThrough(input, params);
    const double delay = 5e-28 * 2 * M_PI * light * (1 / lambda2 - 1 / 1.55e-6);  // s/m
    EXPECT_NEAR(out.Channel(0).startTime, 1.468 / light * 20000, 1e-14);
    EXPECT_NEAR(out.Channel(1).startTime - out.Channel(0).startTime, delay * 20000, 1e-15);
    const double energy = P * T0 * std::sqrt(M_PI) / 2;  // times erf((t - t1)/T0) + ...
    const double whole = 2 * GammaOf(n2, lambda2) * energy / delay;
    for (int i = 1; i <= 1024; ++i) {
        const double t = (i - 1 - 512) * 0.5 * ps;
        const double part = std::erf((t + delay * 20000) / T0) - std::erf(t / T0);
        // Whole-sample offsets: half a sample of 0.5 ps on slopes of 1/T0; the probe's dispersion.
        ASSERT_NEAR(std::arg(out.X(i, 1)), whole * part, 0.2 * std::fabs(whole)) << i;
    }
}

// The channel of the longer wavelength gains, photon for photon, what the other loses. The rate by
// hand from the listed points at 440 1/cm.
TEST(FiberPhysics, RamanMovesPhotonsToTheLongerWavelength) {
    const double listed = 1 / (1 / 1.45e-6 - 44000);  // 440 1/cm below: a listed point
    EXPECT_NEAR(RamanGain(440), 0.998 + 0.045, 1e-12);
    EXPECT_EQ(RamanGain(2000), 0);
    const double area = 80e-12, gain = 1.043 * 4.9e-20 / 1.45e-6 / area / 2;
    EXPECT_NEAR(RamanCoefficient(listed, 1.45e-6, false, area), gain, 1e-9 * gain);
    EXPECT_NEAR(RamanCoefficient(1.45e-6, listed, true, area), -gain * listed / 1.45e-6,
                1e-9 * gain);
    // By design: of two equal wavelengths the earlier in the list gains.
    EXPECT_GT(RamanCoefficient(1.5e-6, 1.5e-6, true, area), 0);
}

}  // namespace
}  // namespace photrak
