// Rates against closed forms and numerical integrals, and every message of the checks.
#include "models/ber_fixture.h"

namespace photrak {
namespace {

const std::vector<int> fewBits = {0, 1, 1, 0, 1, 0, 0, 1};

/// 1s among the bits that count: all but the first and the last two.
int CountedMarks(const std::vector<int>& bits) {
    int marks = 0;
    for (std::size_t b = 1; b + 3 < bits.size(); ++b) marks += bits[b];
    return marks;
}

TEST_F(BerTest, IdealEyeHasTheGaussianTail) {
    const auto bits = MixedBits(64);
    for (const double Q : {2.0, 4.5, 8.0}) {
        SCOPED_TRACE(Q);
        inputs.reset();
        AddPair(bits, 8, 0.1, 1.3, 0.6 / Q);
        EXPECT_NEAR(Rate() / TailBeyond(Q), 1.0, 1e-12);
        EXPECT_NEAR(eye.Q, Q, 2e-7);  // the root is sought to 1e-7
        EXPECT_NEAR(eye.decisionLevel, 0.7, 1e-15);
    }
}

TEST_F(BerTest, EachBitCountsWithItsOwnNoiseAtTheEyesOrADefinedLevel) {
    const auto bits = MixedBits(40);
    ElecSig& wave = AddPair(bits, 4, 0.0, 1.0, 0.1);
    for (std::int32_t i = 1; i <= wave.noPoints; ++i) {
        if (wave.elecSamples[i].re > 0.5) wave.sigmaSamples[i] = {0.12, 0.05};  // 0.13
    }
    const int marks = CountedMarks(bits), all = 36;
    // Without jitter the values are those of the samples.
    const auto expected = [&](long double level) {
        return (marks * TailBeyond((1 - level) / 0.13L) +
                (all - marks) * TailBeyond(level / 0.1L)) /
               all;
    };
    EXPECT_NEAR(Rate() / expected(0.5L), 1.0, 1e-12);
    params.decisionLevelDefined = true;
    params.decisionLevel = 0.4;
    EXPECT_NEAR(Rate() / expected(0.4L), 1.0, 1e-12);
    EXPECT_EQ(eye.decisionLevel, 0.5) << "the record keeps the eye's";
}

/// The level moves by a Gaussian that is cut at 2.8 deviations. On slopes of 0.1 V per sample, the
/// same for 1s and 0s, a decision that comes early or late is a level that is off by as much. So is
/// one that is shifted within its bit.
TEST_F(BerTest, JitterAveragesOverACutGaussian) {
    const double sigma = 0.1, jitter = 0.06, distance = 0.5, slope = 0.1;
    const int s = 10, all = 508;
    const auto bits = MixedBits(512);
    ElecSig& wave = AddPair(bits, s, 0.0, 2 * distance, sigma);
    for (std::int32_t i = 1; i <= wave.noPoints; ++i) {
        wave.elecSamples[i].re += slope * ((i - 1) % s);
    }
    long double sum = 0, weight = 0;
    for (int i = -2800; i <= 2800; ++i) {
        const long double x = i * 1e-3L, density = std::exp(-x * x / 2);
        sum += density * TailBeyond((distance + jitter * x) / sigma);
        weight += density;
    }
    // 130,000 trials; the tail varies over a factor of about 30 among them.
    params.decisionLevelJitter = jitter;
    EXPECT_NEAR(Rate() / static_cast<double>(sum / weight), 1.0, 0.03);
    params.decisionLevelJitter = 0.0;
    params.timingJitter = jitter / slope * tStep;
    EXPECT_NEAR(Rate() / static_cast<double>(sum / weight), 1.0, 0.03);
    params.timingJitter = 0.0;
    const int marks = CountedMarks(bits);
    for (const double shift : {-0.25, 0.25}) {
        params.decisionPointShift = shift;
        const double more = shift * s * slope;
        EXPECT_NEAR(Rate() * all /
                        (marks * TailBeyond((distance + more) / sigma) +
                         (all - marks) * TailBeyond((distance - more) / sigma)),
                    1.0, 1e-11);
    }
}

TEST_F(BerTest, WorstPairCountsInEveryTrial) {
    const auto bits = MixedBits(64);
    AddPair(bits, 4, 0.0, 1.0, 0.1);
    AddPair(bits, 4, 0.0, 1.0, 0.125);
    EXPECT_NEAR(Rate() / TailBeyond(4.0L), 1.0, 1e-12);

    // A space of one pair and a mark of the other count both.
    inputs.reset();
    std::vector<int> inverse;
    for (const int bit : bits) inverse.push_back(1 - bit);
    AddPair(bits, 4, 0.0, 1.0, 0.1);
    AddPair(inverse, 4, 0.0, 1.0, 0.1);
    EXPECT_NEAR(Rate() / (2 * TailBeyond(5.0L)), 1.0, 1e-12);
}

TEST_F(BerTest, BitsComeFromTheWaveformWithoutASequence) {
    AddPair(MixedBits(64), 4, 0.2, 1.2, 0.1);
    FreeSignal(&inputs->next->sig, BinSigType);
    EXPECT_NEAR(Rate() / TailBeyond(5.0L), 1.0, 1e-12);
    // Each decision believes itself: beyond the level there is no wrong side.
    params.decisionLevelDefined = true;
    params.decisionLevel = 2.2;
    EXPECT_LT(Rate(), TailBeyond(9.9L));
}

TEST_F(BerTest, NoiselessBitsCountByTheirSide) {
    const std::vector<int> bits = {1, 0, 0, 1, 0, 0, 0, 1, 1};  // of the five that count one is 1
    AddPair(bits, 4, 0.25, 1.0, 0.0);
    EXPECT_EQ(Rate(), 0.0);
    EXPECT_NEAR(eye.Q, 1000.0 * std::sqrt(2.0), 1e-9) << "the end of the bracket";
    params.decisionLevelDefined = true;
    params.decisionLevel = 1.5;
    EXPECT_EQ(Rate(), 0.2);
    inputs.reset();
    AddPair({0, 1, 1, 0, 1, 1, 0, 1, 1}, 4, 0.25, 1.0, 0.0);  // four of the five are 1s
    params.decisionLevel = 1.5;
    EXPECT_EQ(Compute(), Status::Warning);
    EXPECT_EQ(message, "Q factor cannot be computed: root not bracketed\n");
    EXPECT_EQ(eye.BER, 0.8);
}

/// By design: running counts.
TEST_F(BerTest, BitStreamTellsOfTheCountOfAllBitsSoFar) {
    AddPair({0, 0, 1, 0, 0, 1, 1, 0, 1, 0, 1, 0}, 4, 0.0, 1.0, 0.01);
    AddPair({0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 0, 1}, 4, 0.0, 1.0, 0.01);
    params.bitsPerLine = 3;
    Rate();
    // Bits 2 to 9 hold 0 1 0 0 1 1 0 1 and 0 0 0 0 0 0 1 0.
    EXPECT_EQ(dir.Read("ber_bitstream_1"), "0 1 1 \n1 0 0 \n0 0 \n");
    EXPECT_EQ(dir.Read("ber_bitstream_2"), "0 0 0 \n0 0 0 \n1 1 \n");
}

// --- Inputs ---

/// By design: the shift counts doubles, so that an odd one pairs halves of neighbors.
TEST_F(BerTest, LaterStartTurnsTheOthers) {
    ElecSig& early = AddPair(fewBits, 2, 0.0, 1.0, 0.1);
    AddPair(fewBits, 2, 0.0, 1.0, 0.1).startTime = 4.6 * tStep;
    for (std::int32_t i = 1; i <= 16; ++i) {
        early.elecSamples[i] = early.sigmaSamples[i] = {3.0 * (i - 1), 4.0 * i};
    }
    BerPairs set = Filled();
    for (std::int32_t i = 1; i <= 16; ++i) {  // five doubles are two samples and a half
        const double expected = i == 14 ? 64.0 : 5.0 * ((i + 1) % 16 + 1);
        EXPECT_EQ(set.pairs[0].voltage[i], expected) << "sample 16 pairs with the first";
        EXPECT_EQ(set.pairs[1].voltage[i], fewBits[(i - 1) / 2]) << "the latest stays";
    }
}

TEST_F(BerTest, BitIsReadJustBeforeItEnds) {
    std::vector<double> voltage = {0, 0.0, 0.4, 1.0, 0.6, 0.4, 0.6, 0.6, 0.4, 0.0, 1.0};
    std::int16_t bits[6];
    DeriveBits(voltage.data(), 10, 5, bits);
    EXPECT_EQ(std::vector<int>(bits + 1, bits + 6), (std::vector<int>{0, 1, 0, 1, 0}));
}

ElecSig& Wave(Nodelist& cell) {
    return *static_cast<ElecSig*>(cell.sig);
}
ElecSig& Other(Nodelist& first) {
    return Wave(*first.next->next);
}

TEST_F(BerTest, RefusesWhatItCannotMeasure) {
    const std::string own = "ERROR: component 'ber': ";
    const std::string none = "No input electrical signal to BER Tester\n";
    const struct {
        std::string text;
        std::function<void(Nodelist& first)> change;  // of two good pairs
    } rows[] = {
        {none, [](Nodelist& c) { FreeSignal(&c.next->next->sig, ElecSigType); }},
        {"BER tester requires even number of input signals.\n"
         "The odd signals must be ELECSIG and the even must be BINSIG.\n",
         [](Nodelist& c) { FreeNodelistSignals(&c.next->next->next); }},
        {"BERTester error: incorrect input electrical signal type\n",
         [](Nodelist& c) { Wave(c).UnitType = CurrentUnit; }},
        {"BERTester error: incompatible input electrical signals\n",
         [](Nodelist& c) { Other(c).tStep = 2e-12; }},
        {"BERTester error: bitrate or pattern length between electrical and binary signals "
         "incompatible\n",
         [](Nodelist& c) { static_cast<BinSig*>(c.next->sig)->noPoints = 7; }},
        {own + "a pattern of 4 bits is too short, at least 5 are needed\n",
         [this](Nodelist&) {
             inputs.reset(), AddPair({0, 1, 0, 1}, 2, 0.0, 1.0, 0.1);
         }},
        {own + "a sample or its noise is no finite number\n",
         [](Nodelist& c) { Other(c).sigmaSamples[16].im = INFINITY; }},
        {own + "decisions fall too far from the pattern\n",
         [this](Nodelist&) { params.timingJitter = 1e200; }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        inputs.reset();
        AddPair(fewBits, 2, 0.0, 1.0, 0.1);
        AddPair(fewBits, 2, 0.0, 1.0, 0.1);
        row.change(*inputs);
        EXPECT_EQ(Compute(), row.text == none ? Status::Warning : Status::Error);
        EXPECT_EQ(message, row.text);
    }
}

}  // namespace
}  // namespace photrak
