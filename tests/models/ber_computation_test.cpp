// Rates against closed forms and numerical integrals, and every message of the checks.
#include "base/memory.h"
#include "models/ber_fixture.h"
#include "numeric/random.h"

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
    for (const double Q : {2.0, 2.5, 3.0, 4.0, 5.0, 6.0, 7.03, 8.0}) {
        SCOPED_TRACE(Q);
        inputs.reset();
        AddPair(bits, 8, 0.1, 1.3, 0.6 / Q);
        EXPECT_NEAR(Rate() / TailBeyond(Q), 1.0, 1e-12);
        EXPECT_NEAR(eye.Q, Q, 2e-7);  // the root is sought to 1e-7
        EXPECT_NEAR(eye.erfcArgument, -Q / std::sqrt(2.0), 1e-7);
        EXPECT_NEAR(eye.decisionLevel, 0.7, 1e-15);
        EXPECT_NEAR(eye.eyeOpening, 1.2, 1e-15);
    }
}

TEST_F(BerTest, EachBitCountsWithItsOwnNoise) {
    const auto bits = MixedBits(40);
    const Pair pair = AddPair(bits, 4, 0.0, 1.0, 0.1);
    for (std::int32_t i = 1; i <= pair.wave->noPoints; ++i) {
        if (pair.wave->elecSamples[i].re > 0.5) pair.wave->sigmaSamples[i] = {0.12, 0.05};  // 0.13
    }
    const int marks = CountedMarks(bits), all = 36;
    // Without jitter the values are those of the samples.
    const double expected =
        (marks * TailBeyond(0.5L / 0.13L) + (all - marks) * TailBeyond(5.0L)) / all;
    EXPECT_NEAR(Rate() / expected, 1.0, 1e-12);
}

TEST_F(BerTest, DefinedLevelTakesThePlaceOfTheEyes) {
    const auto bits = MixedBits(40);
    AddPair(bits, 4, 0.0, 1.0, 0.1);
    params.decisionLevelDefined = true;
    params.decisionLevel = 0.4;
    const int marks = CountedMarks(bits), all = 36;
    const double expected = (marks * TailBeyond(6.0L) + (all - marks) * TailBeyond(4.0L)) / all;
    EXPECT_NEAR(Rate() / expected, 1.0, 1e-12);
    EXPECT_EQ(eye.decisionLevel, 0.5) << "the record keeps the eye's";
}

