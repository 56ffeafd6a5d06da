// The multiport device by hand: fields and noise through small matrices, gathering by wavelength,
// narrow and wide, and the file and command behind the table.
#include "models/optical/multiport.h"

#include <cmath>
#include <gtest/gtest.h>
#include <initializer_list>
#include <numbers>

#include "base/text.h"
#include "kernel/external_commands.h"
#include "support/model_parameters.h"
#include "support/recording_host.h"
#include "support/signals.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

using Field = std::complex<double>;

constexpr double lightSpeed = 299792458.0;
constexpr double rounding = 1e-14;

Owned<OpSig> Channel(double wavelength, std::initializer_list<Field> ex, double tStep = 1e-12) {
    Owned<OpSig> channel;
    EXPECT_EQ(Make(channel, CreateOpSig, static_cast<std::int32_t>(ex.size())), 0);
    channel->wavelength = wavelength;
    channel->tStep = tStep;
    std::int32_t i = 0;
    for (const Field& value : ex) channel->Ex_samples[++i] = {value.real(), value.imag()};
    return channel;
}

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
        for (const Field& value : all) table.values.get()[i++] = {value.real(), value.imag()};
    }

    /// Ports in order; null is a port without data.
    OpSignal* Input(bool withData = true) {
        Owned<OpSignal> pair;
        if (withData) {
            EXPECT_EQ(Make(pair, CreateOpSignal), 0);
        }
        OpSignal* made = pair.get();
        Nodelist** end = &inputs_;
        while (*end) end = &(*end)->next;
        EXPECT_EQ(CreateNodelist(end, OpSigType), 0);
        (*end)->sig = pair.release();
        return made;
    }
    static void Add(OpSignal* signal, Owned<OpSig> channel) {
        OpSig** end = &signal->channels;
        while (*end) end = &(*end)->next;
        *end = channel.release();
    }

    Status Apply(std::int32_t outputs, SignalBandwidth bandwidth = SignalBandwidth::Narrow) {
        FreeNodelistSignals(&outputs_);
        for (std::int32_t i = 0; i < outputs; ++i) {
            Nodelist* cell = nullptr;
            EXPECT_EQ(CreateNodelist(&cell, OpSigType), 0);
            cell->next = outputs_;
            outputs_ = cell;
        }
        text_.clear();
        return ApplyTransferTable("box", inputs_, outputs_, bandwidth, text_);
    }
    const OpSignal& Output(int index) const {
        const Nodelist* cell = outputs_;
        while (--index > 0) cell = cell->next;
        return *static_cast<const OpSignal*>(cell->sig);
    }

    ~Multiport() override {
        FreeNodelistSignals(&inputs_);
        FreeNodelistSignals(&outputs_);
    }

    Nodelist *inputs_ = nullptr, *outputs_ = nullptr;
    std::string text_;
};

void ExpectNear(Complex a, Field b, double tolerance = rounding) {
    EXPECT_NEAR(a.re, b.real(), tolerance);
    EXPECT_NEAR(a.im, b.imag(), tolerance);
}

