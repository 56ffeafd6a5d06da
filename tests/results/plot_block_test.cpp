// The plot blocks as the driver runs them: names, modes, parameters, alignment of the inputs.
#include <gtest/gtest.h>

#include "base/text.h"
#include "results/plot_fixture.h"
#include "support/parameter_list.h"

namespace photrak {
namespace {

using Names = std::vector<std::string>;

class PlotBlock : public PlotTest {
  protected:
    PlotBlock() { component.name = "my_plot"; }

    Status Run(ParameterList& parameters, bool chirp = false) {
        FreeParameterList(&component.parameters);
        component.parameters = parameters.Release();
        text.clear();
        return (chirp ? ChirpPlot : SignalPlot)(options, component, inputs.get(), text);
    }
    Status Run() {
        ParameterList none;
        return Run(none);
    }

    SimOptions options;
    Component component;
    std::string text;
};

TEST_F(PlotBlock, NamesItsFilesByPrefixRootAndTags) {
    options.mode = simMode::innerSweep;
    options.OUTPUTPREFIX = "out_";
    options.SCANMETA1 = "_i";
    options.innerCount = options.innerIndex = 2;
    EXPECT_EQ(PlotFileRoot(options, "a_name", ""), "phtmpa_name_i2");
    options.mode = 0;
    EXPECT_EQ(PlotFileRoot(options, "a_name", "ro_ot"), "out_ro_ot_i2");
}

TEST_F(PlotBlock, WritesNothingWhenPassesWouldOverwriteEachOther) {
    AddElectrical({{1}, {2}});
    options.PLOTTING = DisplayAllPlots;
    options.SCANMETA1 = options.SCANMETA2 = options.RUNMETA = "t";
    options.mode = simMode::statistical;
    options.NUMRUNSTODO = options.innerCount = options.outerCount = 2;
    for (std::string* tag : {&options.SCANMETA1, &options.SCANMETA2, &options.RUNMETA}) {
        tag->clear();
        EXPECT_EQ(Run(), Status::Success);
        EXPECT_EQ(text, "");
        *tag = "t";
    }
    EXPECT_EQ(dir.Files(), Names{});
    EXPECT_TRUE(host.commands.empty());
    EXPECT_EQ(Run(), Status::Success);
    EXPECT_EQ(dir.Files().size(), 2u);
}

TEST_F(PlotBlock, ObeysThePlottingOption) {
    AddElectrical({{1}, {2}});
    const struct {
        std::int16_t plotting;
        const char* own;  // null: the block has no such parameter
        bool files, viewer;
    } rows[] = {
        {DoNotPlot, "Display", false, false},       {PlotToFilesOnly, "Display", true, false},
        {DisplayAllPlots, "No", true, true},        {UsePlotIconSettings, "No", false, false},
        {UsePlotIconSettings, "Save", true, false}, {UsePlotIconSettings, "Display", true, true},
        {UsePlotIconSettings, nullptr, true, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Concat(row.plotting, " ", row.own ? row.own : "absent"));
        const TempDir own;
        host.commands.clear();
        options.PLOTTING = row.plotting;
        ParameterList parameters;
        if (row.own) parameters.Text("Plot", row.own, EnumType);
        EXPECT_EQ(Run(parameters), Status::Success);
        EXPECT_EQ(own.Has("phtmpmy_plot.pcs"), row.files);
        EXPECT_EQ(!own.Files().empty(), row.files);
        EXPECT_EQ(host.commands.size(), row.viewer ? 1u : 0u);
    }
}

TEST_F(PlotBlock, ReadsItsParametersByName) {
    AddChannel(AddOptical(), {{1}, {2}, {3}, {4}}, {{0, 0.1}, {}, {}, {}});
    const struct {
        const char *representation, *polarization, *units;
        Names files;  // without the stem
        Status status;
    } rows[] = {
        {"Default", "comb_x_and_y", "Watts", {".pcs", "_mag.sig"}, Status::Success},
        {"Mag/Noise", "sep_x_and_y", "dBm", {".pcs", "_xmag.sig", "_ymag.sig"}, Status::Success},
        {"Mag/Phase", "x_only", "dBm", {".pcs", "_xmag.sig", "_xphase.sig"}, Status::Success},
        {"Real/Imag", "y_only", "", {".pcs", "_yimag.sig", "_yreal.sig"}, Status::Success},
        {"Real", "all", "", {".pcs", "_xreal.sig", "_yreal.sig"}, Status::Warning},
        {"?", "?", "?", {".pcs", "_mag.sig"}, Status::Success},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.representation);
        const TempDir own;
        ParameterList parameters;
        parameters.Double("Toffset", 3e-12)
            .Text("FilenameRoot", "100%n_r")
            .Text("Representation", row.representation, EnumType)
            .Text("PowerUnits", row.units, EnumType)
            .Text("Polarization", row.polarization, EnumType);
        EXPECT_EQ(Run(parameters), row.status);
        Names files;
        for (const std::string& suffix : row.files) files.push_back("phtmp100%n_r" + suffix);
        EXPECT_EQ(own.Files(), files);
        if (row.representation == std::string("Mag/Noise")) {
            EXPECT_EQ(own.Read("phtmp100%n_r_ymag.sig"), "0 -90\n");
        }
    }
}

TEST_F(PlotBlock, AddsNoiseUnlessToldNotTo) {
    ElecSig& wave = AddElectrical({{1}, {1}});
    for (int i = 1; i <= 2; ++i) wave.sigmaSamples[i].re = 1.0;
    for (const char* word : {"TRUE", "FALSE", ""}) {
        ParameterList parameters;
        if (*word) parameters.Text("ShowNoise", word, EnumType);
        EXPECT_EQ(Run(parameters), Status::Success);
        const bool clean = dir.Read("phtmpmy_plot_real.sig") == "0 1\n1e-12 1\n";
        EXPECT_EQ(clean, word == std::string("FALSE")) << word;
    }
}

TEST_F(PlotBlock, ResamplesInputsOfDifferentStepsWithAWarning) {
    AddElectrical({{0}, {1}, {2}, {3}});
    AddElectrical({{0}, {3}}).tStep = 3e-12;
    ParameterList parameters;
    parameters.Text("ShowNoise", "FALSE", EnumType).Text("Representation", "Mag/Phase", EnumType);
    EXPECT_EQ(Run(parameters), Status::Warning);
    EXPECT_EQ(text,
              "WARNING in signal plot 'my_plot': input signals have varying time steps and/or time "
              "durations.\nResampling of the signals was performed.\n");
    // The resampled line ends where its source does: its last time counts as beyond.
    EXPECT_EQ(dir.Read("phtmpmy_plot_mag.sig"), "0 0 0\n1e-12 1 1\n2e-12 2 2\n3e-12 3 0\n");
}

TEST_F(PlotBlock, TellsWhenTheInputsCannotBeCopied) {
    AddChannel(AddOptical(), {{1}, {2}, {3}, {4}});
    AddChannel(AddOptical(), {{1}, {2}}, {{1}, {2}});  // polarized: cannot be resampled
    for (bool chirp : {false, true}) {
        ParameterList none;
        EXPECT_EQ(Run(none, chirp), Status::Error);
        EXPECT_EQ(text, "ERROR in signal plot 'my_plot': Could not copy input signals.\n");
    }
    EXPECT_EQ(dir.Files(), Names{});
}

TEST_F(PlotBlock, KeepsNamesFromBreakingTheCommandFile) {
    component.name = "a_b\"c %s";
    AddElectrical({{1}, {2}});
    EXPECT_EQ(Run(), Status::Success);
    const std::string script = dir.Read("phtmpa_b\"c %s.pcs");
    EXPECT_NE(script.find("/tt\"a b'c %s Signal Plot\"\n"), std::string::npos) << script;
    EXPECT_NE(script.find("\nphtmpa_b\"c %s_real.sig\n"), std::string::npos);
    component.name = "a\n/quit";
    EXPECT_EQ(Run(), Status::Error);
    EXPECT_EQ(dir.Files().size(), 2u);
}

}  // namespace
}  // namespace photrak
