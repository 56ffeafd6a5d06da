// Channels through multiplexers and demultiplexers, as levels whose powers tell what passed where.
#include "models/optical/multiplexers.h"

#include <gtest/gtest.h>
#include <vector>

#include "models/block_run.h"
#include "models/optical/optical_filter.h"
#include "models/optical_fixture.h"
#include "numeric/samples.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

constexpr double c = 299792458.0;
constexpr double f0 = 193.1e12;
constexpr double spacing = 100e9;
constexpr double rounding = 1e-9;

/// A level of `power` watts at a frequency, in one sample.
Owned<OpSignal> Level(double power, double frequency) {
    Owned<OpSignal> signal = Carrier(power, 1, c / frequency);
    signal->channels->tStep = 0.0;
    return signal;
}

/// Of the channels at an output, in their order.
template <class Measure>
void ExpectChannels(const BlockRun& run, std::size_t port, const std::vector<double>& expected,
                    double tolerance, Measure measure) {
    ASSERT_EQ(run.status, Status::Success) << run.text;
    std::vector<double> found;
    for (const OpSig& channel : Items(run.Light(port).channels)) found.push_back(measure(channel));
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) EXPECT_NEAR(found[i], expected[i], tolerance);
}

void ExpectPowers(const BlockRun& run, std::size_t port, const std::vector<double>& expected) {
    ExpectChannels(run, port, expected, rounding,
                   [](const OpSig& channel) { return AverageOpSigPower(&channel); });
}

void ExpectFrequencies(const BlockRun& run, std::size_t port, const std::vector<double>& expected) {
    ExpectChannels(run, port, expected, 1e3,
                   [](const OpSig& channel) { return c / channel.wavelength; });
}

/// Filters of 50 GHz at f0 and 100 GHz apart from there.
void SetBank(ModelBlock& block, std::string_view type) {
    block.Word("filterSpecMode", "Frequency").Word("filterType", type);
    block.Number("firstFilterCenter", f0).Number("filterSpacing", spacing);
    block.Number("filterBW", 50e9).Number("filterBW0dB", 20e9).Number("filterFSR", 1e15);
}

/// One filter of 0.4 nm (50 GHz) at f0.
void SetFilter(ModelBlock& block, std::string_view type) {
    block.Word("filterType", type).Number("filterCenter", c / f0).Number("filterBW", 0.4e-9);
    block.Word("filterSpecMode", "Frequency");  // a word for banks only
}

TEST(Multiplexers, MuxThenDemuxReturnsEachChannel) {
    const Owned<OpSignal> first = Level(1.0, f0), second = Level(2.0, f0 + spacing),
                          third = Level(4.0, f0 + 2 * spacing);
    AddNoise(*first, f0 - 1e9, 1e9, {1e-17, 1e-17, 1e-17});
    ModelBlock mux("M"), demux("D");
    mux.Word("filterType", "None");
    SetBank(demux, "Ideal");
    const BlockRun joined(RunIdealOpticalMux, mux, {third, first, second});
    ExpectPowers(joined, 0, {4.0, 2.0, 1.0});  // ascending by wavelength
    const BlockRun split(RunOpticalDemux, demux, {joined.Light()}, 3);
    ExpectPowers(split, 0, {0.0, 0.0, 1.0});
    ExpectPowers(split, 1, {0.0, 2.0, 0.0});
    ExpectPowers(split, 2, {4.0, 0.0, 0.0});
    EXPECT_NEAR(split.Light(0).noise->powerSamples[2], 1e-17, 1e-26);
    EXPECT_LT(split.Light(1).noise->powerSamples[2], 1e-60);
}