TEST_F(Multiport, EqualWavelengthsInterfereAndOthersPassAlone) {
    const double s = std::numbers::sqrt2 / 2.0;
    Constant(2, 2, {s, {0.0, s}, {0.0, s}, s});
    OpSignal* a = Input();
    OpSignal* b = Input();
    Add(a, Channel(1.55e-6, {1.0, {0.0, 2.0}}));
    Add(b, Channel(1.54e-6, {4.0, 4.0}));
    Owned<OpSig> polarized = Channel(1.55e-6, {{0.0, -1.0}, 3.0});
    ASSERT_EQ(AddEySamples(polarized.get()), 0);
    polarized->Ey_samples[2] = {10.0, 0.0};
    Add(b, std::move(polarized));
    ASSERT_EQ(Apply(2), Status::Success) << text_;

    for (const int port : {1, 2}) {
        const OpSig* shorter = Output(port).channels;
        ASSERT_NE(shorter, nullptr);
        const OpSig* longer = shorter->next;
        ASSERT_NE(longer, nullptr);
        EXPECT_EQ(longer->next, nullptr);
        EXPECT_EQ(longer->prev, shorter);
        EXPECT_EQ(shorter->wavelength, 1.54e-6);
        EXPECT_EQ(shorter->Ey_samples, nullptr);
        EXPECT_EQ(longer->tStep, 1e-12);
        ASSERT_NE(longer->Ey_samples, nullptr);
    }
    const OpSig &first = *Output(1).channels->next, &second = *Output(2).channels->next;
    ExpectNear(first.Ex_samples[1], 2.0 * s);         // s * 1 + js * -j
    ExpectNear(second.Ex_samples[1], 0.0);            // js * 1 + s * -j
    ExpectNear(first.Ex_samples[2], {0.0, 5.0 * s});  // s * 2j + js * 3
    ExpectNear(second.Ex_samples[2], s);              // js * 2j + s * 3
    ExpectNear(first.Ey_samples[2], {0.0, 10.0 * s});
    ExpectNear(second.Ey_samples[2], 10.0 * s);
    ExpectNear(Output(1).channels->Ex_samples[1], {0.0, 4.0 * s});
    EXPECT_EQ(Output(1).noise, nullptr);
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
    Owned<OpSig> tone = Channel(carrier, {0, 0, 0, 0, 0, 0, 0, 0}, tStep);
    std::vector<Field> field(n + 1);
    for (std::int32_t j = 1; j <= n; ++j) {
        field[j] = std::polar(1.0, -2.0 * std::numbers::pi * 2.0 * (j - 1) / n);
        tone->Ex_samples[j] = {field[j].real(), field[j].imag()};
    }
    OpSignal* input = Input();
    Add(input, std::move(tone));
    input->noise = RampSpectrum(4).release();
    const double bin = lightSpeed / (2.0 / (n * tStep) + lightSpeed / carrier);
    const std::pair<SignalBandwidth, Field> expected[] = {
        {SignalBandwidth::Narrow, element(carrier)}, {SignalBandwidth::Wide, element(bin)}};
    for (const auto& [bandwidth, factor] : expected) {
        ASSERT_EQ(Apply(1, bandwidth), Status::Success) << text_;
        for (std::int32_t j = 1; j <= n; ++j) {
            ExpectNear(Output(1).channels->Ex_samples[j], factor * field[j], 1e-12);
        }
        for (std::int32_t k = 1; k <= 4; ++k) {  // noise has the frequency of its sample
            const double power = k * std::norm(element(lightSpeed / (193e12 + (k - 1) * 1e9)));
            EXPECT_NEAR(Output(1).noise->powerSamples[k], power, 1e-12);
        }
    }
}

TEST_F(Multiport, WideDeviceTakesLevelsInOneSample) {
    Constant(1, 1, {{0.0, 0.5}});
    Add(Input(), Channel(1.55e-6, {2.0}, 0.0));
    ASSERT_EQ(Apply(1, SignalBandwidth::Wide), Status::Success) << text_;
    ExpectNear(Output(1).channels->Ex_samples[1], {0.0, 1.0});
}

TEST_F(Multiport, NoiseAddsByPower) {
    Constant(3, 1, {2.0, {0.0, 3.0}, 5.0});
    Input()->noise = RampSpectrum(4).release();
    Input()->noise = RampSpectrum(4).release();
    Input(false);
    ASSERT_EQ(Apply(1), Status::Success) << text_;
    const OpSigASE* noise = Output(1).noise;
    ASSERT_NE(noise, nullptr);
    EXPECT_EQ(noise->fstart, 193e12);
    EXPECT_EQ(noise->fstep, 1e9);
    for (std::int32_t k = 1; k <= 4; ++k) EXPECT_NEAR(noise->powerSamples[k], 13.0 * k, 1e-12);
    EXPECT_EQ(Output(1).channels, nullptr);
}

TEST_F(Multiport, WhatDoesNotFitIsRefusedAndLeavesNoOutput) {
    OpSignal* a = Input();
    OpSignal* b = Input();
    Add(a, Channel(1.55e-6, {1.0, 1.0}));
    const auto refused = [&](std::string_view complaint, std::int32_t outputs = 1,
                             SignalBandwidth bandwidth = SignalBandwidth::Narrow) {
        EXPECT_EQ(Apply(outputs, bandwidth), Status::Error);
        EXPECT_EQ(text_, complaint);
        EXPECT_EQ(outputs_->sig, nullptr);
    };
    refused("ERROR: component 'box': there is no transfer matrix yet\n");
    Constant(2, 1, {1.0, 1.0});
    refused("mismatch in number of input/output nodes.", 2);

    Add(b, Channel(1.55e-6, {1.0, 1.0, 1.0, 1.0}));
    refused(
        "ERROR: component 'box': channels of the wavelength 1.55e-06 m differ in number of "
        "samples or time step\n");
    FreeOpSigList(&b->channels);
    Add(b, Channel(NAN, {1.0, 1.0}));
    refused("ERROR: component 'box': a channel has the wavelength nan m\n");
    FreeOpSigList(&b->channels);
    Add(b, Channel(1.5e-6, {1.0, 1.0, 1.0}));
    EXPECT_EQ(Apply(1), Status::Success);
    refused(
        "ERROR: component 'box': a channel has 3 samples; its spectrum needs a power of two up "
        "to 536870912\n",
        1, SignalBandwidth::Wide);
    a->noise = RampSpectrum(4).release();
    b->noise = RampSpectrum(5).release();
    refused("mismatch in ASE noise signal info");
}

