// A section for each record, a line for each quantity.
#include "results/signal_summary_file.h"

#include "base/text.h"
#include "base/units.h"
#include "kernel/result_names.h"

namespace photrak {
namespace {

constexpr std::string_view extension = ".sum";
constexpr std::string_view sectionEnd = "================================================\n";

void AppendCoordinates(std::string& text, const SignalSummary& summary) {
    text += Concat("Set = ", summary.SET);
    if (summary.mode & simMode::innerSweep) text += Concat(", Inner Iter = ", summary.INNERSWEEP);
    if (summary.mode & simMode::outerSweep) text += Concat(", Outer Iter = ", summary.OUTERSWEEP);
    if (summary.mode & simMode::statistical) text += Concat(", Stat Run = ", summary.RUN);
    if (summary.LOOP > 0) text += Concat(", Loop Iter = ", summary.LOOP);
    text += '\n';
}

void AppendOptical(std::string& text, const SignalSummary& summary) {
    text += Concat("Wavelength = ", summary.wavelength, " m \n");
    text += Concat("Average = ", summary.average, " W / ", DbmFromWatts(summary.average), " dBm\n");
    if (summary.noiseFigure == 0.0) return;
    text += Concat("Peak noise density = ", summary.noiseFigure, " W/Hz / ",
                   DbmFromWatts(summary.noiseFigure), " dBm/Hz\n");
}

void AppendElectrical(std::string& text, const SignalSummary& summary) {
    text += Concat("Average = ", summary.average, " ", summary.unit, "\n");
    text += Concat("Avg. noise std. dev. = ", summary.noiseFigure, "\n");
}

void AppendBits(std::string& text, const SignalSummary& summary) {
    text += Concat("Average = ", summary.average, "\n");
}

struct SectionKind {
    std::int32_t sigType;
    std::string_view title;
    void (*append)(std::string& text, const SignalSummary& summary);
};
constexpr SectionKind sectionKinds[] = {
    {OpSigType, "Optical Signal Summary ", AppendOptical},
    {ElecSigType, "Electrical Signal Summary ", AppendElectrical},
    {BinSigType, "Binary Signal Summary ", AppendBits},
};

void AppendSection(std::string& text, const SignalSummary& summary) {
    for (const SectionKind& kind : sectionKinds) {
        if (kind.sigType != summary.sigType) continue;
        text += Concat(kind.title, summary.NAME, "\n");
        AppendCoordinates(text, summary);
        kind.append(text, summary);
    }
    text += Concat("Bitrate = ", summary.bitRate, " bps \n");
    text += Concat("Pattern length = ", summary.patternLength, " bits\n");
    text += Concat("Start time = ", summary.startTime, " s \n");
    text += Concat("Duration = ", summary.duration, " s \n");
    if (summary.sigType != BinSigType) text += Concat("Time step = ", summary.tStep, " s \n");
    text += sectionEnd;
}

}  // namespace

std::string SummaryFileName(const SimOptions& options, std::string_view component,
                            std::int32_t port) {
    const std::string ofPort = port > 0 ? Concat("_p", port) : std::string();
    return Concat(PrefixInUse(options), component, ofPort, "_sig", extension);
}

std::string SummaryFileName(const SimOptions& options, const Node& node) {
    return Concat(PrefixInUse(options), "node_", node.number, "_sig", extension);
}

std::string SummaryText(const SignalSummaries& summaries) {
    std::string text;
    for (const SignalSummary& summary : summaries) AppendSection(text, summary);
    return text;
}

Status WriteSummaryFile(const std::string& name, const SignalSummaries& summaries,
                        std::string& errorText) {
    if (WriteResultFile(name, SummaryText(summaries), errorText)) return Status::Success;
    errorText += "Could not open file for signal summary data\n";
    return Status::Error;
}

}  // namespace photrak
