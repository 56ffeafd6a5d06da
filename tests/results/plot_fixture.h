// Inputs of a plot built by hand, a directory for its files, and a viewer that only remembers.
#pragma once

#include <cmath>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

#include "kernel/driver.h"
#include "kernel/run_record.h"
#include "kernel/signals.h"
#include "numeric/random.h"
#include "results/chirp_plot.h"
#include "results/signal_plot.h"
#include "support/parameter_list.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace photrak {

class PlotTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ResetRunRecord();
        ResetRandomState();
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
        ElecSig& wave = Add<ElecSig>(CreateElecSig, samples.size(), ElecSigType);
        std::copy(samples.begin(), samples.end(), wave.elecSamples + 1);
        wave.tStep = 1e-12;
        wave.patternLength = 2;
        return wave;
    }
    BinSig& AddBits(const std::vector<std::int16_t>& bits) {
        BinSig& sig = Add<BinSig>(CreateBinSig, bits.size(), BinSigType);
        std::copy(bits.begin(), bits.end(), sig.bitSequence + 1);
        sig.bitRate = 10e9;
        sig.startTime = 0.0;
        return sig;
    }
    void AddEmptyPort() { AddCell(nullptr, OpSigType); }
    void ClearInputs() { inputs.reset(); }

    SignalPlotJob Job(int flags) const {
        return {inputs.get(), false, 0.0, flags, PlotMode::Files, "P"};
    }
    /// Writes a signal plot and expects it to succeed without a word.
    void Write(const SignalPlotJob& job) {
        std::string text;
        EXPECT_EQ(WriteSignalPlot(job, {"my_plot", text}), Status::Success);
        EXPECT_EQ(text, "");
    }

    TempDir dir;
    RecordingHost host;
    Owned<Nodelist> inputs;

  private:
    template <class Sig, class Create>
    Sig& Add(Create create, std::size_t n, std::int32_t sigType) {
        Owned<Sig> sig;
        EXPECT_EQ(Make(sig, create, static_cast<std::int32_t>(n)), 0);
        return *static_cast<Sig*>(AddCell(sig.release(), sigType).sig);
    }
    Nodelist& AddCell(void* sig, std::int32_t sigType) {
        Nodelist* cell = nullptr;
        EXPECT_EQ(CreateNodelist(&cell, sigType), 0);
        cell->sig = sig;
        Nodelist* last = inputs.get();
        while (last && last->next) last = last->next;
        if (last) {
            last->next = cell;
        } else {
            inputs.reset(cell);
        }
        return *cell;
    }
};

/// A plot block as the driver runs it; its files are "phtmpplot" with their suffixes.
class PlotModelTest : public PlotTest {
  protected:
    PlotModelTest() {
        component.name = "plot";
        options.PLOTTING = PlotToFilesOnly;
    }
    Status Run(Status (*model)(const ModelCall&), ParameterList& parameters) {
        FreeParameterList(&component.parameters);
        component.parameters = parameters.Release();
        text.clear();
        return model(
            {{component.name, text}, workspace, component, options, inputs.get(), nullptr});
    }
    Status Run(Status (*model)(const ModelCall&), ParameterList&& parameters = {}) {
        return Run(model, parameters);
    }
    /// The numbers of a file, row by row; a "." is no number.
    std::vector<std::vector<double>> Rows(const std::string& name) const {
        std::vector<std::vector<double>> rows;
        std::istringstream lines(dir.Read(name));
        for (std::string line; std::getline(lines, line);) {
            std::istringstream words(line);
            rows.emplace_back();
            for (std::string word; words >> word;) {
                rows.back().push_back(word == "." ? NAN : std::strtod(word.c_str(), nullptr));
            }
        }
        return rows;
    }

    Workspace workspace;
    SimOptions options;
    Component component;
    std::string text;
};

}  // namespace photrak