/// The level moves by a Gaussian that is cut at 2.8 deviations. On slopes of 0.1 V per sample, the
/// same for 1s and 0s, a decision that comes early or late is a level that is off by as much.
TEST_F(BerTest, JitterAveragesOverACutGaussian) {
    const double sigma = 0.1, jitter = 0.06, distance = 0.5, slope = 0.1;
    const int s = 10;
    const Pair pair = AddPair(MixedBits(512), s, 0.0, 2 * distance, sigma);
    for (std::int32_t i = 1; i <= pair.wave->noPoints; ++i) {
        pair.wave->elecSamples[i].re += slope * ((i - 1) % s);
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
}

TEST_F(BerTest, JitterOnlyWorsens) {
    const auto bits = MixedBits(128);
    const int s = 16;
    const Pair pair = AddPair(bits, s, 0.0, 1.0, 0.12);
    for (std::int32_t i = 1; i <= pair.wave->noPoints; ++i) {  // rounded: full only in mid bit
        const double phase = (((i - 1) % s) + 0.5) / s;
        pair.wave->elecSamples[i].re =
            0.5 + (pair.wave->elecSamples[i].re - 0.5) * std::sin(M_PI * phase);
    }
    double last = Rate();
    for (const double fraction : {0.03, 0.06, 0.12, 0.2}) {
        params.timingJitter = fraction * s * tStep;
        const double rate = Rate();
        EXPECT_GT(rate, last * 1.01);
        last = rate;
    }
    params.decisionLevelJitter = 0.05;
    EXPECT_GT(Rate(), last * 1.01);

    params.timingJitter = params.decisionLevelJitter = 0.0;
    const double centered = Rate();
    for (const double shift : {-0.25, 0.25}) {
        params.decisionPointShift = shift;
        EXPECT_GT(Rate(), centered * 1.1) << "the decision has left the middle";
    }
}

TEST_F(BerTest, PassesAreAlikeInAFreshProcess) {
    AddPair(MixedBits(64), 4, 0.0, 1.0, 0.2);
    params.timingJitter = tStep;
    params.decisionLevelJitter = 0.01;
    double rates[2];
    for (double& rate : rates) {
        ResetRandomState();
        ResetEyeNoise();
        rate = Rate();
    }
    EXPECT_EQ(rates[0], rates[1]);
}

TEST_F(BerTest, WorstPairCountsInEveryTrial) {
    const auto bits = MixedBits(64);
    AddPair(bits, 4, 0.0, 1.0, 0.1);
    AddPair(bits, 4, 0.0, 1.0, 0.125);
    AddPair(bits, 4, 0.0, 1.0, 0.11);
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
    AddWaveAlone(MixedBits(64), 4, 0.2, 1.2, 0.1);
    EXPECT_NEAR(Rate() / TailBeyond(5.0L), 1.0, 1e-12);
    LastCell()->sigType = NoSigType;  // a port that is not wired
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
    params.decisionLevel = 1.0;  // right on the marks
    EXPECT_EQ(Rate(), 0.1);
}

TEST_F(BerTest, RateWithoutAQIsAWarning) {
    AddPair({0, 1, 1, 1, 1, 1, 0, 1, 0, 1}, 4, 0.0, 1.0, 0.0);
    params.decisionLevelDefined = true;
    params.decisionLevel = 1.5;
    EXPECT_EQ(Compute(), Status::Warning);
    EXPECT_EQ(message, "Q factor cannot be computed: root not bracketed\n");
    EXPECT_GT(eye.BER, 0.5);
    EXPECT_EQ(eye.Q, 0.0);
}

TEST_F(BerTest, FiveBitsDecideOne) {
    AddPair({0, 1, 0, 0, 1}, 4, 0.0, 1.0, 0.25);
    EXPECT_NEAR(Rate() / TailBeyond(2.0L), 1.0, 1e-12);
}

/// Kept deliberately: running counts.
TEST_F(BerTest, BitStreamTellsOfTheCountOfAllBitsSoFar) {
    AddPair({0, 0, 1, 0, 0, 1, 1, 0, 1, 0, 1, 0}, 4, 0.0, 1.0, 0.01);
    AddPair({0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 0, 1}, 4, 0.0, 1.0, 0.01);
    params.bitsPerLine = 3;
    Rate();
    // Bits 2 to 9 hold 0 1 0 0 1 1 0 1 and 0 0 0 0 0 0 1 0.
    EXPECT_EQ(dir.Read("ber_bitstream_1"), "0 1 1 \n1 0 0 \n0 0 \n");
    EXPECT_EQ(dir.Read("ber_bitstream_2"), "0 0 0 \n0 0 0 \n1 1 \n");
    params.bitsPerLine = 4;
    Rate();
    EXPECT_EQ(dir.Read("ber_bitstream_1"), "0 1 1 1 \n0 0 0 0 \n");
}

// --- Inputs ---

TEST_F(BerTest, LaterStartTurnsTheOthers) {
    const Pair early = AddPair(fewBits, 2, 0.0, 1.0, 0.1);
    AddPair(fewBits, 2, 0.0, 1.0, 0.1).wave->startTime = 4.4 * tStep;
    for (std::int32_t i = 1; i <= 16; ++i) {
        early.wave->elecSamples[i] = {double(i), 0.0};
        early.wave->sigmaSamples[i] = {0.0, -double(i)};
    }
    BerPairs set = Filled();
    EXPECT_EQ(set.pairs[0].voltage[1], 3.0) << "four doubles are two samples";
    EXPECT_EQ(set.pairs[0].voltage[14], 16.0);
    EXPECT_EQ(set.pairs[0].voltage[15], 1.0);
    EXPECT_EQ(set.pairs[0].sigma[16], 2.0);
    EXPECT_EQ(set.pairs[1].voltage[3], 1.0) << "the latest stays";
}

/// Kept deliberately: the shift counts doubles.
TEST_F(BerTest, OddShiftPairsNeighborsHalves) {
    const Pair early = AddPair(fewBits, 2, 0.0, 1.0, 0.1);
    AddPair(fewBits, 2, 0.0, 1.0, 0.1).wave->startTime = tStep;
    for (std::int32_t i = 1; i <= 16; ++i) early.wave->elecSamples[i] = {3.0 * (i - 1), 4.0 * i};
    BerPairs set = Filled();
    for (std::int32_t i = 1; i < 16; ++i) EXPECT_EQ(set.pairs[0].voltage[i], 5.0 * i);
    EXPECT_EQ(set.pairs[0].voltage[16], 64.0) << "the last pairs with the first";
}

TEST_F(BerTest, BitIsReadJustBeforeItEnds) {
    std::vector<double> voltage = {0, 0.0, 0.4, 1.0, 0.6, 0.4, 0.6, 0.6, 0.4, 0.0, 1.0};
    std::int16_t bits[6];
    DeriveBits(voltage.data(), 10, 5, bits);
    EXPECT_EQ(std::vector<int>(bits + 1, bits + 6), (std::vector<int>{0, 1, 0, 1, 0}));
}

using Change = std::function<void(Nodelist& first)>;

ElecSig& Wave(Nodelist& cell) {
    return *static_cast<ElecSig*>(cell.sig);
}
BinSig& Sent(Nodelist& cell) {
    return *static_cast<BinSig*>(cell.next->sig);
}

TEST_F(BerTest, RefusesWhatItCannotMeasure) {
    const std::string odd = "Input signal type incorrect for the bit error rate tester.\n";
    const std::string alike = "BERTester error: incompatible input electrical signals\n";
    const std::string bits =
        "BERTester error: bitrate or pattern length between electrical and binary signals "
        "incompatible\n";
    const std::string own = "BERTester error: component 'ber': ";
    const auto all = [](Nodelist& first, const std::function<void(ElecSig&)>& change) {
        change(Wave(first));
        change(Wave(*first.next->next));
    };
    const struct {
        Status status;
        std::string text;
        Change change;  // of two good pairs
    } rows[] = {
        {Status::Error, odd + "The 3 input signal type must be ELECSIG.\n",
         [](Nodelist& c) {
             FreeSignal(&c.next->next->sig, ElecSigType);
             c.next->next->sigType = BinSigType;
         }},
        {Status::Warning, "No input electrical signal to BER Tester\n",
         [](Nodelist& c) { FreeSignal(&c.next->next->sig, ElecSigType); }},
        {Status::Error,
         "Input signal domain incorrect for the bit error rate tester.\n"
         "Input signal domain must be in time domain.\n",
         [](Nodelist& c) { Wave(c).domain = FreqDomain; }},
        {Status::Error,
         "BER tester requires even number of input signals.\n"
         "The odd signals must be ELECSIG and the even must be BINSIG.\n",
         [](Nodelist& c) {
             Nodelist*& last = c.next->next->next;
             FreeNodelistSignals(&last);
         }},
        {Status::Error, odd + "The 2 input signal type must be BINSIG.\n",
         [](Nodelist& c) {
             FreeSignal(&c.next->sig, BinSigType);
             c.next->sigType = ElecSigType;
         }},
        {Status::Error, "BERTester error: incorrect input electrical signal type\n",
         [](Nodelist& c) { Wave(c).UnitType = CurrentUnit; }},
        {Status::Error, alike, [](Nodelist& c) { Wave(*c.next->next).UnitType = CurrentUnit; }},
        {Status::Error, alike, [](Nodelist& c) { Wave(*c.next->next).tStep = 2e-12; }},
        {Status::Error, alike, [](Nodelist& c) { Wave(*c.next->next).bitRate = 1e9; }},
        {Status::Error, alike, [](Nodelist& c) { Wave(*c.next->next).patternLength = 7; }},
        {Status::Error, bits, [](Nodelist& c) { Sent(c).bitRate = 1e9; }},
        {Status::Error, bits, [](Nodelist& c) { Sent(c).noPoints = 7; }},
        {Status::Error, own + "a pattern of 4 bits is too short, at least 5 are needed\n",
         [all](Nodelist& c) {
             Sent(c).noPoints = Sent(*c.next->next).noPoints = 4;
             all(c, [](ElecSig& wave) { wave.patternLength = 4; });
         }},
        {Status::Error,
         own + "15 samples for 8 bits are too few, at least 2 for each bit are needed\n",
         [all](Nodelist& c) { all(c, [](ElecSig& wave) { wave.noPoints = 15; }); }},
        {Status::Error, own + "the time step 0 s is not above 0\n",
         [all](Nodelist& c) { all(c, [](ElecSig& wave) { wave.tStep = 0.0; }); }},
        {Status::Error, own + "a start time is no finite number\n",
         [](Nodelist& c) { Wave(*c.next->next).startTime = NAN; }},
        {Status::Error, own + "a sample or its noise is no finite number\n",
         [](Nodelist& c) { Wave(c).elecSamples[7].re = NAN; }},
        {Status::Error, own + "a sample or its noise is no finite number\n",
         [](Nodelist& c) { Wave(*c.next->next).sigmaSamples[16].im = INFINITY; }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        inputs.reset();
        AddPair(fewBits, 2, 0.0, 1.0, 0.1);
        AddPair(fewBits, 2, 0.0, 1.0, 0.1);
        row.change(*inputs);
        EXPECT_EQ(Compute(), row.status);
        EXPECT_EQ(message, row.text);
    }
    inputs.reset();
    EXPECT_EQ(Compute(), Status::Error);
    EXPECT_EQ(message, "BERTester error: missing #1 input electrical signal\n");
}

TEST_F(BerTest, RefusesDecisionsFarOutsideThePattern) {
    AddPair(fewBits, 2, 0.1, 1.0, 0.1);
    params.timingJitter = 1e200;
    EXPECT_EQ(Compute(), Status::Error);
    EXPECT_EQ(message,
              "BERTester error: component 'ber': decisions fall too far from the pattern\n");
}

TEST_F(BerTest, TellsWhichAllocationFailed) {
    AddWaveAlone(fewBits, 2, 0.0, 1.0, 0.1);
    const std::string names[] = {"ComputeBER() -- voltageSamples",
                                 "ComputeBER() -- sigmaSamples",
                                 "bitSequence",
                                 "lowerEyeLid",
                                 "upperEyeLid",
                                 "eye->eyeData"};
    int n = 0;
    for (const std::string& name : names) {
        RefuseAllocationsFrom(++n);
        const Status status = Compute();
        RefuseAllocationsFrom(-1);
        EXPECT_EQ(status, Status::Error);
        EXPECT_EQ(message.substr(0, message.find('\n')),
                  "Insufficient memory for dynamic allocation to " + name);
        EXPECT_EQ(message.find("Error in ComputeBER -- DoEyeDiagram\n") != std::string::npos,
                  n > 3);
    }
    Rate();
}

}  // namespace
}  // namespace photrak
