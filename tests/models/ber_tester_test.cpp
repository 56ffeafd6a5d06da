// Results over sweeps and runs: slots by hand, table and curve as text, the life of the record.
#include "models/detection/ber_tester.h"

#include <sstream>
#include <tuple>

#include "base/text.h"
#include "kernel/sweep_settings.h"
#include "models/ber_fixture.h"
#include "support/model_parameters.h"

namespace photrak {
namespace {

class BerTesterTest : public BerTest {
  protected:
    BerTesterTest() { options.innerIndex = options.outerIndex = options.runIndex = 1; }

    /// "start step stop" in the texts of a sweep.
    void Sweep(const SweepFields& fields, int count, const char* name, const std::string& texts) {
        options.*fields.count = count;
        options.*fields.variable = name;
        std::istringstream(texts) >> options.*fields.start >> options.*fields.step >>
            options.*fields.stop;
        options.mode |= fields.modeBit;
    }
    void Inner(int count, const std::string& texts) {
        Sweep(innerSweepFields, count, "rx_power", texts);
    }
    void Outer(int count, const std::string& texts) {
        Sweep(outerSweepFields, count, "span", texts);
    }
    void Runs(int count) {
        options.NUMRUNSTODO = count;
        options.mode |= simMode::statistical;
    }
    BERResults Made() {
        BERResults results;
        std::string text;
        EXPECT_EQ(MakeBerResults(options, workspace.symbols, results, {"ber", text}),
                  Status::Success);
        EXPECT_EQ(text, "");
        return results;
    }
    /// One call of the model on an ideal eye with this Q; 0: without a signal.
    Status Pass(int outer, int inner, int run, double Q) {
        options.outerIndex = outer;
        options.innerIndex = inner;
        options.runIndex = run;
        inputs.reset();
        AddPair(MixedBits(16), 4, 0.0, 1.0, 0.5 / std::max(Q, 1.0));
        if (Q == 0.0) FreeSignal(&inputs->sig, ElecSigType);
        message.clear();
        return RunBerTester({{block.component.name, message},
                             workspace,
                             block.component,
                             options,
                             inputs.get(),
                             nullptr});
    }