// The second port against the filter itself, its record in meters worked out by hand.
TEST(Multiplexers, FiltersInHertzAreWorkedOutForEachPort) {
    const double f = f0 + spacing;
    const auto meters = [f](double low, double high) { return c / (f - low) - c / (f + high); };
    const struct {
        std::string_view type;
        double FSR, freeRange;  // Hz, m
    } rows[] = {{"Gaussian", 1e12, 0.0},
                {"Trapezoidal", 1e12, 0.0},
                {"FabryPerot", 3e14, meters(1.5e14, 1.5e14)},
                {"FabryPerot", 5e14, meters(0.0, 5e14)}};  // reaches beyond frequency 0
    const Owned<OpSignal> line = Carrier(0.0, 16, c / (f + 10e9)), none;
    line->channels->tStep = 2e-12;
    FillRamp(line->channels->Ex_samples, 16, 0.0);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.FSR);
        ModelBlock bank("B");
        SetBank(bank, row.type);
        bank.Number("filterFSR", row.FSR).Number("loss", 3.0).Whole("filterOrder", 2);
        OpticalFilterRecord record;
        record.type = row.type;
        record.order = 2;
        record.L = std::pow(10.0, -0.15);
        record.wavelength = c / f;
        record.BW = meters(25e9, 25e9);
        record.BW0dB = meters(10e9, 10e9);
        record.FSR = row.freeRange;
        Owned<OpSig> expected;
        std::string text;
        ASSERT_EQ(Make(expected, CopyOpSig, line->channels), 0);
        ASSERT_EQ(ApplyOpticalFilter(record, expected.get(), nullptr, text), Status::Success);
        const BlockRun joined(RunIdealOpticalMux, bank, {none, line});
        const BlockRun split(RunOpticalDemux, bank, {line}, 2);
        ASSERT_EQ(joined.status, Status::Success) << joined.text;
        ASSERT_EQ(split.status, Status::Success) << split.text;
        for (std::int32_t i = 1; i <= 16; ++i) {
            const auto field = Value(expected->Ex_samples[i]);
            EXPECT_NEAR(std::abs(Value(joined.Channel().Ex_samples[i]) - field), 0.0, rounding);
            EXPECT_NEAR(std::abs(Value(split.Channel(1).Ex_samples[i]) - field), 0.0, rounding);
        }
    }
}

TEST(Multiplexers, SingleChannelNeedsChannelsWithinTheSamplingRate) {
    const Owned<OpSignal> first = Carrier(1.0, 64, c / f0);
    const Owned<OpSignal> near = Carrier(1.0, 64, c / (f0 + spacing));
    const Owned<OpSignal> far = Carrier(1.0, 64, c / (f0 + 2e12));
    ModelBlock list("M"), single("S");
    list.Word("Representation", "ChannelList").Word("filterType", "None");
    single.Word("Representation", "SingleChannel").Word("filterType", "None");
    ExpectPowers(BlockRun(RunIdealOpticalMux, list, {first, far}), 0, {1.0, 1.0});
    ExpectPowers(BlockRun(RunIdealOpticalMux, single, {first, near}), 0, {2.0});
    const BlockRun refused(RunIdealOpticalMux, single, {first, far});
    EXPECT_EQ(refused.status, Status::Error);
    EXPECT_EQ(refused.text, "ERROR merging optical signals: signal sampling rate too low\n");
    EXPECT_TRUE(refused.IsEmpty());
}

TEST(Multiplexers, ThroughAndDroppedPowerSumToOne) {
    ModelBlock block("D");
    SetFilter(block, "Gaussian");
    for (const double offset : {0.0, 10e9, 25e9, 60e9}) {
        const Owned<OpSignal> level = Level(1.0, f0 + offset);
        const BlockRun run(RunOpticalDropMux, block, {level}, 2);
        ASSERT_EQ(run.status, Status::Success) << run.text;
        const double dropped = AverageOpSigPower(&run.Channel(1));
        EXPECT_NEAR(AverageOpSigPower(&run.Channel(0)) + dropped, 1.0, rounding);
        const double half = c / (c / f0 - 0.2e-9) - f0;  // Hz, to the 3 dB point
        EXPECT_NEAR(dropped, std::pow(0.5, std::pow(offset / half, 2)), 1e-3);
    }
}

TEST(Multiplexers, AddDropExchangesTheChannelAtItsCenter) {
    const Owned<OpSignal> line = Level(1.0, f0), added = Level(8.0, f0);
    AppendChannel(*line, Level(2.0, f0 - spacing));
    ModelBlock block("A");
    SetFilter(block, "Ideal");
    const BlockRun both(RunOpticalAddDropMux, block, {line, added}, 2);
    ExpectPowers(both, 1, {1.0, 0.0});
    const BlockRun add(RunOpticalAddMux, block, {line, added});
    for (const BlockRun* run : {&both, &add}) {
        // The notched one stays in the list, dark; which of two equal carriers comes first is open.
        const OpSig& first = run->Channel();
        ExpectFrequencies(*run, 0, {f0, f0, f0 - spacing});
        EXPECT_NEAR(AverageOpSigPower(&first) + AverageOpSigPower(first.next), 8.0, rounding);
        EXPECT_NEAR(AverageOpSigPower(first.next->next), 2.0, rounding);
    }
}

