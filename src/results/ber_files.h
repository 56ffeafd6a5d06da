// Result files of the bit error rate tester beside its curve: the table that grows through a run,
// the eye lids with the decision eye, and the bit streams. For the curve see ber_curve.h.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/status.h"
#include "kernel/workspace.h"
#include "results/plot_files.h"

namespace photrak {

/// Files, or Display when the run displays all plots or leaves it to the block and that says 2.
PlotMode ViewerMode(const SimOptions& options, int saveOrDisplay);

/// The columns of the table: a sweep that is not there has an empty name.
struct BerTable {
    std::string innerName, outerName;
    bool statistical = false;  // more than one run
};
/// A line of the table; `run` is the number of the run or the word of a statistic.
struct BerTableRow {
    double inner = 0.0, outer = 0.0;  // sweep values
    std::string run;
    double BER = 0.0, Q = 0.0;
};
std::string BerTableHeader(const BerTable& table);
std::string BerTableLine(const BerTable& table, const BerTableRow& row);

/// The lids and the decision eye of one pass; arrays are one-based and borrowed.
struct EyeLidPlot {
    std::int32_t lidLength = 0;
    const double *lower = nullptr, *upper = nullptr;  // V
    const double* eyeData = nullptr;  // `traces` times lidLength samples, trace after trace, V
    std::int64_t traces = 0;
    double tStep = 0.0;  // s
    std::uint32_t decisionIndex = 1;
    double decisionLevel = 0.0;  // V
    bool averageEye = false;     // the decision comes from the average eye
    PlotMode mode = PlotMode::Files;
};
/// Writes NAME.lid, .pld, .eye and .pdt, times and levels as offsets from the decision.
Status WriteEyeLidFiles(const std::string& name, const EyeLidPlot& plot, std::string& errorText);

/// The text of a bit stream file: "1 " or "0 " for each bit, so many to a line.
class BitStreamText {
  public:
    explicit BitStreamText(std::int32_t bitsPerLine) : bitsPerLine_(bitsPerLine) {}
    void Append(bool bit);
    /// The text with its last line ended.
    const std::string& Finish();

  private:
    std::int32_t bitsPerLine_, onLine_ = 0;
    std::string text_;
};

}  // namespace photrak
