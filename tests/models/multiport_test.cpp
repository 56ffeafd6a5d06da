// The multiport device by hand: fields and noise through small matrices, gathering by wavelength,
// narrow and wide, and the file and command behind the table.
#include "models/optical/multiport.h"

#include "base/text.h"
#include "kernel/external_commands.h"
#include "models/block_run.h"
#include "models/optical_fixture.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

constexpr double rounding = 1e-14;

Owned<OpSignal> Light(double wavelength, std::initializer_list<Field> ex) {
    Owned<OpSignal> light = Carrier(0.0, static_cast<std::int32_t>(ex.size()), wavelength);
    std::int32_t i = 0;
    for (const Field& value : ex) light->channels->Ex_samples[++i] = ToComplex(value);
    return light;
}

/// The table in use between two ports and four, as a model of its own.
template <SignalBandwidth bandwidth>
Status RunTable(const ModelCall& call) {
    return ApplyTransferTable(call.inputs, call.outputs, bandwidth, call);
}
constexpr auto narrow = RunTable<SignalBandwidth::Narrow>, wide = RunTable<SignalBandwidth::Wide>;

class Multiport : public testing::Test {
  protected:
    void SetUp() override { ResetTransferTable(); }
    void TearDown() override { ResetTransferTable(); }

    /// A table of one point, row after row.
    static void Constant(std::int32_t rows, std::int32_t columns,
                         std::initializer_list<Field> all) {
        TransferMatrix& table = TransferTable();
        ASSERT_TRUE(SizeTransferMatrix(table, rows, columns, 1));
        std::int32_t i = 0;
        for (const Field& value : all) table.values.get()[i++] = ToComplex(value);
    }

    ModelBlock block_{"box"};
};

TEST_F(Multiport, EqualWavelengthsInterfereAndOthersPassAlone) {
    const double s = std::numbers::sqrt2 / 2.0;
    const Field j(0.0, 1.0);
    Constant(2, 2, {s, s * j, s * j, s});
    const Owned<OpSignal> a = Light(1.54e-6, {4.0, 4.0}), b = Light(1.55e-6, {-j, 3.0});
    AppendChannel(*a, Light(1.55e-6, {1.0, 2.0 * j}));
    OpSig& polarized = *b->channels;
    ASSERT_EQ(AddEySamples(&polarized), 0);
    polarized.Ey_samples[2] = {10.0, 0.0};
    a->noise = RampSpectrum(4).release();
    b->noise = RampSpectrum(4).release();
    const BlockRun run(narrow, block_, {a, b}, 2);

    for (const std::size_t port : {0, 1}) {
        EXPECT_EQ(run.Channel(port).next->wavelength, 1.55e-6);
        EXPECT_EQ(run.Channel(port).next->next, nullptr);
    }
    const OpSig &first = *run.Channel(0).next, &second = *run.Channel(1).next;
    ExpectField(first.Ex_samples[1], 2.0 * s, rounding);      // s * 1 + js * -j
    ExpectField(second.Ex_samples[1], 0.0, rounding);         // js * 1 + s * -j
    ExpectField(first.Ex_samples[2], 5.0 * s * j, rounding);  // s * 2j + js * 3
    ExpectField(second.Ex_samples[2], s, rounding);           // js * 2j + s * 3
    ExpectField(first.Ey_samples[2], 10.0 * s * j, rounding);
    ExpectField(run.Channel(1).Ex_samples[1], 4.0 * s * j, rounding);
    EXPECT_NEAR(run.Light(1).noise->powerSamples[4], 4.0 / 2.0 + 4.0 / 2.0, rounding);
}