// Line, added and dropped light each have an element of their own in a measured matrix.
TEST(Multiplexers, PathsReadTheirOwnElementOfACustomFile) {
    const TempDir directory;
    const std::string file = directory.Write(
        "matrix.txt", "TransferMatrixFormat1 REAL LIN\n2 2 1 1 2\n0 0.6 0.5\n0 0.3 0.2\n");
    const Owned<OpSignal> line = Level(1.0, f0), added = Level(1.0, f0 - spacing);
    ModelBlock block("A"), bank("B");
    SetFilter(block, "Custom1");
    block.Word("filename", file);
    SetBank(bank, "Custom1");
    bank.Word("filename", file);
    const BlockRun both(RunOpticalAddDropMux, block, {line, added}, 2);
    ExpectPowers(both, 0, {0.36, 0.09});
    ExpectPowers(both, 1, {0.25});
    ExpectPowers(BlockRun(RunOpticalDropMux, block, {line}, 2), 1, {0.25});
    ExpectPowers(BlockRun(RunIdealOpticalMux, bank, {line, added}), 0, {0.36, 0.25});
    const BlockRun split(RunOpticalDemux, bank, {line}, 2);
    ExpectPowers(split, 0, {0.36});
    ExpectPowers(split, 1, {0.25});
}

TEST(Multiplexers, AutoShiftsOnlyALoneChannelAndNeverTheLine) {
    const double bin = 1.0 / (128 * 1e-12);
    const Owned<OpSignal> lone = Carrier(1.0, 64, c / (f0 + bin)), pair = Carrier(1.0, 64, c / f0);
    AppendChannel(*pair, Carrier(1.0, 64, c / (f0 + bin)));
    ModelBlock block("D");
    SetFilter(block, "Gaussian");
    block.Word("shiftcarrier", "Auto");
    const BlockRun one(RunOpticalDropMux, block, {lone}, 2);
    ExpectFrequencies(one, 0, {f0 + bin});
    ExpectFrequencies(one, 1, {f0});
    ExpectFrequencies(BlockRun(RunOpticalDropMux, block, {pair}, 2), 1, {f0, f0 + bin});
    // Each path by the channels that come its way.
    const BlockRun loneAdded(RunOpticalAddDropMux, block, {pair, lone}, 2);
    ExpectFrequencies(loneAdded, 0, {f0 + bin, f0, f0});
    ExpectFrequencies(loneAdded, 1, {f0, f0 + bin});
    const BlockRun loneLine(RunOpticalAddDropMux, block, {lone, pair}, 2);
    ExpectFrequencies(loneLine, 0, {f0 + bin, f0 + bin, f0});
    ExpectFrequencies(loneLine, 1, {f0});
    block.Word("shiftcarrier", "Yes");
    ExpectFrequencies(BlockRun(RunOpticalAddMux, block, {pair, pair}), 0, {f0 + bin, f0, f0, f0});
}

TEST(Multiplexers, RefuseWhatTheyCannotFilterAndPassOverEmptyPorts) {
    const Owned<OpSignal> light = Level(1.0, f0);
    ModelBlock bank("B"), none("N");
    SetBank(bank, "Gaussian");
    bank.Number("firstFilterCenter", 10e9);  // below half the bandwidth
    none.Word("filterType", "None");
    const Owned<OpSignal> empty;
    const BlockRun low(RunOpticalDemux, bank, {light}, 2);
    EXPECT_EQ(low.status, Status::Error);
    EXPECT_NE(low.text.find("component 'B'"), std::string::npos) << low.text;
    EXPECT_TRUE(low.IsEmpty());
    EXPECT_EQ(BlockRun(RunOpticalAddMux, none, {light}).text,
              "ERROR: component 'N': two inputs are needed\n");
    ExpectPowers(BlockRun(RunIdealOpticalMux, none, {empty, light}), 0, {1.0});
    const BlockRun dark(RunIdealOpticalMux, none, {empty, empty});
    EXPECT_EQ(dark.status, Status::Success);
    EXPECT_TRUE(dark.IsEmpty());
}

}  // namespace
}  // namespace photrak
