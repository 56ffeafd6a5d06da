// The plot blocks as the driver runs them: names, modes, parameters, alignment of the inputs.
#include <gtest/gtest.h>

#include "base/text.h"
#include "results/plot_fixture.h"
#include "support/holds.h"
#include "support/parameter_list.h"

namespace photrak {
namespace {

using Names = std::vector<std::string>;

class PlotBlock : public PlotTest {
  protected:
    PlotBlock() { component.name = "my_plot"; }

    Status Run(ParameterList& parameters) {
        FreeParameterList(&component.parameters);
        component.parameters = parameters.Release();
        text.clear();
        return SignalPlot(
            {{component.name, text}, workspace, component, options, inputs.get(), nullptr});
    }
    Status Run() {
        ParameterList none;
        return Run(none);
    }

    Workspace workspace;
    SimOptions options;
    Component component;
    std::string text;
};

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
    // A loop of one pass overwrites nothing.
    options.SCANMETA1 = options.SCANMETA2 = options.RUNMETA = "";
    options.NUMRUNSTODO = options.innerCount = options.outerCount = 1;
    options.SCANPREFIX = "scan_";
    options.OUTPUTPREFIX = "of a plain run_";
    EXPECT_EQ(Run(), Status::Success);
    EXPECT_TRUE(dir.Has("scan_my_plot.pcs"));
}

TEST_F(PlotBlock, ObeysThePlottingOption) {
    AddElectrical({{1}, {2}});
    const struct {
        std::int16_t plotting;
        const char* own;  // empty: the block has no such parameter
        bool files, viewer;
    } rows[] = {
        {DoNotPlot, "Display", false, false},       {PlotToFilesOnly, "Display", true, false},
        {DisplayAllPlots, "No", true, true},        {UsePlotIconSettings, "No", false, false},
        {UsePlotIconSettings, "Save", true, false}, {UsePlotIconSettings, "Display", true, true},
        {UsePlotIconSettings, "", true, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Concat(row.plotting, " ", row.own));
        const TempDir own;
        host.commands.clear();
        options.PLOTTING = row.plotting;
        ParameterList parameters;
        if (*row.own) parameters.Text("Plot", row.own, EnumType);
        EXPECT_EQ(Run(parameters), Status::Success);
        EXPECT_EQ(own.Files().size(), row.files ? 2u : 0u);
        EXPECT_EQ(host.commands.size(), row.viewer ? 1u : 0u);
    }
}

TEST_F(PlotBlock, ReadsItsParametersByName) {
    AddChannel(AddOptical(), {{1}, {2}, {3}, {4}}, {{0, 0.1}, {}, {}, {}});
    const struct {
        const char *representation, *polarization, *units;
        Names signals;
        Status status = Status::Success;
    } rows[] = {
        {"Default", "comb_x_and_y", "Watts", {"mag"}},
        {"Mag/Noise", "sep_x_and_y", "dBm", {"xmag", "ymag"}},
        {"Mag/Phase", "x_only", "dBm", {"xmag", "xphase"}},
        {"Real", "all", "", {"xreal", "yreal"}, Status::Warning},
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
        Names files = {"phtmp100%n_r.pcs"};
        for (const auto& signal : row.signals) files.push_back("phtmp100%n_r_" + signal + ".sig");
        EXPECT_EQ(own.Files(), files);
        if (own.Has("phtmp100%n_r_ymag.sig")) {
            EXPECT_EQ(own.Read("phtmp100%n_r_ymag.sig"), "0 -90\n");
        }
    }
}

TEST_F(PlotBlock, ResamplesInputsOfDifferentStepsWithAWarning) {
    AddElectrical({{0}, {1}, {2}, {3}}).sigmaSamples[2].re = 1.0;
    AddElectrical({{0}, {3}}).tStep = 3e-12;
    ParameterList parameters;
    parameters.Text("Representation", "Mag/Phase", EnumType).Text("ShowNoise", "FALSE", EnumType);
    EXPECT_EQ(Run(parameters), Status::Warning);
    EXPECT_EQ(text,
              "WARNING in signal plot 'my_plot': input signals have varying time steps and/or "
              "time durations.\nResampling of the signals was performed.\n");
    // The resampled line ends where its source does: its last time counts as beyond.
    EXPECT_EQ(dir.Read("phtmpmy_plot_mag.sig"), "0 0 0\n1e-12 1 1\n2e-12 2 2\n3e-12 3 0\n");
}

TEST_F(PlotBlock, KeepsNamesFromBreakingTheCommandFile) {
    AddChannel(AddOptical(), {{1}, {2}});
    component.name = "a_b\"c %s";
    EXPECT_EQ(Run(), Status::Success);
    const std::string script = dir.Read("phtmpa_b\"c %s.pcs");
    EXPECT_TRUE(Holds(script, "/tt\"a b'c %s Signal Plot\"\n"));
    EXPECT_TRUE(Holds(script, "\nphtmpa_b\"c %s_mag.sig\n"));
    component.name = "a\n/quit";
    EXPECT_EQ(Run(), Status::Error);
}

}  // namespace
}  // namespace photrak
