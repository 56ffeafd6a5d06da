// What a report is made of: the topologies and result files of a folder, which of them belong
// together, and the log.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kernel/workspace.h"
#include "photrak/report_page.h"

namespace photrak {

/// Names of regular files in a folder, in the order in which people count: "x2" before "x10". Links
/// are left out.
struct ReportFolder {
    std::vector<std::string> topologies;    // ".top"
    std::vector<std::string> commandFiles;  // of plots
    std::vector<std::string> tables;        // ".bdt"
    bool cut = false;                       // more entries than are looked at
};

/// False with a reason.
[[nodiscard]] bool ListReportFolder(const std::string& folder, ReportFolder& listed,
                                    std::string& error);
/// The same of a list of names, as a run leaves it.
ReportFolder SortReportFiles(const std::vector<std::string>& names);

/// What the names of a topology's results begin with.
struct ResultStems {
    struct Stem {
        std::string text;
        bool expected = true;  // with the prefix of the runs that the topology asks for
    };
    std::vector<Stem> stems;
    std::vector<std::string> tags;  // that a number may follow: of sweeps and runs

    /// How well a file's name fits, 0 for not at all: by the longest stem that it begins with,
    /// expected ones first.
    std::size_t Match(std::string_view name) const;
};
ResultStems StemsOf(const Workspace& workspace);

/// The end of log.txt in the working directory: what was appended after `from` bytes, as far as a
/// page shows it. Nothing if there is none, or no regular file; false with a reason if it cannot be
/// read.
[[nodiscard]] bool ReadReportLog(std::uintmax_t from, ReportPage& page, std::string& error);
/// Bytes of log.txt in a folder; empty means the working directory.
std::uintmax_t LogSize(const std::string& folder = {});
/// Warnings and errors of a log, each once.
std::vector<std::string> LoggedWarnings(std::string_view log);

}  // namespace photrak