    ModelBlock block{"ber"};
    Workspace workspace;
};

/// As rows of the table show them.
std::string Row(const std::string& before, double Q) {
    return before + FormatExponent(TailBeyond(Q)) + "\t" + FormatDefault(Q) + "\n";
}

/// By design: a run without a result takes the statistics with it.
TEST_F(BerTesterTest, StatisticsFollowTheRunsUntilOneHasNoResult) {
    Inner(2, "0 1 1");
    Runs(5);
    BERResults results = Made();
    options.innerIndex = 2;
    // Average, minimum and maximum. In Q the third run is extreme; in the rate it is not.
    const struct {
        double BER, Q;
        std::vector<double> rates, Qs;
    } rows[] = {{4e-3, 3, {4e-3, 4e-3, 4e-3}, {3, 3, 3}},
                {2e-3, 5, {3e-3, 2e-3, 4e-3}, {4, 5, 3}},
                {3e-3, 10, {3e-3, 2e-3, 4e-3}, {6, 5, 3}},
                {1, 0, {1, 1, 1}, {0, 0, 0}},
                {0.5, 5, {0.9, 0.5, 1}, {1, 5, 0}}};
    for (const auto& row : rows) {
        const BerSlot found{row.BER, row.Q};
        StoreBerResult(options, row.Q > 0 ? std::optional(found) : std::nullopt, results);
        for (int k = 0; k < 3; ++k) {
            EXPECT_NEAR(results.slots[8 + k].BER, row.rates[k], 1e-15);
            EXPECT_NEAR(results.slots[8 + k].Q, row.Qs[k], 1e-15);
        }
        EXPECT_EQ(results.slots[10 + options.runIndex++].BER, row.BER);
    }
}

TEST_F(BerTesterTest, SweepValuesEndOnTheStop) {
    Inner(5, "0 3 10");
    Outer(3, "10 -5 0");
    const BERResults results = Made();
    EXPECT_EQ(results.innerValues, (std::vector<double>{0, 3, 6, 9, 10}));
    EXPECT_EQ(results.outerValues, (std::vector<double>{10, 5, 0}));
}

TEST_F(BerTesterTest, RefusesMoreResultsThanItKeeps) {
    Inner(1'000'000'000, "0 1 1e9");
    Outer(1'000'000'000, "0 1 1e9");
    EXPECT_EQ(Pass(1, 1, 1, 3), Status::Error);
    EXPECT_EQ(message,
              "ERROR: component 'ber': a scan with more than 10000000 results is not kept\n");
}

TEST_F(BerTesterTest, StoppedPassLeavesThePointsBeforeItAlone) {
    Inner(2, "0 1 1");
    ASSERT_EQ(Pass(1, 1, 1, 6), Status::Success);
    const std::string rows = dir.Read("ber.bdt"), curve = dir.Read("ber.ber");
    options.stop = 1;
    EXPECT_EQ(Pass(1, 2, 1, 6), Status::Success);
    EXPECT_EQ(dir.Read("ber.bdt"), rows);
    EXPECT_EQ(dir.Read("ber.ber"), curve);
}

TEST_F(BerTesterTest, SinglePassWritesOneResult) {
    EXPECT_EQ(Pass(1, 1, 1, 6), Status::Success);
    EXPECT_EQ(dir.Read("ber.bdt"), Row("BER\tQ\n1\t", 6));
    EXPECT_EQ(dir.Read("ber.ber"), "0 " + FormatDefault(TailBeyond(6)) + "\n");
    EXPECT_EQ(block.component.modelState, nullptr) << "the last pass is done";
    // The table goes on, the curve begins anew.
    EXPECT_EQ(Pass(1, 1, 1, 3), Status::Success);
    EXPECT_EQ(dir.Read("ber.bdt"), Row("BER\tQ\n1\t", 6) + Row("BER\tQ\n1\t", 3));
    EXPECT_NEAR(CurrentRun().readings.at(0).Q, 3.0, 1e-6);
}

TEST_F(BerTesterTest, SweepFillsCurveAndTable) {
    Inner(2, "-30 2 -28");
    Outer(2, "1 1 2");
    options.PLOTTING = DisplayAllPlots;
    const auto rate = [](double Q) { return FormatDefault(TailBeyond(Q)); };
    EXPECT_EQ(Pass(1, 1, 1, 3), Status::Success);
    EXPECT_EQ(dir.Read("ber.ber"), "-30 " + rate(3) + " . \n-28 . . \n");
    EXPECT_EQ(Pass(1, 2, 1, 4), Status::Success);
    EXPECT_EQ(Pass(2, 1, 1, 0), Status::Warning);
    EXPECT_EQ(message, "No input electrical signal to BER Tester\n\n");
    EXPECT_EQ(dir.Read("ber.ber"), "-30 " + rate(3) + " 1\n-28 " + rate(4) + " . \n");
    EXPECT_EQ(Pass(2, 2, 1, 5), Status::Success);
    EXPECT_EQ(host.commands.size(), 1u) << "the viewer follows the file";
    const std::string a = "-3.000000e+01\t", b = "-2.800000e+01\t";
    const std::string one = "1.000000e+00\t", two = "2.000000e+00\t";
    EXPECT_EQ(dir.Read("ber.bdt"), "rx_power\tspan\tBER\tQ\n" + Row(a + one + "1\t", 3) +
                                       Row(b + one + "1\t", 4) + a + two + "1\t1.000000e+00\t0\n" +
                                       Row(b + two + "1\t", 5));
}

TEST_F(BerTesterTest, LastRunOfAPointBringsItsStatistics) {
    Outer(2, "1 1 2");
    Runs(2);
    block.Word("StatisticalPlotMode", "Latest");
    EXPECT_EQ(Pass(1, 1, 1, 3), Status::Success);
    EXPECT_EQ(Pass(1, 1, 2, 2), Status::Success);
    EXPECT_EQ(Pass(2, 1, 1, 4), Status::Success);
    const std::string average = FormatExponent((TailBeyond(3) + TailBeyond(2)) / 2);
    const std::string one = "1.000000e+00\t", two = "2.000000e+00\t";
    EXPECT_EQ(dir.Read("ber.bdt"), "span\tRUN#\tBER\tQ\n" + Row(one + "1\t", 3) +
                                       Row(one + "2\t", 2) + Row(one + "MIN\t", 3) + one + "AVE\t" +
                                       average + "\t2.5\n" + Row(one + "MAX\t", 2) +
                                       Row(two + "1\t", 4));
    // Every point shows the run that is under way.
    EXPECT_EQ(dir.Read("ber.ber"),
              Concat("0 ", FormatDefault(TailBeyond(3)), " ", FormatDefault(TailBeyond(4)), "\n"));
}

TEST_F(BerTesterTest, PlotModeSelectsTheStatistic) {
    Runs(2);
    for (const auto& [word, BER] : {std::pair{"Average", (TailBeyond(3) + TailBeyond(4)) / 2},
                                    {"Minimum", TailBeyond(4)},
                                    {"Maximum", TailBeyond(3)}}) {
        FreeParameterList(&block.component.parameters);
        block.Word("StatisticalPlotMode", word);
        EXPECT_EQ(Pass(1, 1, 1, 3), Status::Success);
        EXPECT_EQ(Pass(1, 1, 2, 4), Status::Success);
        EXPECT_EQ(dir.Read("ber.ber"), "0 " + FormatDefault(BER) + "\n") << word;
    }
}

TEST_F(BerTesterTest, WritesWhatIsAskedFor) {
    block.Word("PlotCurves", "NO").Word("FilenameRoot", "sub_root");
    EXPECT_EQ(Pass(1, 1, 1, 3), Status::Success);
    EXPECT_EQ(dir.Files(), std::vector<std::string>{"sub_root.bdt"});
}

}  // namespace
}  // namespace photrak
