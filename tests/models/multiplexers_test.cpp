// Channels through multiplexers and demultiplexers, as levels whose powers tell what passed where.
#include "models/optical/multiplexers.h"

#include <sys/inotify.h>
#include <unistd.h>

#include "base/text.h"
#include "models/block_run.h"
#include "models/optical/optical_filter.h"
#include "models/optical/splitter.h"
#include "models/optical_fixture.h"
#include "numeric/samples.h"
#include "support/catalogue_block.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

constexpr double c = 299792458.0;
constexpr double f0 = 193.1e12;
constexpr double spacing = 100e9;
constexpr double rounding = 1e-9;

Owned<OpSignal> LevelAt(double power, double frequency) {
    return Level(power, c / frequency);
}

double PowerOf(const OpSig& channel) {
    return AverageOpSigPower(&channel);
}

double FrequencyOf(const OpSig& channel) {
    return c / channel.wavelength;
}

/// Of the channels at an output, in their order.
void Expect(double (*measure)(const OpSig&), const BlockRun& run, std::size_t port,
            const std::vector<double>& expected) {
    std::size_t i = 0;
    for (const OpSig& channel : Items(run.Light(port).channels)) {
        ASSERT_LT(i, expected.size());
        EXPECT_NEAR(measure(channel), expected[i], rounding * std::max(expected[i], 1.0));
        ++i;
    }
    EXPECT_EQ(i, expected.size());
}

/// Filters of 50 GHz at f0 and 100 GHz apart from there.
ModelBlock& SetBank(ModelBlock& block, std::string_view type) {
    block.Word("filterSpecMode", "Frequency").Word("filterType", type);
    block.Number("firstFilterCenter", f0).Number("filterSpacing", spacing);
    return block.Number("filterBW", 50e9).Number("filterBW0dB", 20e9).Number("filterFSR", 1e15);
}

/// One filter of 0.4 nm (50 GHz) at f0.
void SetFilter(ModelBlock& block, std::string_view type) {
    block.Word("filterType", type).Number("filterCenter", c / f0).Number("filterBW", 0.4e-9);
    block.Word("filterSpecMode", "Frequency");  // a word for banks only
}

TEST(Multiplexers, MuxThenDemuxReturnsEachChannel) {
    const Owned<OpSignal> first = LevelAt(1.0, f0), second = LevelAt(2.0, f0 + spacing),
                          third = LevelAt(4.0, f0 + 2 * spacing);
    AddNoise(*first, f0 - 1e9, 1e9, {1e-17, 1e-17, 1e-17});
    ModelBlock mux("M"), demux("D");
    mux.Word("filterType", "None");
    SetBank(demux, "Ideal");
    const BlockRun joined(RunIdealOpticalMux, mux, {third, first, second});
    Expect(PowerOf, joined, 0, {4.0, 2.0, 1.0});  // ascending by wavelength
    const BlockRun split(RunOpticalDemux, demux, {joined.Light()}, 3);
    Expect(PowerOf, split, 0, {0.0, 0.0, 1.0});
    Expect(PowerOf, split, 1, {0.0, 2.0, 0.0});
    Expect(PowerOf, split, 2, {4.0, 0.0, 0.0});
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
    } rows[] = {{"Trapezoidal", 1e12, 0.0},
                {"FabryPerot", 3e14, meters(1.5e14, 1.5e14)},
                {"FabryPerot", 5e14, meters(0.0, 5e14)}};  // reaches beyond frequency 0
    const Owned<OpSignal> line = LevelAt(1.0, f + 20e9);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.FSR);
        ModelBlock bank("B");
        SetBank(bank, row.type);
        bank.Number("filterFSR", row.FSR).Number("loss", 3.0).Whole("filterOrder", 2);
        OpticalFilterRecord record;
        record.type = row.type;
        record.order = 2;
        record.loss = 3.0;
        record.wavelength = c / f;
        record.BW = meters(25e9, 25e9);
        record.BW0dB = meters(10e9, 10e9);
        record.FSR = row.freeRange;
        FilterResponse filter;
        std::string text;
        ASSERT_EQ(PrepareFilterResponse(record, filter, {"box", text}), Status::Success) << text;
        const double passed = SquaredMagnitude(filter(f + 20e9));
        Expect(PowerOf, BlockRun(RunOpticalDemux, bank, {line}, 2), 1, {passed});
    }
}

TEST(Multiplexers, SingleChannelMergesWhatTheMuxJoins) {
    const Owned<OpSignal> first = Carrier(1.0, 64, c / f0);
    const Owned<OpSignal> second = Carrier(1.0, 64, c / (f0 + spacing));
    ModelBlock single("S");
    single.Word("Representation", "SingleChannel").Word("filterType", "None");
    Expect(PowerOf, BlockRun(RunIdealOpticalMux, single, {first, second}), 0, {2.0});
}

TEST(Multiplexers, AddDropExchangesTheChannelAtItsCenter) {
    const Owned<OpSignal> line = LevelAt(1.0, f0), added = LevelAt(8.0, f0);
    AppendChannel(*line, LevelAt(2.0, f0 - spacing));
    ModelBlock block("A");
    SetFilter(block, "Ideal");
    const BlockRun both(RunOpticalAddDropMux, block, {line, added}, 2);
    Expect(PowerOf, both, 1, {1.0, 0.0});
    const BlockRun add(RunOpticalAddMux, block, {line, added});
    for (const BlockRun* run : {&both, &add}) {
        // The notched one stays in the list, dark; which of two equal carriers comes first is open.
        const OpSig& first = run->Channel();
        Expect(FrequencyOf, *run, 0, {f0, f0, f0 - spacing});
        EXPECT_NEAR(PowerOf(first) + PowerOf(*first.next), 8.0, rounding);
        EXPECT_NEAR(PowerOf(*first.next->next), 2.0, rounding);
    }
}

