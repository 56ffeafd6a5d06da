// The curve of bit error rates over a scan: data file ".ber", command file ".pcb". Rewritten after
// every point, so that a viewer can follow the run.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/status.h"
#include "results/plot_files.h"

namespace photrak {

/// One line per inner value, one column per outer value. A sweep that is not there has an empty
/// name and one value.
class BerCurve {
  public:
    BerCurve() = default;
    BerCurve(std::string innerName, std::vector<double> innerValues, std::string outerName,
             std::vector<double> outerValues);

    /// Counts from 0. Below 0: not yet computed.
    void Set(std::size_t inner, std::size_t outer, double BER);

    /// Lines of the data file. Only those that changed since the last call are made anew: a scan of
    /// many points writes the file as often.
    const std::vector<std::string>& Lines();
    std::string Script(std::string_view dataFile) const;

  private:
    std::string Line(std::size_t inner) const;
    std::string innerName_, outerName_;
    std::vector<double> innerValues_, outerValues_;
    std::vector<double> BER_;  // by outer, then by inner value
    std::vector<std::string> lines_;
    std::vector<bool> stale_;
};

/// Writes ROOT.ber and ROOT.pcb; with Display the viewer starts.
Status WriteBerCurve(const std::string& root, BerCurve& curve, PlotMode mode,
                     std::string& errorText);

}  // namespace photrak