// Elements that fall linearly with the wavelength: a narrow device takes the carrier's, a wide one
// that of every bin, here of a tone two bins above the carrier.
TEST_F(Multiport, WideDeviceWeighsEveryBinAndNarrowOneTheCarrier) {
    constexpr std::int32_t n = 8;
    const double tStep = 1e-13, carrier = 1.55e-6;
    TransferMatrix& table = TransferTable();
    ASSERT_TRUE(SizeTransferMatrix(table, 1, 1, 2));
    table.firstWavelength = 1.5e-6;
    table.lastWavelength = 1.6e-6;
    table.values.get()[0] = {1.0, 0.0};
    table.values.get()[1] = {0.0, 2.0};
    const auto element = [&](double wavelength) {
        const double r = (wavelength - 1.5e-6) / 0.1e-6;
        return Field(1.0 - r, 2.0 * r);
    };
    const Owned<OpSignal> tone = Tone(n, 2, carrier);
    tone->channels->tStep = tStep;
    tone->noise = RampSpectrum(4).release();
    const double bin = lightSpeed / (2.0 / (n * tStep) + lightSpeed / carrier);
    const struct {
        Status (*model)(const ModelCall&);
        Field factor;
    } rows[] = {{narrow, element(carrier)}, {wide, element(bin)}};
    for (const auto& [model, factor] : rows) {
        const BlockRun run(model, block_, {tone});
        for (std::int32_t i = 1; i <= n; ++i) {
            const Field expected = factor * Value(tone->channels->Ex_samples[i]);
            ExpectField(run.Channel().Ex_samples[i], expected, 1e-12);
            ExpectField(run.Channel().Ey_samples[i], 0.5 * expected, 1e-12);
        }
        for (std::int32_t k = 1; k <= 4; ++k) {  // noise has the frequency of its sample
            const double power = k * std::norm(element(lightSpeed / (193e12 + (k - 1) * 1e9)));
            EXPECT_NEAR(run.Light().noise->powerSamples[k], power, 1e-12);
        }
    }
}

TEST_F(Multiport, WhatDoesNotFitIsRefusedAndLeavesNoOutput) {
    const Owned<OpSignal> a = Light(1.55e-6, {1.0, 1.0}), four = Carrier(1.0),
                          strange = Carrier(1.0, 2, NAN);
    const auto refusal = [&](const std::vector<BlockRun::Input>& inputs) {
        const BlockRun run(narrow, block_, inputs);
        EXPECT_TRUE(run.IsEmpty());
        return run.text;
    };
    EXPECT_EQ(refusal({a}), "ERROR: component 'box': there is no transfer matrix yet\n");
    Constant(2, 1, {1.0, 1.0});
    EXPECT_EQ(refusal({a}), "mismatch in number of input/output nodes.");
    EXPECT_EQ(refusal({a, four}),
              "ERROR: component 'box': channels of the wavelength 1.55e-06 m differ in number of "
              "samples or time step\n");
    EXPECT_EQ(refusal({a, strange}),
              "ERROR: component 'box': a channel has the wavelength nan m\n");
}

// --- The block ---

class MultiportBlock : public Multiport {
  protected:
    MultiportBlock() { ResetExternalCommands(); }
    ~MultiportBlock() override { ResetExternalCommands(); }

    /// The text of a run, or without one the factor of the field.
    static std::string Run(std::string_view command, std::string_view file) {
        ModelBlock block("box");
        block.Word("CommandLine", command).Word("FileName", file);
        const BlockRun run(RunMultiportOpticalDevice, block, {Carrier(1.0)});
        return run.IsEmpty() ? run.text : FormatDefault(run.Channel().Ex_samples[1].re);
    }

    TempDir directory_;
    RecordingHost host_;
    const std::string doubling_ =
        directory_.Write("two.txt", "TransferMatrixFormat1 REAL LIN\n1 1 1 0 0\n0 2\n");
};

TEST_F(MultiportBlock, ReadsItsFileAndKeepsTheTableAtAnotherKindOfFile) {
    directory_.Write("other.txt", "Something else\n");
    EXPECT_EQ(Run("", "other.txt"), "ERROR: component 'box': there is no transfer matrix yet\n");
    EXPECT_EQ(Run("  ", "two.txt"), "2");
    EXPECT_EQ(Run("", "other.txt"), "2");
    EXPECT_TRUE(host_.commands.empty());
    EXPECT_TRUE(StartsWith(Run("", "absent.txt"),
                           "can't open transfer matrix file.\nERROR: component 'box': file "));
}

TEST_F(MultiportBlock, RunsItsCommandBeforeReadingUnlessCommandsAreOff) {
    EXPECT_EQ(Run("make two.txt", "two.txt"), "2");
    ASSERT_EQ(host_.commands.size(), 1U);
    EXPECT_EQ(host_.commands[0].arguments[2], "make two.txt");

    const std::pair<int, std::string_view> failures[] = {
        {3, "ended with status 3"}, {137, "ended with status 137"}, {-1, "cannot be started"}};
    for (const auto& [exitStatus, reason] : failures) {
        host_.waitResult = exitStatus;
        EXPECT_EQ(Run("false", "two.txt"),
                  Concat("ERROR: component 'box': its command line 'false' ", reason, "\n"));
    }
    host_.commands.resize(1);

    AllowExternalCommands(false);
    EXPECT_EQ(Run("make two.txt", "two.txt"),
              "ERROR: component 'box': its command line is refused: external commands are off\n");
    EXPECT_EQ(host_.commands.size(), 1U);
}

}  // namespace
}  // namespace photrak
