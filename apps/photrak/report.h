// The page of a folder's results, or of those that a run has just written.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace photrak {

/// What a run knows of its results when it writes their page.
struct RunForReport {
    std::string topology;               // in the working directory
    std::vector<std::string> results;   // names of the files written
    std::vector<std::string> warnings;  // that no log has
    std::uintmax_t logBefore = 0;       // bytes of log.txt before it began
};

/// Writes the page beside the topology ("link.html" for "link.top") and lists its name. False after
/// a report.
bool WriteRunReport(const RunForReport& run);

}  // namespace photrak