// Line, added and dropped light each have an element of their own in a measured matrix.
TEST(Multiplexers, PathsReadTheirOwnElementOfACustomFile) {
    const TempDir directory;
    const std::string file = directory.Write(
        "matrix.txt", "TransferMatrixFormat1 REAL LIN\n2 2 1 1 2\n0 0.6 0.5\n0 0.3 0.2\n");
    const Owned<OpSignal> line = LevelAt(1.0, f0), added = LevelAt(1.0, f0 - spacing);
    ModelBlock block("A"), bank("B");
    SetFilter(block, "Custom1");
    block.Word("filename", file);
    SetBank(bank, "Custom1").Word("filename", file);
    const BlockRun both(RunOpticalAddDropMux, block, {line, added}, 2);
    Expect(PowerOf, both, 0, {0.36, 0.09});
    Expect(PowerOf, both, 1, {0.25});
    const BlockRun drop(RunOpticalDropMux, block, {line}, 2);
    Expect(PowerOf, drop, 0, {0.36});
    Expect(PowerOf, drop, 1, {0.25});
    Expect(PowerOf, BlockRun(RunIdealOpticalMux, bank, {line, added}), 0, {0.36, 0.25});
}

TEST(Multiplexers, AutoShiftsOnlyALoneChannelAndNeverTheLine) {
    const double bin = 1.0 / (128 * 1e-12);
    const Owned<OpSignal> lone = Carrier(1.0, 64, c / (f0 + bin)), pair = Carrier(1.0, 64, c / f0);
    AppendChannel(*pair, Carrier(1.0, 64, c / (f0 + bin)));
    ModelBlock block("D");
    SetFilter(block, "Gaussian");
    block.Word("shiftcarrier", "Auto");
    // Each path by the channels that come its way.
    const BlockRun loneAdded(RunOpticalAddDropMux, block, {pair, lone}, 2);
    Expect(FrequencyOf, loneAdded, 0, {f0 + bin, f0, f0});
    Expect(FrequencyOf, loneAdded, 1, {f0, f0 + bin});
}

TEST(Multiplexers, RefuseWhatTheyCannotFilterInTheBlocksOwnWords) {
    const Owned<OpSignal> light = LevelAt(1.0, f0);
    const struct {
        std::string_view type, name, text;
        double value;
    } rows[] = {{"Gaussian", "filterBW", "parameter 'filterBW' is 0; it must be", 0.0},
                {"Trapezoidal", "filterBW0dB", "parameter 'filterBW0dB' is -1", -1.0},
                {"FabryPerot", "filterFSR", "parameter 'filterFSR' is 0", 0.0},
                {"Ideal", "firstFilterCenter", "parameter 'filterBW' is 5e+10 Hz, too wide", 20e9},
                {"Custom1", "filterSpacing", "a filter has its center at -6.9e+12 Hz\n", -2e14}};
    for (const auto& row : rows) {
        ModelBlock bank("B");
        const BlockRun run(RunOpticalDemux, SetBank(bank, row.type).Number(row.name, row.value),
                           {light}, 2);
        EXPECT_TRUE(run.text.starts_with(Concat("ERROR: component 'B': ", row.text))) << run.text;
        EXPECT_TRUE(run.IsEmpty());
    }
    ModelBlock bank("B");
    EXPECT_EQ(
        BlockRun(RunOpticalDemux, SetBank(bank, "Gaussian").Whole("filterOrder", 0), {light}).text,
        "ERROR: component 'B': parameter 'filterOrder' is 0; it must be at least 1\n");
    EXPECT_EQ(BlockRun(RunOpticalAddMux, bank.Word("filterType", "None"), {light}).text,
              "ERROR: component 'B': two inputs are needed\n");
}

TEST(Multiplexers, ReadTheFileOfAllPortsOnce) {
    const TempDir directory;
    const std::string file = directory.Write(
        "matrix.txt", "TransferMatrixFormat1 REAL LIN\n1 4 1 1 2\n0 0.1 0.2 0.3 0.4\n");
    ModelBlock bank("B");
    SetBank(bank, "Custom1").Word("filename", file);
    const int watch = inotify_init1(IN_NONBLOCK);
    inotify_add_watch(watch, file.c_str(), IN_OPEN | IN_CLOSE);
    Expect(PowerOf, BlockRun(RunOpticalDemux, bank, {LevelAt(1.0, f0)}, 4), 3, {0.16});
    inotify_event events[16];
    const auto opened = sizeof(inotify_event), closed = sizeof(inotify_event);
    EXPECT_EQ(read(watch, events, sizeof events), static_cast<ssize_t>(opened + closed));
    close(watch);
}

TEST(Multiplexers, Take128Ports) {
    const Owned<OpSignal> light = LevelAt(1.0, f0 + 127 * spacing), none;
    CatalogueBlock demux("OpticalDEMUX", 1, 128), mux("IdealOpticalMUX", 128, 1),
        splitter("IdealOpticalSplitter", 1, 128);
    demux.Set("filterType", "Ideal");
    const BlockRun apart(RunOpticalDemux, demux.Evaluated(), {light}, 128);
    Expect(PowerOf, apart, 126, {0.0});
    Expect(PowerOf, apart, 127, {1.0});
    std::vector<BlockRun::Input> inputs(127, none);
    inputs.emplace_back(light);
    Expect(PowerOf, BlockRun(RunIdealOpticalMux, mux.Evaluated(), inputs), 0, {1.0});
    const BlockRun shared(RunOpticalSplitter, splitter.Evaluated(), {light}, 128);
    Expect(PowerOf, shared, 127, {1.0 / 128.0});
}

}  // namespace
}  // namespace photrak
