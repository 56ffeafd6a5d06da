// Lids and measures by hand, the average eye, the decision eye's noise, and the lid files.
#include <algorithm>
#include <numbers>

#include "models/ber_fixture.h"
#include "numeric/random.h"

namespace photrak {
namespace {

using Values = std::vector<double>;

Values FromOne(const double* array, std::int32_t n) {
    return Values(array + 1, array + 1 + n);
}

EyeLids MakeLids(const Values& upper, const Values& lower) {
    EyeLids lids;
    std::string text;
    EXPECT_TRUE(AllocateLids(static_cast<std::int32_t>(upper.size()), lids, {"ber", text}));
    std::copy(upper.begin(), upper.end(), lids.upper.get() + 1);
    std::copy(lower.begin(), lower.end(), lids.lower.get() + 1);
    return lids;
}

EyeResult Measured(const Values& upper, const Values& lower) {
    EyeResult eye;
    eye.lidLength = static_cast<std::int32_t>(upper.size());
    eye.samplesPerBit = eye.lidLength / 2;
    eye.decisionLevel = 7.0;
    MeasureEye(MakeLids(upper, lower), eye);
    return eye;
}

class EyeTest : public BerTest {
  protected:
    /// Five bits of two samples each, without noise.
    void AddSmallPattern() {
        ElecSig& wave = AddPair({0, 1, 1, 0, 1}, 2, 0.0, 1.0, 0.0);
        std::int32_t i = 0;
        for (const double volts : {0.125, 0.25, 1.0, 1.0, 0.75, 0.75, 0.25, 0.0, 1.25, 1.0}) {
            wave.elecSamples[++i].re = volts;
        }
    }
    Status Diagram(BerPairs& set, int plotEyeLids = 0) {
        message.clear();
        eye = {};
        return DoEyeDiagram({options, "ber", plotEyeLids}, set, eye, {"ber", message});
    }
};

TEST_F(EyeTest, LidsAreTheExtremesOrTheSumsOfTheirBits) {
    AddSmallPattern();
    BerPairs set = Filled();
    EyeLids lids = MakeLids(Values(4, 0.0), Values(4, 0.0));
    BuildEyeLids(set, EyeMode::WorstCase, lids);
    EXPECT_EQ(FromOne(lids.lower.get(), 4), (Values{0.25, 0.25, 1.25, 1.0}));
    EXPECT_EQ(FromOne(lids.upper.get(), 4), (Values{0.75, 0.75, 0.25, 0.0}));
    BuildEyeLids(set, EyeMode::Average, lids);  // four windows of four samples
    EXPECT_EQ(FromOne(lids.lower.get(), 4), (Values{0.09375, 0.0625, 0.5625, 0.5}));
    EXPECT_EQ(FromOne(lids.upper.get(), 4), (Values{0.4375, 0.4375, 0.25, 0.1875}));
}

TEST_F(EyeTest, MeasuresTheSpanAroundTheWidestOpening) {
    eye = Measured({0, 1, 2, 4, 3, 2, 0, 0.5}, {1, 0.5, 0, 0, 0.5, 1, 0, 1});
    EXPECT_EQ(eye.eyeStart, 2u);
    EXPECT_EQ(eye.eyeEnd, 7u) << "lids that touch belong to it on the right";
    EXPECT_EQ(eye.decisionIndex, 4u);  // 41.5 / 10
    EXPECT_EQ(eye.eyeOpening, 4.0);
    EXPECT_DOUBLE_EQ(eye.eyeWidth, 4.5 / 4);  // from sample 2 to between samples 6 and 7
    const double area =
        0.5 * 3 / 8 + 2.0 * 7 / 6 + 4.0 * 23 / 24 + 2.5 * 23 / 24 + 1.0 * 7 / 6 + 0.0;
    EXPECT_NEAR(eye.eyeArea, std::numbers::pi * area / 8, 1e-14);
}

TEST_F(EyeTest, MeasuresTouchingEqualAndShutLids) {
    eye = Measured({0, 2, 1, 0, 2, 2}, {0, 1, 1, 1, 1, 1});
    EXPECT_EQ(eye.eyeStart, 2u) << "lids that touch do not belong to it on the left";
    EXPECT_EQ(eye.eyeEnd, 3u);
    EXPECT_EQ(eye.decisionIndex, 2u) << "the first of equal openings";
    EXPECT_NEAR(eye.eyeArea, std::numbers::pi / 6, 1e-15) << "a span below six samples: a sum";

    eye = Measured({0, 1, 1, 0}, {0, 1, 2, 3});
    EXPECT_EQ(eye.decisionLevel, 7.0) << "a shut eye leaves the decision";
    EXPECT_EQ(eye.eyeOpening + eye.eyeWidth + eye.eyeArea + eye.eyeStart + eye.eyeEnd, 0.0);
}

TEST_F(EyeTest, AverageEyeServesWhereOneBitShutsTheWorst) {
    ElecSig& wave = AddPair({0, 1, 1, 0, 1, 0, 0, 1, 1, 1, 0, 1}, 4, 0.0, 1.0, 0.1);
    for (int i = 5; i <= 8; ++i) wave.elecSamples[i].re = 0.0;  // a 1 that never came
    BerPairs set = Filled();
    EXPECT_EQ(Diagram(set), Status::Warning);
    const std::string notice = "NOTICE: Used Average Eye Method to set BER decision time.\n";
    EXPECT_EQ(message, notice);
    // Five 1s of six and five 0s count in the first half of the lid: 5/8 and 0.
    EXPECT_EQ(eye.decisionLevel, 5.0 / 8 / 2);
    EXPECT_EQ(Compute(), Status::Warning);
    EXPECT_GT(eye.BER, 0.0);

    inputs.reset();
    AddPair({0, 1, 0, 1, 1, 0, 1, 0}, 4, 0.0, 0.0, 0.1);
    EXPECT_EQ(Compute(), Status::Warning);
    EXPECT_EQ(message, "No open eye was found. \n" + notice +
                           "WARNING in ComputeBER -- DoEyeDiagram, can not calculate BER\n");
}

/// Draws for the decision eye come first, from a sequence of their own; then time and level in
/// turn, trial by trial.
TEST_F(EyeTest, DrawsComeInTheirOrder) {
    AddPair({0, 1, 0, 1, 0}, 2, 0.0, 1.0, 0.5);
    AddPair({0, 1, 0, 1, 0}, 2, 0.0, 2.0, 0.25);
    params.timingJitter = 1e-30;
    params.decisionLevelJitter = 0.1;
    Rate();
    ResetRandomState();  // a pass is like the first of a fresh process
    Rate();
    ResetRandomState();
    int seed = -10, jitterSeed = 1;
    for (int n = 0; n < 32; ++n) {  // two pairs, four windows each, of four samples
        const int k = n / 16, bit = n / 4 % 4 + n % 4 / 2;
        const double value = (bit % 2) * (1.0 + k) + GaussianRandom(&seed) * 0.5 / (1 + k);
        EXPECT_EQ(eye.eyeData[1 + n], value);
    }
    double sum = 0.0;
    for (int trial = 0; trial < 256; ++trial) {  // of the one bit that counts, a 1
        ClippedGaussianRandom(&jitterSeed);
        const double level = 0.5 + 0.1 * ClippedGaussianRandom(&jitterSeed);
        sum += std::max(TailBeyond((1.0 - level) / 0.5), TailBeyond((2.0 - level) / 0.25));
    }
    EXPECT_NEAR(eye.BER / (sum / 256), 1.0, 1e-12);
}

TEST_F(EyeTest, LidFilesHoldOffsetsFromTheDecision) {
    AddSmallPattern();
    options.PLOTTING = PlotToFilesOnly;
    BerPairs set = Filled();
    EXPECT_EQ(Diagram(set, 1), Status::Success);
    EXPECT_EQ(dir.Read("ber_Eyelids.lid"),
              "-1e-12 0.25 -0.25\n0 0.25 -0.25\n1e-12 -0.25 0.75\n2e-12 -0.5 0.5\n");
    EXPECT_EQ(dir.Read("ber_Eyelids.eye"),
              "-1e-12 -0.375 0.5 0.25 -0.25\n0 -0.25 0.5 0.25 -0.5\n"
              "1e-12 0.5 0.25 -0.25 0.75\n2e-12 0.5 0.25 -0.5 0.5\n")
        << "before anything is turned";
    const std::string axes = "/xl\"Decision Time Offset (s)\"\n/yl\"Decision Level Offset (V)\"\n";
    EXPECT_EQ(dir.Read("ber_Eyelids.pld"),
              "/tt\"BER Tester Eye Lids\"\n" + axes +
                  "/l\nber_Eyelids.lid\n/lt\"Upper lid\"\n/lt\"Lower lid\"\n");
    EXPECT_EQ(dir.Read("ber_Eyelids.pdt"), "/tt\"BER Tester Decision Eye\"\n" + axes +
                                               "/lc2\n/ls1\nber_Eyelids.eye\n/nx1 /ny4\n");
    EXPECT_EQ(FromOne(set.pairs[0].voltage.get(), 10),
              (Values{0.25, 1, 1, 0.75, 0.75, 0.25, 0, 1.25, 1, 0.125}))
        << "the decision becomes the first sample";
}

TEST_F(EyeTest, SweepsTagTheFilesOrLeaveThemOut) {
    AddSmallPattern();
    params.plotSignals = true;
    options.PLOTTING = PlotToFilesOnly;
    options.mode = simMode::outerSweep;
    options.outerCount = 3;
    options.outerIndex = 2;
    Rate();
    EXPECT_TRUE(dir.Files().empty()) << "without a tag each pass would write over the last";
    options.SCANMETA2 = "_o";
    Rate();
    EXPECT_EQ(dir.Files().back(), "ber_signalpair_1_o2_real.sig");
}

}  // namespace
}  // namespace photrak
