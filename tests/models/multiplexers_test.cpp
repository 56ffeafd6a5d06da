// Channels through multiplexers and demultiplexers, as levels whose powers tell what passed where.
#include "models/optical/multiplexers.h"

#include <array>
#include <gtest/gtest.h>
#include <vector>

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

/// Runs a model of up to three inputs and outputs.
class Device {
  public:
    Device(Status (*model)(const ModelCall&), ModelBlock& block,
           const std::vector<OpSignal*>& lights, std::size_t outputCount) {
        std::array<Nodelist, 3> inputs{};
        for (std::size_t i = 0; i < lights.size(); ++i) {
            inputs[i] = {i + 1 < lights.size() ? &inputs[i + 1] : nullptr, OpSigType, lights[i]};
        }
        for (std::size_t i = 0; i + 1 < outputCount; ++i) outputs[i].next = &outputs[i + 1];
        status =
            model({workspace_, block.component, options_, inputs.data(), outputs.data(), text});
    }
    const OpSignal& Light(std::size_t port) const {
        EXPECT_EQ(status, Status::Success) << text;
        return outputs[port].As<OpSignal>();
    }
    /// Powers of the channels in their order.
    std::vector<double> Powers(std::size_t port) const {
        std::vector<double> powers;
        for (const OpSig& channel : Items(Light(port).channels)) {
            powers.push_back(AverageOpSigPower(&channel));
        }
        return powers;
    }

    std::array<OutputCell, 3> outputs{OutputCell(OpSigType), OutputCell(OpSigType),
                                      OutputCell(OpSigType)};
    std::string text;
    Status status;

  private:
    Workspace workspace_;
    SimOptions options_;
};

void ExpectPowers(const std::vector<double>& powers, const std::vector<double>& expected) {
    ASSERT_EQ(powers.size(), expected.size());
    for (std::size_t i = 0; i < powers.size(); ++i) EXPECT_NEAR(powers[i], expected[i], rounding);
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
}

TEST(Multiplexers, MuxThenDemuxReturnsEachChannel) {
    const Owned<OpSignal> first = Level(1.0, f0), second = Level(2.0, f0 + spacing),
                          third = Level(4.0, f0 + 2 * spacing);
    AddNoise(*first, f0 - 1e9, 1e9, {1e-17, 1e-17, 1e-17});
    ModelBlock mux("M"), demux("D");
    mux.Word("filterType", "None");
    SetBank(demux, "Ideal");
    const Device joined(RunIdealOpticalMux, mux, {third.get(), first.get(), second.get()}, 1);
    ExpectPowers(joined.Powers(0), {4.0, 2.0, 1.0});  // ascending by wavelength
    auto* line = static_cast<OpSignal*>(joined.outputs[0].sig);
    const Device split(RunOpticalDemux, demux, {line}, 3);
    ExpectPowers(split.Powers(0), {0.0, 0.0, 1.0});
    ExpectPowers(split.Powers(1), {0.0, 2.0, 0.0});
    ExpectPowers(split.Powers(2), {4.0, 0.0, 0.0});
    EXPECT_NEAR(split.Light(0).noise->powerSamples[2], 1e-17, 1e-26);
    EXPECT_LT(split.Light(1).noise->powerSamples[2], 1e-60);
}

TEST(Multiplexers, FiltersInHertzAreWorkedOutForEachPort) {
    ModelBlock mux("M");
    SetBank(mux, "Gaussian");
    mux.Number("loss", 3.0);
    std::vector<Owned<OpSignal>> levels;
    for (int port = 0; port < 3; ++port) {  // at half the bandwidth above each center: 3 dB
        levels.push_back(Level(1.0, f0 + port * spacing + 25e9));
    }
    const Device joined(RunIdealOpticalMux, mux,
                        {levels[0].get(), levels[1].get(), levels[2].get()}, 1);
    for (const double power : joined.Powers(0)) {
        EXPECT_NEAR(power, 0.5 * std::pow(10.0, -0.3), 1e-3);
    }
}

TEST(Multiplexers, SingleChannelNeedsChannelsWithinTheSamplingRate) {
    const Owned<OpSignal> first = Carrier(1.0, 64, c / f0);
    const Owned<OpSignal> near = Carrier(1.0, 64, c / (f0 + spacing));
    const Owned<OpSignal> far = Carrier(1.0, 64, c / (f0 + 2e12));
    ModelBlock list("M"), single("S");
    list.Word("Representation", "ChannelList").Word("filterType", "None");
    single.Word("Representation", "SingleChannel").Word("filterType", "None");
    ExpectPowers(Device(RunIdealOpticalMux, list, {first.get(), far.get()}, 1).Powers(0),
                 {1.0, 1.0});
    ExpectPowers(Device(RunIdealOpticalMux, single, {first.get(), near.get()}, 1).Powers(0), {2.0});
    const Device refused(RunIdealOpticalMux, single, {first.get(), far.get()}, 1);
    EXPECT_EQ(refused.status, Status::Error);
    EXPECT_EQ(refused.text, "ERROR merging optical signals: signal sampling rate too low\n");
    EXPECT_EQ(refused.outputs[0].sig, nullptr);
}

