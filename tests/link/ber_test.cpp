// From bits to bit error rates through the real program: what stands on the screen and in the
// files of a scan.
#include "base/text.h"
#include "link/example_run.h"

namespace photrak::test {
namespace {

class BerLink : public ExampleRun {
  protected:
    /// The rows of a result table as words, without its header.
    static std::vector<std::vector<std::string>> Rows(const std::string& file) {
        std::vector<std::vector<std::string>> rows;
        std::istringstream lines(FileText(file));
        std::string line;
        std::getline(lines, line);
        while (std::getline(lines, line)) {
            std::istringstream words(line);
            rows.emplace_back();
            for (std::string word; words >> word;) rows.back().push_back(word);
        }
        return rows;
    }
};

TEST_F(BerLink, RateAndQStandBehindTheFiles) {
    const std::string out = Run("run ber-power.top");
    const double rate = Table("ber-power.ber").at(0).at(1);
    const double Q = ReadDouble(Rows("ber-power.bdt").at(0).back());
    EXPECT_EQ(out, Concat("ber-power.ber\nber-power.pcb\nber-power.bdt\nBER Tester: ",
                          FormatSignificant(rate, 3), "  Q: ", FormatSignificant(Q, 3), "\n"));
    EXPECT_GT(Q, 6.0);
    EXPECT_LT(Q, 12.0);
}

/// The receiver's own noise, which does not know the light, all but sets Q: a dB of power gives
/// 1.26 of it, and a little less the more shot noise there is. What lies before the swept block
/// runs once.
TEST_F(BerLink, QFollowsTheReceivedPowerBehindOneRunOfTheFiber) {
    const std::string out = Run("scan ber-power.top");
    EXPECT_EQ(FileText("ber-power.bdt").rfind("received\tBER\tQ\n", 0), 0u);
    const auto rows = Rows("ber-power.bdt");
    ASSERT_EQ(rows.size(), 7u);
    for (std::size_t k = 1; k < rows.size(); ++k) {
        const double growth = ReadDouble(rows[k].at(3)) / ReadDouble(rows[k - 1].at(3));
        EXPECT_LT(growth, 1.26);
        EXPECT_GT(growth, 1.23);
    }
    EXPECT_EQ(Table("ber-power.ber").size(), 7u);
    EXPECT_EQ(Readings(out).size(), 1u);
    const std::string log = FileText("log.txt");
    EXPECT_EQ(Count(log, "Simulating component 'Fiber'"), 1);
    EXPECT_EQ(Count(log, "Simulating component 'Bits'"), 1);
    EXPECT_EQ(Count(log, "Simulating component 'Receiver'"), 7);
}

/// Dispersion shuts the eye with the length, at every power; each length costs one run of the
/// fiber.
TEST_F(BerLink, BothSweepsGiveACurveForEachLength) {
    Run("scan ber-power-length.top");
    const auto rows = Table("ber-power-length.ber");
    ASSERT_EQ(rows.size(), 5u);
    for (std::size_t k = 0; k < rows.size(); ++k) {
        ASSERT_EQ(rows[k].size(), 4u);
        EXPECT_NEAR(rows[k][0], -25.0 + double(k), 1e-9);
        EXPECT_GT(rows[k][3], 4 * rows[k][1]);
    }
    EXPECT_EQ(Count(FileText("log.txt"), "Simulating component 'Fiber'"), 3);
}

/// Q follows a loss of 1 dB with a deviation of 0.5 dB, so log10 Q deviates by 0.05 less what shot
/// noise takes off; the deviation estimated from forty runs is uncertain by 11 %, two of which the
/// bounds leave on either side.
TEST_F(BerLink, ARunDrawsTheLossAnew) {
    Run("scan statistical.top");
    const auto rows = Rows("statistical.bdt");
    ASSERT_EQ(rows.size(), 43u);
    std::vector<double> logarithms, rates;
    for (std::size_t k = 0; k < 40; ++k) {
        EXPECT_EQ(rows[k].at(0), std::to_string(k + 1));
        rates.push_back(ReadDouble(rows[k].at(1)));
        logarithms.push_back(std::log10(ReadDouble(rows[k].at(2))));
    }
    double squares = 0;
    for (const double value : logarithms) squares += std::pow(value - Mean(logarithms), 2);
    const double deviation = std::sqrt(squares / 39);
    EXPECT_GT(deviation, 0.05 * 0.95 * 0.78);
    EXPECT_LT(deviation, 0.05 * 1.22);
    const std::pair<const char*, double> statistics[] = {
        {"MIN", Least(rates)}, {"AVE", Mean(rates)}, {"MAX", Peak(rates)}};
    for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_EQ(rows[40 + k].at(0), statistics[k].first);
        EXPECT_NEAR(ReadDouble(rows[40 + k].at(1)) / statistics[k].second, 1.0, 1e-5);
    }
}

/// Two levels with the closed form of their noise: signal-ASE beat noise, shot noise, intensity
/// noise and that of the receiver behind a Bessel low-pass of four poles and a corner at 100 GHz.
class TwoNoisyLevels {
  public:
    TwoNoisyLevels() {
        constexpr double df = 1e8;  // up to half the sampling rate of 32 samples in 100 ps
        for (int k = 0; k < 1600; ++k) band_ += Passed((k + 0.5) * df) * df;
    }
    double Rate(double volts) const {
        const auto tail = [](double distance, double sigma) {
            return 0.5 * std::erfc(distance / sigma / std::sqrt(2.0));
        };
        return 0.5 *
               (tail(one_ - volts / tZ, Sigma(one_)) + tail(volts / tZ - zero_, Sigma(zero_)));
    }
    double Middle() const { return 0.5 * (one_ + zero_) * tZ; }
    double Balanced() const {
        const double s1 = Sigma(one_), s0 = Sigma(zero_);
        return (s0 * one_ + s1 * zero_) / (s0 + s1) * tZ;
    }

