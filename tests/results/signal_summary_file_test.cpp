// Summary files, letter by letter.
#include "results/signal_summary_file.h"

#include <filesystem>

#include "kernel/run_record.h"
#include "support/holds.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

SignalSummary Record(std::int32_t sigType) {
    SignalSummary summary;
    summary.SET = 2;
    summary.INNERSWEEP = 3;
    summary.OUTERSWEEP = 4;
    summary.RUN = 5;
    summary.sigType = sigType;
    summary.NAME = "100%s";
    summary.average = 0.002;
    summary.bitRate = 1e10;
    summary.startTime = -1e-12;
    summary.duration = 1.28e-8;
    summary.tStep = 2.5e-12;
    summary.patternLength = 128;
    return summary;
}

TEST(SummaryFile, HasASectionForEachRecord) {
    SignalSummaries summaries = {Record(OpSigType), Record(ElecSigType), Record(BinSigType)};
    auto at = summaries.begin();
    at->wavelength = 1.55e-6;
    at->noiseFigure = 1e-16;
    at->mode = simMode::innerSweep | simMode::outerSweep;
    ++at;
    at->unit = "V";
    at->noiseFigure = 0.01;
    at->mode = simMode::statistical;
    at->LOOP = 6;
    const std::string rate = "Bitrate = 1e+10 bps \nPattern length = 128 bits\n",
                      start = "Start time = -1e-12 s \nDuration = 1.28e-08 s \n",
                      step = "Time step = 2.5e-12 s \n", line = std::string(48, '=') + "\n";
    EXPECT_EQ(SummaryText(summaries),
              "Optical Signal Summary 100%s\n"
              "Set = 2, Inner Iter = 3, Outer Iter = 4\n"
              "Wavelength = 1.55e-06 m \n"
              "Average = 0.002 W / 3.0103 dBm\n"
              "Peak noise density = 1e-16 W/Hz / -130 dBm/Hz\n" +
                  rate + start + step + line +
                  "Electrical Signal Summary 100%s\n"
                  "Set = 2, Stat Run = 5, Loop Iter = 6\n"
                  "Average = 0.002 V\n"
                  "Avg. noise std. dev. = 0.01\n" +
                  rate + start + step + line +
                  "Binary Signal Summary 100%s\nSet = 2\nAverage = 0.002\n" + rate + start + line);
}

TEST(SummaryFile, IsNamedAfterPortOrNodeAndWrittenOrReportsWhyNot) {
    SimOptions options;
    options.OUTPUTPREFIX = "run_";
    options.SCANPREFIX = "scan_";
    Node node;
    node.number = 12;
    EXPECT_EQ(SummaryFileName(options, "Fiber", 2), "run_Fiber_p2_sig.sum");
    options.mode = simMode::statistical;
    EXPECT_EQ(SummaryFileName(options, node), "scan_node_12_sig.sum");

    const TempDir directory;
    SignalSummaries dark = {Record(OpSigType)};
    dark.front().average = 0.0;
    std::string text;
    EXPECT_EQ(WriteSummaryFile("a.sum", dark, text), Status::Success);
    EXPECT_EQ(text, "");
    const std::string written = directory.Read("a.sum");
    EXPECT_EQ(written, SummaryText(dark));
    EXPECT_TRUE(Holds(written, "Average = 0 W / -inf dBm\n"));
    EXPECT_FALSE(Holds(written, "noise")) << "none is known";
    std::filesystem::create_directory("b.sum");
    EXPECT_EQ(WriteSummaryFile("b.sum", dark, text), Status::Error);
    EXPECT_EQ(text, "Could not open file for signal summary data\n");
    ResetRunRecord();
}

}  // namespace
}  // namespace photrak