TEST(Multiplexers, ThroughAndDroppedPowerSumToOne) {
    ModelBlock block("D");
    SetFilter(block, "Gaussian");
    for (const double offset : {0.0, 10e9, 25e9, 60e9}) {
        const Owned<OpSignal> level = Level(1.0, f0 + offset);
        const Device device(RunOpticalDropMux, block, {level.get()}, 2);
        EXPECT_NEAR(device.Powers(0)[0] + device.Powers(1)[0], 1.0, rounding);
        const double half = c / (c / f0 - 0.2e-9) - f0;  // Hz, to the 3 dB point
        EXPECT_NEAR(device.Powers(1)[0], std::pow(0.5, std::pow(offset / half, 2)), 1e-3);
    }
}

TEST(Multiplexers, AddDropExchangesTheChannelAtItsCenter) {
    const Owned<OpSignal> line = Level(1.0, f0), added = Level(8.0, f0);
    AppendChannel(*line, Level(2.0, f0 - spacing));
    ModelBlock block("A");
    SetFilter(block, "Ideal");
    const Device device(RunOpticalAddDropMux, block, {line.get(), added.get()}, 2);
    std::vector<double> through = device.Powers(0);
    ASSERT_EQ(through.size(), 3U);  // the notched one stays in the list, dark
    EXPECT_NEAR(through[0] + through[1], 8.0, rounding);
    EXPECT_NEAR(through[2], 2.0, rounding);
    ExpectPowers(device.Powers(1), {1.0, 0.0});
    const Device add(RunOpticalAddMux, block, {line.get(), added.get()}, 1);
    through = add.Powers(0);
    ASSERT_EQ(through.size(), 3U);
    EXPECT_NEAR(through[0] + through[1], 8.0, rounding);
    EXPECT_NEAR(through[2], 2.0, rounding);
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
    const Device device(RunOpticalAddDropMux, block, {line.get(), added.get()}, 2);
    ExpectPowers(device.Powers(0), {0.36, 0.09});
    ExpectPowers(device.Powers(1), {0.25});
    ExpectPowers(Device(RunOpticalDropMux, block, {line.get()}, 2).Powers(1), {0.25});
    ExpectPowers(Device(RunIdealOpticalMux, bank, {line.get(), added.get()}, 1).Powers(0),
                 {0.36, 0.25});
    const Device split(RunOpticalDemux, bank, {line.get()}, 2);
    ExpectPowers(split.Powers(0), {0.36});
    ExpectPowers(split.Powers(1), {0.25});
}

TEST(Multiplexers, AutoShiftsOnlyALoneChannelAndNeverTheLine) {
    const double bin = 1.0 / (128 * 1e-12);
    const Owned<OpSignal> lone = Carrier(1.0, 64, c / (f0 + bin)), pair = Carrier(1.0, 64, c / f0);
    AppendChannel(*pair, Carrier(1.0, 64, c / (f0 + bin)));
    ModelBlock block("D");
    SetFilter(block, "Gaussian");
    block.Word("shiftcarrier", "Auto");
    const Device one(RunOpticalDropMux, block, {lone.get()}, 2);
    EXPECT_EQ(one.Light(0).channels->wavelength, lone->channels->wavelength);
    EXPECT_EQ(one.Light(1).channels->wavelength, c / f0);
    const Device two(RunOpticalDropMux, block, {pair.get()}, 2);
    EXPECT_EQ(two.Light(1).channels->next->wavelength, pair->channels->next->wavelength);
}

TEST(Multiplexers, RefuseWhatTheyCannotFilterAndPassOverEmptyPorts) {
    const Owned<OpSignal> light = Level(1.0, f0);
    ModelBlock bank("B"), none("N");
    SetBank(bank, "Gaussian");
    bank.Number("firstFilterCenter", 10e9);  // below half the bandwidth
    none.Word("filterType", "None");
    const Device low(RunOpticalDemux, bank, {light.get()}, 2);
    EXPECT_EQ(low.status, Status::Error);
    EXPECT_NE(low.text.find("component 'B'"), std::string::npos) << low.text;
    EXPECT_EQ(low.outputs[0].sig, nullptr);
    const Device alone(RunOpticalAddMux, none, {light.get()}, 1);
    EXPECT_EQ(alone.text, "ERROR: component 'N': two inputs are needed\n");
    ExpectPowers(Device(RunIdealOpticalMux, none, {nullptr, light.get()}, 1).Powers(0), {1.0});
    const Device dark(RunIdealOpticalMux, none, {nullptr, nullptr}, 1);
    EXPECT_EQ(dark.status, Status::Success);
    EXPECT_EQ(dark.outputs[0].sig, nullptr);
}

}  // namespace
}  // namespace photrak