  private:
    /// Bessel: 105 / (s^4 + 10 s^3 + 45 s^2 + 105 s + 105), half of the power at s = 2.11392 j.
    static double Passed(double f) {
        const double x = f / 40e9 * 2.1139177, re = x * x * x * x - 45 * x * x + 105,
                     im = 105 * x - 10 * x * x * x;
        return 105.0 * 105.0 / (re * re + im * im) / (1 + std::pow(f / 100e9, 2));
    }
    double Sigma(double current) const {
        const double density =
            (1e-15 * current + 4 * responsivity * ase_ + 2 * q) * current + 2 * q * 5e-9 + 1e-22;
        return std::sqrt(density * band_);
    }
    static constexpr double h = 6.62607015e-34, q = 1.602176634e-19, nu = 299792458.0 / 1550e-9,
                            responsivity = 0.75 * q / (h * nu), tZ = 500;
    double arrives_ = 10e-3 * std::pow(10, -0.5 - 3.0);
    /// 64 of 128 bits are 1s, the others a tenth of them; 100 mW saturate the amplifier.
    double gain_ = 100 / (1 + 100 * 0.55 * arrives_ / 0.1);
    double ase_ = (gain_ - 1) * std::pow(10, 0.5) * h * nu / 2;
    double one_ = responsivity * arrives_ * gain_, zero_ = one_ / 10, band_ = 0;
};

/// What is left of the response of the receiver in the middle of a bit shifts a tail by 0.3 %.
TEST_F(BerLink, TheBestLevelLiesBelowTheMiddleWhereOnesAreNoisy) {
    Run("scan decision-level.top");
    const TwoNoisyLevels levels;
    const auto curve = Table("scanned.ber");
    ASSERT_EQ(curve.size(), 13u);
    double best = 1, bestLevel = 0;
    for (const auto& row : curve) {
        const double rate = levels.Rate(row[0]);
        EXPECT_NEAR(row[1] / rate, 1.0, 3e-3) << row[0];
        if (row[1] < best) best = row[1], bestLevel = row[0];
    }
    const double middle = Table("middle.ber").at(0).at(1);
    EXPECT_NEAR(middle / levels.Rate(levels.Middle()), 1.0, 3e-3);
    EXPECT_NEAR(bestLevel, levels.Balanced(), 0.005) << "a step of the sweep";
    EXPECT_LT(best, 1e-5 * middle);
}

/// Ten dB of fiber and ten of gain, ten times round: the power stays, and each pass adds the noise
/// (G - 1) F h nu of both polarizations together, here told in 12.5 GHz.
TEST_F(BerLink, SpansOfALoopAddUpInTheOsnr) {
    for (const int spans : {1, 5, 10}) {
        Run(Concat("run --set spans=", spans, " recirculating-loop.top"));
        EXPECT_NEAR(Mean(Column("loop-arrived_mag.sig", 1)), 1e-3, 3e-6);
        std::istringstream lines(FileText("loop-arrived.sgd"));
        std::vector<double> densities;
        for (std::string line; std::getline(lines, line) && line.rfind("ENDASE", 0) != 0;)
            densities.push_back(ReadDouble(line));  // words read as 0
        constexpr double h = 6.62607015e-34, nu = 299792458.0 / 1550e-9;
        const double noise = spans * (10 - 1) * std::pow(10, 0.5) * h * nu * 12.5e9;
        const double osnr = 10 * std::log10(1e-3 / noise);
        EXPECT_NEAR(10 * std::log10(1e-3 / (2 * densities.at(100) * 12.5e9)), osnr, 0.1) << spans;
    }
    EXPECT_EQ(Count(FileText("log.txt"), "Simulating component 'Fiber'"), 1 + 5 + 10);
}

}  // namespace
}  // namespace photrak::test