TEST_F(Multiport, EveryRefusedAllocationEndsInAnError) {
    Constant(1, 2, {1.0, 2.0});
    OpSignal* a = Input();
    Add(a, Channel(1.55e-6, {1.0, 1.0}));
    a->noise = RampSpectrum(2).release();
    ASSERT_EQ(Apply(2, SignalBandwidth::Wide), Status::Success) << text_;
    bool passed = false;
    for (int n = 1; n < 40 && !passed; ++n) {
        Nodelist second{nullptr, OpSigType, nullptr}, first{&second, OpSigType, nullptr};
        std::string text;
        RefuseAllocationsFrom(n);
        passed = ApplyTransferTable("box", inputs_, &first, SignalBandwidth::Wide, text) ==
                 Status::Success;
        RefuseAllocationsFrom(-1);
        if (!passed) {
            EXPECT_EQ(text, "can't allocate output signal.");
            EXPECT_EQ(first.sig, nullptr);
        }
        FreeSignal(&first.sig, OpSigType);
        FreeSignal(&second.sig, OpSigType);
    }
    EXPECT_TRUE(passed);
}

// --- The block ---

constexpr std::string_view doubling = "TransferMatrixFormat1 REAL LIN\n1 1 1 0 0\n0 2\n";

class MultiportBlock : public Multiport {
  protected:
    MultiportBlock() { ResetExternalCommands(); }
    ~MultiportBlock() override { ResetExternalCommands(); }

    Status Run(std::string_view command, std::string_view file) {
        ModelBlock block("box");
        block.Word("CommandLine", command).Word("FileName", file);
        OutputCell output(OpSigType);
        text_.clear();
        const Status status = RunMultiportOpticalDevice(
            {workspace_, block.component, options_, inputs_, &output, text_});
        if (output.sig) gain_ = output.As<OpSignal>().channels->Ex_samples[1].re;
        return status;
    }

    TempDir directory_;
    RecordingHost host_;
    Workspace workspace_;
    SimOptions options_;
    double gain_ = 0.0;
};

TEST_F(MultiportBlock, ReadsItsFileAndKeepsTheTableAtAnotherKindOfFile) {
    Add(Input(), Channel(1.55e-6, {1.0}));
    directory_.Write("other.txt", "Something else\n");
    directory_.Write("two.txt", doubling);
    EXPECT_EQ(Run("", "other.txt"), Status::Error);
    EXPECT_EQ(text_, "ERROR: component 'box': there is no transfer matrix yet\n");
    EXPECT_EQ(Run("  ", "two.txt"), Status::Success) << text_;
    EXPECT_EQ(gain_, 2.0);
    EXPECT_EQ(Run("", "other.txt"), Status::Success) << text_;
    EXPECT_TRUE(host_.commands.empty());

    EXPECT_EQ(Run("", "absent.txt"), Status::Error);
    EXPECT_TRUE(StartsWith(text_, "can't open transfer matrix file.")) << text_;
    directory_.Write("bad.txt", "TransferMatrixFormat1\n1 0 1 0 0\n");
    EXPECT_EQ(Run("", "bad.txt"), Status::Error);
    EXPECT_EQ(text_,
              "ERROR: component 'box': bad.txt:2: 1 rows and 0 columns; each must be 1 to 64\n");
}

TEST_F(MultiportBlock, RunsItsCommandBeforeReadingUnlessCommandsAreOff) {
    Add(Input(), Channel(1.55e-6, {1.0}));
    directory_.Write("two.txt", doubling);
    EXPECT_EQ(Run("make two.txt", "two.txt"), Status::Success) << text_;
    ASSERT_EQ(host_.commands.size(), 1U);
    EXPECT_TRUE(host_.commands[0].waited);
    EXPECT_EQ(host_.commands[0].arguments[2], "make two.txt");

    host_.waitResult = -1;
    EXPECT_EQ(Run("make two.txt", "two.txt"), Status::Error);
    EXPECT_EQ(text_, "ERROR: component 'box': can't run 'make two.txt'\n");

    AllowExternalCommands(false);
    host_.commands.clear();
    EXPECT_EQ(Run("make two.txt", "two.txt"), Status::Error);
    EXPECT_EQ(text_,
              "ERROR: component 'box': its command line is refused: external commands are off\n");
    EXPECT_TRUE(host_.commands.empty());
}

}  // namespace
}  // namespace photrak
