// Inputs of a plot built by hand, a directory for its files, and a viewer that only remembers.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "kernel/result_names.h"
#include "kernel/signals.h"
#include "results/signal_plot.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace photrak {

class PlotTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ResetResultFiles();
        ResetPlotNoise();
    }

    /// A port with an optical signal; its channels are added to it.
    OpSignal& AddOptical() {
        Owned<OpSignal> signal;
        EXPECT_EQ(Make(signal, CreateOpSignal), 0);
        return *static_cast<OpSignal*>(AddCell(signal.release(), OpSigType).sig);
    }
    OpSig& AddChannel(OpSignal& signal, const std::vector<Complex>& ex,
                      const std::vector<Complex>& ey = {}) {
        Owned<OpSig> channel;
        EXPECT_EQ(Make(channel, CreateOpSig, static_cast<std::int32_t>(ex.size())), 0);
        std::copy(ex.begin(), ex.end(), channel->Ex_samples + 1);
        if (!ey.empty()) {
            EXPECT_EQ(AddEySamples(channel.get()), 0);
            std::copy(ey.begin(), ey.end(), channel->Ey_samples + 1);
        }
        channel->tStep = 1e-12;
        channel->patternLength = 2;
        channel->wavelength = 1.55e-6;
        OpSig** end = &signal.channels;
        while (*end) end = &(*end)->next;
        *end = channel.release();
        return **end;
    }
    ElecSig& AddElectrical(const std::vector<Complex>& samples) {
        Owned<ElecSig> wave;
        EXPECT_EQ(Make(wave, CreateElecSig, static_cast<std::int32_t>(samples.size())), 0);
        std::copy(samples.begin(), samples.end(), wave->elecSamples + 1);
        wave->tStep = 1e-12;
        wave->patternLength = 2;
        return *static_cast<ElecSig*>(AddCell(wave.release(), ElecSigType).sig);
    }
    BinSig& AddBits(const std::vector<std::int16_t>& bits) {
        Owned<BinSig> sig;
        EXPECT_EQ(Make(sig, CreateBinSig, static_cast<std::int32_t>(bits.size())), 0);
        std::copy(bits.begin(), bits.end(), sig->bitSequence + 1);
        sig->bitRate = 10e9;
        sig->startTime = 0.0;
        return *static_cast<BinSig*>(AddCell(sig.release(), BinSigType).sig);
    }
    void AddEmptyPort() { AddCell(nullptr, OpSigType); }
    void ClearInputs() { inputs.reset(); }

    SignalPlotJob Job(int flags) const {
        return {inputs.get(), false, 0.0, 0.0, 0.0, flags, PlotMode::Files, "P", "my_plot"};
    }
    /// Writes a signal plot and expects it to succeed without a word.
    void Write(const SignalPlotJob& job) {
        std::string text;
        EXPECT_EQ(WriteSignalPlot(job, text), Status::Success);
        EXPECT_EQ(text, "");
    }

    TempDir dir;
    RecordingHost host;
    Owned<Nodelist> inputs;

  private:
    Nodelist& AddCell(void* sig, std::int32_t sigType) {
        Nodelist* cell = nullptr;
        EXPECT_EQ(CreateNodelist(&cell, sigType), 0);
        cell->sig = sig;
        if (!inputs) {
            inputs.reset(cell);
            return *cell;
        }
        Nodelist* last = inputs.get();
        while (last->next) last = last->next;
        last->next = cell;
        return *cell;
    }
};

}  // namespace photrak
